#include "mime/eml_reader.h"

#include <algorithm>
#include <cstring>

#include "core/attachment.h"
#include "foundation/code_page.h"
#include "foundation/log.h"
#include "foundation/stream.h"
#include "foundation/text.h"
#include "mime/mail_address.h"
#include "mime/mail_date.h"
#include "regex/pattern.h"
#include "tnef/tnef_parser.h"

namespace mcl {

namespace {

constexpr uint32_t kAttachmentTag = 0x37000000;
constexpr uint32_t kHeaderFieldTag = 0xF001001F;
constexpr uint32_t kNotImplemented = 0x80004001;
constexpr uint32_t kMessageFlagHasAttach = 16;

std::string upperAscii(std::string_view text)
{
    std::string upper(text);
    for (char& c : upper)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
    return upper;
}

std::u16string widenToNul(std::string_view bytes)
{
    return ty::widenBytes(std::string(bytes.substr(0, std::min(bytes.size(), bytes.find('\0')))));
}

// Content from `bodyOffset` to the end of the body.
std::string_view contentOf(const CMimePart& part)
{
    return part.content();
}

}  // namespace

uint32_t tagForType(std::string_view contentType)
{
    std::string type = upperAscii(contentType);
    if (type == "TEXT/PLAIN") return 0x1000001F;
    if (type == "TEXT/HTML") return 0x1013001F;
    if (type == "TEXT/RTF") return 0x10090102;
    if (type.find("TEXT/") != std::string::npos) return 0x1000001F;
    for (const char* kind : {"MESSAGE/", "IMAGE/", "AUDIO/", "VIDEO/", "APPLICATION/"})
        if (type.find(kind) != std::string::npos) return kAttachmentTag;
    return kHeaderFieldTag;
}

bool isBodyTag(uint32_t tag)
{
    return tag == 0x1000001F || tag == 0x1013001F || tag == 0x10090102;
}

BaseReader* createEmlReader(const std::u16string& path)
{
    return new EMLReader(path);
}

EMLReader::EMLReader(const std::u16string& path) : BaseReader(u"EMLReader", path, FileEML) {}

EMLReader::~EMLReader() = default;

const std::u16string& EMLReader::addressDelimiters() const
{
    static const std::u16string comma = u",";
    return comma;
}

bool EMLReader::doInit()
{
    parser = std::make_unique<CMime>();
    return true;
}

bool EMLReader::doLoad(MailProperties* props, uint32_t* filter)
{
    if (*filter == 0) return true;
    bool result = addProperties(props, *filter);
    if (decodeEnabled) decodeMultibyteStrings(props);
    return result;
}

bool EMLReader::doLoadByID(MailProperties*, uint32_t*, const std::u16string&)
{
    setError(u"Not implemented", u"mcl::EMLReader::doLoadByID", 0, kNotImplemented);
    return false;
}

bool EMLReader::doSaveEmbeddedMessage(Attachment* attachment, MailProperties*, const std::u16string& path)
{
    if (attachment->saveBin(path)) return true;
    copyError(*attachment);
    return false;
}

bool EMLReader::doSaveMessage(MailProperties*, const std::u16string& path)
{
    CMime copy;
    if (!copy.loadFile(ty::wideToUtf8(getFilePath()), 0) || !copy.saveFile(ty::wideToUtf8(path))) {
        setError(u"Can't read specified file", u"mcl::EMLReader::doSaveMessage", 0, mul::E_FAIL_CODE);
        return false;
    }
    return true;
}

uint32_t EMLReader::classifyPart(const CMimePart& part) const
{
    uint32_t tag = tagForType(part.contentType);
    if (isBodyTag(tag)) {
        std::u16string disposition;
        getHeader(disposition, "Content-disposition", &part, true);
        return disposition.find(u"filename") != std::u16string::npos ? 1 : 0;
    }
    if (tag == kAttachmentTag) {
        std::string_view type = part.contentType;
        if (type.find("MESSAGE") != std::string_view::npos || type.find("message") != std::string_view::npos)
            return 3;
        return part.contentId.empty() ? 1 : 2;
    }
    return 0;
}

bool EMLReader::readAndParse(uint32_t parseMode)
{
    static const char16_t source[] = u"mcl::EMLReader::addProperties";
    ty::File file;
    int64_t size = file.open(getFilePath(), ty::FileRead, ty::OpenExisting) ? file.getSize() : -1;
    if (size < 0) {
        setSystemError(static_cast<int>(file.keeper().hasError() ? file.keeper().error()->code() : EIO), source, 0);
        return false;
    }
    if (size == 0) {
        setError(u"Unable to read zero length file", source, 0, mul::E_FAIL_CODE);
        return false;
    }
    // The parser counts in 32 bits: a larger file can't be read whole.
    if (size >= int64_t{UINT32_MAX}) {
        setError(u"Can't read whole file", source, 0, mul::E_FAIL_CODE);
        return false;
    }
    std::string data(static_cast<size_t>(size) + 1, '\0');
    if (file._read(data.data(), size) != size) {
        setError(u"Can't read whole file", source, 0, mul::E_FAIL_CODE);
        return false;
    }
    fileSize = static_cast<uint32_t>(size);
    if (!parser->parse(data.data(), fileSize, parseMode)) {
        setError(u"Can't parse EML data", source, 0, mul::E_FAIL_CODE);
        return false;
    }
    doneParts.clear();
    if (size >= 5 && std::memcmp(data.data(), "\xEF\xBB\xBF", 3) == 0)
        defaultCharset = "UTF-8";
    else if (size >= 5 && std::memcmp(data.data(), "\xFF\xFE", 2) == 0)
        defaultCharset = "UTF-16LE";
    else
        // The C locale's code page stands for the system's: asked of the locale, not set on it.
        defaultCharset = "CP" + std::to_string(ty::systemAnsiCodePage());
    return true;
}

bool EMLReader::addProperties(MailProperties* props, uint32_t filter)
{
    if (!parser) {
        setError(u"EML reader not initialized properly", u"mcl::EMLReader::addProperties", 0, mul::E_FAIL_CODE);
        return false;
    }
    const uint32_t parseMode = filter;
    if (filter == LoadListing) filter = LoadHeaders;
    const uint8_t wantHeaderOnly = filter == LoadHeaders ? 1 : 0;
    if (!parser->root() || headerOnlyParse != wantHeaderOnly) {
        headerOnlyParse = wantHeaderOnly;
        if (!readAndParse(parseMode)) return false;
    }
    CMimePart* root = parser->root();
    if (root) parser->decodeBody(*root);
    if (filter & LoadHeaders) {
        props->addProperty(0x0E080003, 0, u"Size", &fileSize, 4);
        addHeader(root, props);
    }
    if ((filter & LoadAttachments) && root) {
        if (classifyPart(*root) == 3 || std::string_view(root->contentType) == "application/ms-tnef")
            addPartProperties(*root, addPartHead(props, *root), props, LoadAttachments);
    }
    addPropertiesFromParser(props, filter, true);
    if (!props->findProperty(0xF012001F)) props->addProperty(0xF012001F, 0, u"Folder", u"/");
    return true;
}

std::u16string EMLReader::partText(const CMimePart& part, std::string_view bytes) const
{
    if (part.charset.empty()) return widenToNul(bytes);
    std::u16string text;
    ty::convertToWide(text, bytes.data(), bytes.size(), std::string(part.charset).c_str(), true);
    return text;
}

bool EMLReader::addHeader(CMimePart* root, MailProperties* props)
{
    ty::TraceScope trace("mcl::EMLReader::addHeader");
    if (!root || !parser->decodeBody(*root)) {
        setError(u"Can't read MIME header", u"mcl::EMLReader::addHeader", 0, mul::E_FAIL_CODE);
        return false;
    }
    std::u16string text;
    getHeader(text, "From", root, true);
    if (!text.empty()) {
        MailAddressList from = parseAddressList(text, addressDelimiters());
        if (!from.empty()) {
            props->addProperty(0x0042001F, 0, u"FromName", from.front().displayName);
            props->addProperty(0x0065001F, 0, u"From", from.front().address);
        }
    }
    getHeader(text, "Subject", root, true);
    if (!text.empty()) props->addProperty(0x0037001F, 0, u"Subject", text);
    getHeader(text, "Date", root, false);
    if (!text.empty()) {
        MailDate date = parseMailDate(text);
        props->addProperty(0x00390040, 0, u"Date", &date.time, sizeof date.time);
        if (!date.zone.empty()) props->addProperty(0xF039001F, 0, u"Time zone", date.zone);
    }
    const std::pair<const char*, uint32_t> lists[] = {{"To", 0x0E04001F}, {"CC", 0x0E03001F}, {"BCC", 0x0E02001F}};
    for (const auto& [field, tag] : lists) {
        getHeader(text, field, root, true);
        if (text.empty()) continue;
        ty::replaceAll(text, uR"(\\\")", u"\"", 0);
        props->addProperty(tag, 0, ty::utf8ToWide(field), text);
        std::vector<RecipientRecord> rows;
        for (const MailAddress& address : parseAddressList(text, addressDelimiters()))
            rows.push_back({address.displayName, address.address});
        addRecipientRows(rows, props, 0);
    }
    if (root->bodySize() != 0) {
        MailProperty* header = props->addProperty(0x007D001F, 0, u"header", widenToNul(root->body));
        addPartProperties(*root, header->id(), props, LoadHeaders);
    }
    uint32_t bodyTag = tagForType(root->contentType);
    std::string_view content = contentOf(*root);
    if (isBodyTag(bodyTag) && !content.empty())
        props->addProperty(bodyTag, 0, u"Body", partText(*root, content));
    getHeader(text, "Content-Type", root, true);
    if (text.find(u"multipart/mixed") != std::u16string::npos)
        props->addProperty(0x0E070003, 0, u"Message Flags", &kMessageFlagHasAttach, 4);
    return true;
}

bool EMLReader::addPropertiesFromParser(MailProperties* props, uint32_t filter, bool skipRoot)
{
    ty::TraceScope trace("mcl::EMLReader::addPropertiesFromParser");
    CMimePart* root = parser->root();
    if (!root) return true;
    for (CMimePart* part = skipRoot ? root->next : root; part; part = part->next) {
        uint32_t kind = classifyPart(*part);
        if (kind > 0 && !(filter & LoadAttachments)) continue;
        if (kind == 0 && isBodyTag(tagForType(part->contentType)) && !(filter & LoadBody)) continue;
        if (std::find(doneParts.begin(), doneParts.end(), part) != doneParts.end()) continue;
        parser->decodeBody(*part);
        doneParts.push_back(part);
        uint32_t id = addPartHead(props, *part);
        addPartProperties(*part, id, props, filter | LoadHeaders);
    }
    return true;
}

uint32_t EMLReader::addPartHead(MailProperties* props, CMimePart& part)
{
    std::u16string boundary = ty::widenBytes(std::string(part.boundary));
    if (classifyPart(part) < 1)
        return props->addProperty(tagForType(part.contentType), 0, boundary, partText(part, part.body))->id();
    std::u16string fileName;
    decodeHeaderParam(fileName, "Content-Disposition", "filename", &part);
    if (fileName.empty()) fileName = ty::widenBytes(std::string(part.name));
    if (fileName == u"winmail.dat") return 0;
    return props->addProperty(kAttachmentTag, 0, u"Attachment", boundary)->id();
}

void EMLReader::addPartProperties(CMimePart& part, uint32_t parentId, MailProperties* props, uint32_t flags)
{
    if (flags & LoadHeaders) {
        for (const auto& field : part.headers) {
            std::u16string value;
            getHeader(value, field.first, &part, true);
            props->addProperty(kHeaderFieldTag, parentId, u"", value);
        }
    }
    std::u16string fileName;
    decodeHeaderParam(fileName, "Content-Disposition", "filename", &part);
    uint32_t kind = classifyPart(part);
    if (!(flags & LoadAttachments) || kind < 1) return;
    if (fileName.empty()) fileName = ty::widenBytes(std::string(part.name));
    std::string_view content = contentOf(part);
    if (fileName == u"winmail.dat") {
        // The TNEF content takes the message's place instead of standing as an attachment.
        ty::Buffer buffer(content.data(), static_cast<int64_t>(content.size()));
        std::string messageName;
        TNEFParser::parse(messageName, buffer, props, 0);
        decodeEnabled = 1;
        return;
    }
    std::u16string name;
    if (fileName.empty()) {
        if (kind == 3) {
            CMime embedded;
            embedded.parse(content.data(), static_cast<uint32_t>(content.size()), CMime::kModeSinglePass);
            std::u16string label;
            if (embedded.root()) getHeader(label, "Subject", embedded.root(), true);
            if (label.empty() && embedded.root()) getHeader(label, "From", embedded.root(), true);
            if (label.empty()) label = u"Unknown";
            name = label + u".eml";
        }
    } else {
        if (fileName.size() >= 4 && fileName.compare(0, 2, u"=?") == 0 &&
            fileName.compare(fileName.size() - 2, 2, u"?=") == 0) {
            std::string bytes = ty::wideToUtf8(fileName);
            decodeRfc2047(fileName, bytes, "ISO-8859-1");
        }
        name = fileName;
    }
    props->addProperty(0x3001001F, parentId, u"Name", name);
    props->addProperty(0x37050003, parentId, u"Attach method", &kind, 4);
    props->addProperty(0x3707001F, parentId, u"File Name", fileName);
    std::u16string text;
    getHeader(text, "Content-ID", &part, true);
    if (!text.empty()) props->addProperty(0x3712001F, parentId, u"Content ID", text);
    getHeader(text, "Content-Location", &part, true);
    if (!text.empty()) props->addProperty(0x3713001F, parentId, u"Content Location", text);
    props->addProperty(0x37010102, parentId, u"Attachment Data", content.data(), content.size());
}

}  // namespace mcl
