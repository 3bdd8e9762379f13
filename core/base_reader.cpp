#include "core/base_reader.h"

#include <cstring>
#include <exception>

#include "foundation/charset_table.h"
#include "foundation/code_page.h"
#include "foundation/compound_file_signature.h"
#include "foundation/log.h"
#include "regex/pattern.h"

namespace mcl {

namespace {

constexpr uint32_t kTransportHeadersW = 0x007D001F;
constexpr uint32_t kSubmitTimeZoneW = 0xF039001F;
constexpr uint32_t kInternetCodePage = 0x3FDE0003;
constexpr uint32_t kPlainBodyA = 0x1000001E;
constexpr uint32_t kHtmlBodyA = 0x1013001E;

}  // namespace

BaseReader::BaseReader(std::u16string className, std::u16string path, uint32_t type)
    : BaseObject(className.empty() ? u"BaseReader" : std::move(className)),
      filePath(std::move(path)),
      fileType(type),
      // The system's ANSI code page stands for the C locale's default. It is asked of the
      // locale as it stands: setting the locale here would change the host's own.
      ansiCodePage(ty::systemAnsiCodePage())
{
}

BaseReader::~BaseReader() = default;

uint32_t BaseReader::setHeaderMode(uint32_t value) { return value; }

const std::u16string& BaseReader::addressDelimiters() const
{
    static const std::u16string delimiters = u";,";
    return delimiters;
}

uint32_t BaseReader::isHeaderMode() const { return 0; }
uint32_t BaseReader::namedPropertyIdByNumber(const Guid&, uint32_t) { return 0; }
uint32_t BaseReader::namedPropertyIdByName(const std::u16string&) { return 0; }
bool BaseReader::doLoadByNid(MailProperties*, uint32_t*, uint64_t) { return false; }
bool BaseReader::doLoadIds(std::vector<uint64_t>&) { return false; }
FolderTree* BaseReader::folderTree() { return nullptr; }

template <class Call>
bool BaseReader::guarded(const char* source, Call&& call)
{
    try {
        return call();
    } catch (const std::exception& e) {
        setError(ty::utf8ToWide(e.what()), ty::utf8ToWide(source), 1, mul::E_UNEXPECTED_CODE);
    } catch (...) {
        setError(u"Unknown exception!", ty::utf8ToWide(source), 1, mul::E_UNEXPECTED_CODE);
    }
    return false;
}

namespace {

void logFailure(ty::TraceScope& trace, const BaseObject& object)
{
    if (object.hasError()) trace.log(ty::LogError, object.getError()->getDescription());
}

}  // namespace

bool BaseReader::init()
{
    ty::TraceScope trace("mcl::BaseReader::init");
    clearError();
    bool ok = guarded("mcl::BaseReader::init", [&] { return doInit(); });
    if (!ok) logFailure(trace, *this);
    return ok;
}

bool BaseReader::load(MailProperties* props, uint32_t* filter)
{
    ty::TraceScope trace("mcl::BaseReader::load");
    clearError();
    bool ok = guarded("mcl::BaseReader::load", [&] {
        decodedUpTo = props ? static_cast<uint32_t>(props->count()) : 0;
        bool loaded = doLoad(props, filter);
        afterLoad(props, filter ? *filter : 0);
        return loaded;
    });
    if (!ok) logFailure(trace, *this);
    return ok;
}

bool BaseReader::loadByID(MailProperties* props, uint32_t* filter, const std::u16string& id)
{
    ty::TraceScope trace("mcl::BaseReader::loadByID");
    clearError();
    bool ok = guarded("mcl::BaseReader::loadByID", [&] {
        decodedUpTo = props ? static_cast<uint32_t>(props->count()) : 0;
        return doLoadByID(props, filter, id);
    });
    if (!ok) logFailure(trace, *this);
    return ok;
}

bool BaseReader::loadByNid(MailProperties* props, uint32_t* filter, uint64_t nid)
{
    ty::TraceScope trace("mcl::BaseReader::loadByNid");
    clearError();
    bool ok = guarded("mcl::BaseReader::loadByNid", [&] {
        decodedUpTo = props ? static_cast<uint32_t>(props->count()) : 0;
        return doLoadByNid(props, filter, nid);
    });
    if (!ok) logFailure(trace, *this);
    return ok;
}

bool BaseReader::loadIds(std::vector<uint64_t>& ids)
{
    ty::TraceScope trace("mcl::BaseReader::loadIds");
    clearError();
    bool ok = guarded("mcl::BaseReader::loadIds", [&] { return doLoadIds(ids); });
    if (!ok) logFailure(trace, *this);
    return ok;
}

bool BaseReader::next()
{
    ty::TraceScope trace("mcl::BaseReader::next");
    clearError();
    bool ok = guarded("mcl::BaseReader::next", [&] { return doNext(); });
    if (!ok) logFailure(trace, *this);
    return ok;
}

bool BaseReader::saveEmbeddedMessage(Attachment* attachment, MailProperties* props, const std::u16string& path)
{
    ty::TraceScope trace("mcl::BaseReader::saveEmbeddedMessage");
    trace.debug("fileName = ", path);
    clearError();
    bool ok = guarded("mcl::BaseReader::saveEmbeddedMessage",
                      [&] { return doSaveEmbeddedMessage(attachment, props, path); });
    if (!ok) logFailure(trace, *this);
    return ok;
}

bool BaseReader::saveMessage(MailProperties* props, const std::u16string& path)
{
    ty::TraceScope trace("mcl::BaseReader::saveMessage");
    clearError();
    bool ok = guarded("mcl::BaseReader::saveMessage", [&] { return doSaveMessage(props, path); });
    if (!ok) logFailure(trace, *this);
    return ok;
}

int32_t BaseReader::getCount()
{
    ty::TraceScope trace("mcl::BaseReader::getCount");
    clearError();
    int32_t count = -1;
    guarded("mcl::BaseReader::getCount", [&] {
        count = doGetItemCount();
        return true;
    });
    if (count < 0) logFailure(trace, *this);
    return count;
}

void BaseReader::decodeMultibyteStrings(MailProperties* props)
{
    if (!props || props->count() == 0) return;
    MailProperty* last = props->last();
    if (decodeEnabled == 0 || decodedUpTo == last->id()) return;
    if (ansiCodePage == 0) return;
    for (size_t index = decodedUpTo; index < props->count(); ++index) {
        MailProperty* property = props->at(index);
        uint32_t tag = property->tag();
        if (propType(tag) != PT_STRING8 || propId(tag) == 0) continue;
        uint32_t wideTag = (tag & 0xFFFF0000) | PT_UNICODE;
        if (property->size() == 0) {
            property->setTag(wideTag);
            continue;
        }
        uint32_t codePage = ansiCodePage;
        if (tag == kPlainBodyA || tag == kHtmlBodyA) {
            if (MailProperty* cpid = props->findProperty(kInternetCodePage)) codePage = cpid->valueU32();
        }
        const char* text = reinterpret_cast<const char*>(property->bytes());
        size_t length = strnlen(text, static_cast<size_t>(property->size()));
        std::u16string wide;
        if (ty::convertCodePageToWide(codePage, text, length, wide, conversionMode)) {
            property->setValue(wide);
            property->setTag(wideTag);
        }
    }
    decodedUpTo = last->id();
}

void BaseReader::afterLoad(MailProperties* props, uint32_t)
{
    if (!props || props->findProperty(kSubmitTimeZoneW)) return;
    MailProperty* headers = props->findProperty(kTransportHeadersW);
    if (!headers) return;
    rx::WPattern datePattern(
        uR"(\s*Date:\s*\w+\W*?\d+\D*?\w+\W*?\d+\D*?\d+\D*?\d+\D*?\d+\D*([\+\-]\d{4}))",
        rx::Global | rx::IgnoreCase);
    std::u16string text = headers->toString();
    rx::MatchResult match = datePattern.match(text);
    if (match.matched() && !match.group(text, 1).empty())
        props->addProperty(kSubmitTimeZoneW, 0, u"Time zone", match.group(text, 1));
}

bool BaseReader::addRecipientRows(const std::vector<RecipientRecord>& records, MailProperties* props,
                                  uint32_t parentId)
{
    if (records.empty()) return false;
    for (const RecipientRecord& record : records) {
        MailProperty* row = props->addProperty(kRecipientRow, parentId, u"Recipient", std::u16string_view());
        props->addProperty(0x3001001F, row->id(), u"Display name", record.displayName);
        props->addProperty(0x3003001F, row->id(), u"Email address", record.address);
    }
    return true;
}

// An attached object can't be instantiated here: there is no OLE to run its server. The bytes
// are accepted when they open as a compound file, and nothing further is recorded for them.
bool BaseReader::addOleObject(const MailProperty* sourceProperty, MailProperties*, uint32_t)
{
    return sourceProperty && sourceProperty->bytes() &&
           ty::hasCompoundFileHeader(sourceProperty->bytes(), static_cast<size_t>(sourceProperty->size()));
}

std::string BaseReader::contentCharset(const MailProperties* props)
{
    if (MailProperty* cpid = props->findProperty(kInternetCodePage)) {
        std::string name = ty::charsetForCodePage(cpid->valueU32());
        if (!name.empty()) return name;
    }
    uint32_t id = namedPropertyIdByName(u"content-type");
    if (id == 0) return {};
    MailProperty* contentType = props->findProperty((id << 16) | PT_UNICODE);
    if (!contentType) return {};
    rx::WPattern charsetPattern(uR"(\.*charset\s*=\s*[\"\']([^\"\']+)[\"\'].*)",
                                rx::Global | rx::IgnoreCase);
    std::u16string text = contentType->toString();
    rx::MatchResult match = charsetPattern.match(text);
    return match.matched() ? ty::wideToUtf8(match.group(text, 1)) : std::string();
}

void BaseReader::convertHtmlBytes(MailProperty* html, const MailProperties* props)
{
    std::string bytes(reinterpret_cast<const char*>(html->bytes()), static_cast<size_t>(html->size()));
    // HTML names its tags and attributes in any case; the declaration goes so that the
    // converted page doesn't contradict itself.
    rx::Pattern metaCharset(R"(\<meta\s+.*content\s*=\s*[\"\'].*charset\s*=\s*[\"\']?([^\"\'\>\s]+)[\"\'].*\>)",
                            rx::IgnoreCase);
    rx::MatchResult match = metaCharset.match(bytes);
    std::string charset;
    if (match.took(1)) {
        charset = match.group(bytes, 1);
        bytes.erase(static_cast<size_t>(match.start(0)), static_cast<size_t>(match.end(0) - match.start(0)));
    }
    if (charset.empty()) charset = contentCharset(props);
    std::u16string text;
    ty::convertToWide(text, bytes.data(), bytes.size(), charset.c_str(), true);
    html->setValue(text);
    html->setTag((html->tag() & 0xFFFF0000) | PT_UNICODE);
}

}  // namespace mcl
