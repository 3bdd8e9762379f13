#include "msg/msg_reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <map>
#include <stdexcept>

#include "core/mail_item.h"
#include "foundation/log.h"
#include "foundation/win_time.h"
#include "msg/msg_storage_names.h"
#include "regex/pattern.h"
#include "rtf/rtf_body_import.h"

namespace mcl {

namespace {

constexpr uint32_t kFolderTag = 0xF012001F;
constexpr uint32_t kSizeTag = 0x0E080003;
constexpr uint32_t kCompressedRtfTag = 0x10090102;
constexpr uint32_t kE_NOTIMPL = 0x80004001;
constexpr uint32_t kItemSectionsAlwaysLoaded = 0x83;  // headers, bodies, all properties
constexpr uint32_t kErrorSeverity = 1;

// Property numbers that a quick header read (filter 8) takes.
constexpr uint16_t kListingIds[] = {0x35E0, 0x3613, 0x3602, 0x360A, 0x3001, 0x001A, 0x0E07, 0x0FFF, 0x0E08,
                                    0x0042, 0x0C1A, 0x0065, 0x0C1F, 0x0064, 0x0C1E, 0x3FF8, 0x3FFA, 0x0037,
                                    0x0070, 0x0039, 0x0E06, 0x0C00, 0x0E04, 0x0E03, 0x0E02};
// The times a quick header read takes besides: creation, last modification, delivery.
constexpr uint32_t kListingTimes[] = {0x30070040, 0x30080040, 0x0E060040};

bool inListingIds(uint32_t tag)
{
    return std::find(std::begin(kListingIds), std::end(kListingIds), propId(tag)) != std::end(kListingIds);
}

bool isListingTime(uint32_t tag)
{
    return std::find(std::begin(kListingTimes), std::end(kListingTimes), tag) != std::end(kListingTimes);
}

// Value types whose values live in a stream of their own, not in the fixed-size list.
bool isStreamType(uint16_t type)
{
    return type == PT_OBJECT || type == PT_STRING8 || type == PT_UNICODE || type == 0x0048 || type == PT_BINARY;
}

// The leading hexadecimal digits, as strtoul reads them; too many digits saturate.
uint32_t readHexTag(const std::u16string& text)
{
    uint64_t value = 0;
    for (char16_t c : text) {
        uint32_t digit;
        if (c >= u'0' && c <= u'9')
            digit = c - u'0';
        else if (c >= u'a' && c <= u'f')
            digit = c - u'a' + 10;
        else if (c >= u'A' && c <= u'F')
            digit = c - u'A' + 10;
        else
            break;
        value = std::min<uint64_t>(value * 16 + digit, 0xFFFFFFFF);
    }
    return static_cast<uint32_t>(value);
}

std::u16string hexName(uint32_t tag)
{
    char text[9];
    std::snprintf(text, sizeof text, "%08x", tag);
    return std::u16string(text, text + 8);
}

bool contains(const std::u16string& name, const char16_t* part) { return name.find(part) != std::u16string::npos; }

// A child that can't be opened ends the load. It goes as a standard exception, so that the
// frame reports the storage's own words and code rather than an unknown exception.
[[noreturn]] void throwStorageFailure(const ty::ErrorKeeper& keeper, uint32_t code)
{
    char prefix[48];
    std::snprintf(prefix, sizeof prefix, "Compound file error 0x%08X: ", code);
    throw std::runtime_error(prefix + (keeper.hasError() ? ty::wideToUtf8(keeper.error()->text()) : std::string()));
}

// Blanks trailing CR, LF and NUL to NUL, by 2-byte units for wide text and by bytes otherwise.
void blankTrailingLineEnds(std::string& value, bool wide)
{
    auto isLineEnd = [](uint32_t c) { return c == 0 || c == '\r' || c == '\n'; };
    if (wide) {
        for (size_t unit = value.size() / 2; unit > 0; --unit) {
            uint32_t c = static_cast<uint8_t>(value[2 * unit - 2]) | static_cast<uint8_t>(value[2 * unit - 1]) << 8;
            if (!isLineEnd(c)) break;
            value[2 * unit - 2] = value[2 * unit - 1] = '\0';
        }
    } else {
        for (size_t at = value.size(); at > 0 && isLineEnd(static_cast<uint8_t>(value[at - 1])); --at)
            value[at - 1] = '\0';
    }
}

uint64_t readInto(cfb::Stream& stream, void* buffer, uint64_t count)
{
    uint64_t done = 0;
    stream.read(buffer, count, done);
    return done;
}

}  // namespace

MSGReader::MSGReader(const std::u16string& path) : BaseReader(u"MSGReader", path, FileMSG) {}

MSGReader::MSGReader(const std::u16string& path, std::string image)
    : BaseReader(u"MSGReader", path, FileMSG), image_(std::move(image))
{
}

const std::u16string& MSGReader::addressDelimiters() const
{
    static const std::u16string delimiters = u";";
    return delimiters;
}

uint32_t MSGReader::namedPropertyIdByNumber(const Guid& guid, uint32_t number)
{
    return names_.idByNumber(guid, number);
}

uint32_t MSGReader::namedPropertyIdByName(const std::u16string& name) { return names_.idByName(name); }

bool MSGReader::doInit()
{
    ty::TraceScope trace("mcl::MSGReader::doInit");
    return true;
}

// A message file has no ids: nothing is found, and nothing is wrong.
bool MSGReader::doLoadByID(MailProperties*, uint32_t*, const std::u16string&)
{
    ty::TraceScope trace("mcl::MSGReader::doLoadByID");
    return false;
}

bool MSGReader::doNext()
{
    ty::TraceScope trace("mcl::MSGReader::doNext");
    return false;
}

int32_t MSGReader::doGetItemCount()
{
    ty::TraceScope trace("mcl::MSGReader::doGetItemCount");
    return 1;
}

bool MSGReader::doSaveEmbeddedMessage(Attachment*, MailProperties*, const std::u16string&)
{
    ty::TraceScope trace("mcl::MSGReader::doSaveEmbeddedMessage");
    setError(u"Saving MSG files is not supported yet", u"mcl::MSGReader::doSaveEmbeddedMessage", kErrorSeverity,
             kE_NOTIMPL);
    return false;
}

bool MSGReader::doSaveMessage(MailProperties*, const std::u16string&)
{
    ty::TraceScope trace("mcl::MSGReader::doSaveMessage");
    setError(u"Saving MSG files is not supported yet", u"mcl::MSGReader::doSaveMessage", kErrorSeverity, kE_NOTIMPL);
    return false;
}

bool MSGReader::doLoad(MailProperties* props, uint32_t* filter)
{
    ty::TraceScope trace("mcl::MSGReader::doLoad");
    if (!props || !filter) return false;
    if (*filter == 0) return true;

    uint32_t code = OpenStorage(getFilePath(), props, *filter);
    if (cfb::failed(code)) {
        setError(hasError() ? getError()->text : std::u16string(), u"mcl::MSGReader::doLoad", kErrorSeverity, code);
        return false;
    }
    if (!props->findProperty(kFolderTag)) props->addProperty(kFolderTag, 0, u"Folder", u"/");

    uint64_t fileSize = 0;
    bool sized = true;
    if (image_) {
        fileSize = image_->size();
    } else {
        struct stat info {};
        sized = ::stat(ty::wideToUtf8(getFilePath()).c_str(), &info) == 0;
        if (sized)
            fileSize = static_cast<uint64_t>(info.st_size);
        else
            setSystemError(errno, u"mcl::MSGReader::doLoad", 0);
    }
    if (sized) {
        const uint32_t low = static_cast<uint32_t>(fileSize);
        if (MailProperty* size = props->findProperty(kSizeTag))
            size->setValue(&low, sizeof low);
        else
            props->addProperty(kSizeTag, 0, u"Size", &low, sizeof low);
    }

    // A load of headers brings bodies and every property too: the item stops asking for them.
    auto* item = dynamic_cast<MailItem*>(props->getParent());
    if (*filter != LoadAttachments && *filter != LoadListing && item) {
        *filter |= kItemSectionsAlwaysLoaded;
        item->setLoaded(*filter);
    }
    decodeMultibyteStrings(props);
    bodyPostprocess(props);
    return true;
}

uint32_t MSGReader::openRoot(const std::u16string& path, cfb::Storage& root)
{
    return image_ ? cfb::openStorageMemory(*image_, root) : cfb::openStorageFile(path, root);
}

uint32_t MSGReader::OpenStorage(const std::u16string& path, MailProperties* props, uint32_t filter)
{
    ty::TraceScope trace("mcl::MSGReader::OpenStorage");
    cfb::Storage root;
    uint32_t code = openRoot(path, root);
    if (cfb::failed(code)) {
        setError(u"Can't open specified file", u"mcl::MSGReader::OpenStorage", kErrorSeverity, code);
        return code;
    }
    code = ReadStorage(root, 0, props, filter, kRootListHeaderSize);
    if (cfb::failed(code))
        setError(u"Can't read specified file contents", u"mcl::MSGReader::OpenStorage", kErrorSeverity, code);
    return code;
}

std::u16string MSGReader::getPropTag(const std::u16string& name)
{
    ty::TraceScope trace("mcl::MSGReader::getPropTag");
    static const rx::WPattern tagPattern(u"(?:.*_)(.*)");
    rx::MatchResult match = tagPattern.match(name);
    return match.matched() ? std::u16string(match.group(name, 1)) : std::u16string();
}

uint32_t MSGReader::ReadStorage(cfb::Storage& storage, uint32_t parent, MailProperties* props, uint32_t filter,
                                uint32_t headerSize)
{
    ty::TraceScope trace("mcl::MSGReader::ReadStorage");
    const bool listing = filter == LoadListing;
    const uint32_t f = listing ? LoadHeaders : filter;
    cfb::ElementEnumerator children;
    uint32_t code = storage.enumElements(children);
    if (cfb::failed(code)) return code;

    cfb::ElementInfo child;
    while ((code = children.next(child)) == cfb::S_OK_CODE) {
        uint32_t tag;
        if (contains(child.name, kNamedPropertyStorageMark))
            tag = kNamedPropertyStorageTag;
        else if (contains(child.name, kRecipientStorageMark))
            tag = kRecipientRow;
        else if (contains(child.name, kAttachmentStorageMark))
            tag = kAttachmentRow;
        else
            tag = readHexTag(getPropTag(child.name));

        bool taken;
        if (tag == kAttachmentRow)
            taken = f & LoadAttachments;
        else if (tag == kRecipientRow)
            taken = f & LoadHeaders;
        else
            taken = f & ~LoadAttachments;
        if (listing) taken = taken && (tag == 0 || tag == kRecipientRow || isListingTime(tag) || inListingIds(tag));
        if (!taken) continue;

        if (child.type == cfb::ElementStorage) {
            cfb::Storage sub;
            code = storage.openStorage(child.name, sub);
            if (cfb::failed(code)) throwStorageFailure(storage.keeper(), code);
            if (tag == kEmbeddedMessageTag) ReadOLEStorage(sub, parent, props);
            uint32_t row = props->addProperty(tag, parent, child.name, child.name)->id();
            // An attachment, once taken, is always read in full.
            if (tag == kAttachmentRow)
                ReadStorage(sub, row, props, kLoadEverything, kNestedListHeaderSize);
            else
                ReadStorage(sub, row, props, f,
                            tag == kEmbeddedMessageTag ? kEmbeddedListHeaderSize : kNestedListHeaderSize);
        } else if (contains(child.name, kFixedListStreamName)) {
            readFixedList(storage, child, parent, props, listing, headerSize);
        } else {
            readPropertyStream(storage, child, tag, parent, props);
        }
    }
    if (cfb::failed(code)) throwStorageFailure(storage.keeper(), code);
    return cfb::S_OK_CODE;
}

void MSGReader::readFixedList(cfb::Storage& storage, const cfb::ElementInfo& child, uint32_t parent,
                              MailProperties* props, bool listing, uint32_t headerSize)
{
    cfb::Stream stream;
    uint32_t code = storage.openStream(child.name, stream);
    if (cfb::failed(code)) throwStorageFailure(storage.keeper(), code);
    cfb::ElementInfo info;
    if (cfb::failed(stream.stat(info)) || info.size == 0) return;

    uint64_t position = 0;
    if (cfb::failed(stream.seek(headerSize, ty::SeekBegin, position))) return;
    // Each turn moves on by at least 8 bytes, so the walk ends at the stream's end.
    while (!cfb::failed(stream.seek(0, ty::SeekCurrent, position)) && position < info.size) {
        uint8_t head[4] = {};
        readInto(stream, head, sizeof head);
        stream.seek(4, ty::SeekCurrent, position);  // flags
        const uint16_t type = static_cast<uint16_t>(head[0] | head[1] << 8);
        const uint32_t tag = uint32_t{static_cast<uint16_t>(head[2] | head[3] << 8)} << 16 | type;
        if (isStreamType(type) || (listing && !isListingTime(tag) && !inListingIds(tag))) {
            stream.seek(8, ty::SeekCurrent, position);
            continue;
        }
        // An entry of tag 0 leaves its value bytes to be read as the next entry; well-formed
        // files have none.
        if (tag == 0) continue;
        ReadPropVal(stream, 8, type, props->addProperty(tag, parent, hexName(tag)));
    }
}

void MSGReader::readPropertyStream(cfb::Storage& storage, const cfb::ElementInfo& child, uint32_t tag,
                                   uint32_t parent, MailProperties* props)
{
    cfb::Stream stream;
    uint32_t code = storage.openStream(child.name, stream);
    if (cfb::failed(code)) throwStorageFailure(storage.keeper(), code);
    cfb::ElementInfo info;
    if (cfb::failed(stream.stat(info)) || info.size == 0) return;
    if (tag == kCompressedRtfTag) {
        importRtfBody(stream, parent, child.name, *props);
        uint64_t position = 0;
        stream.seek(0, ty::SeekBegin, position);
    }
    ReadPropVal(stream, info.size, propType(tag), props->addProperty(tag, parent, child.name));
}

void MSGReader::ReadPropVal(cfb::Stream& stream, uint64_t size, uint16_t type, MailProperty* property)
{
    ty::TraceScope trace("mcl::MSGReader::ReadPropVal");
    uint64_t done = 0;
    switch (type) {
    case PT_SYSTIME: {
        uint8_t raw[8] = {};
        done = readInto(stream, raw, sizeof raw);
        uint64_t fileTime = 0;
        for (int i = 7; i >= 0; --i) fileTime = fileTime << 8 | raw[i];
        // A time that FILETIME can't express stays all zero, as the conversion leaves it.
        ty::SystemTime time = ty::fileTimeToSystemTime(fileTime).value_or(ty::SystemTime{});
        property->setValue(&time, sizeof time);
        break;
    }
    case PT_LONG:
    case PT_SHORT:
    case PT_BOOLEAN: {
        uint8_t raw[4] = {};
        const uint64_t width = type == PT_LONG ? 4 : 2;
        done = readInto(stream, raw, width);
        property->setValue(raw, width);
        break;
    }
    default: {
        std::string value(static_cast<size_t>(size), '\0');
        done = readInto(stream, value.data(), size);
        if (type == PT_STRING8 || type == 0x101E) decodeEnabled = 1;
        if (type == PT_UNICODE || type == 0x101F)
            blankTrailingLineEnds(value, true);
        else if (type == PT_STRING8 || type == 0x101E || type == 0x8008)
            blankTrailingLineEnds(value, false);
        property->setValue(value.data(), value.size());
        break;
    }
    }
    // What the value left unread of its 8-byte slot in the fixed-size list is passed over.
    if (done < size) {
        uint64_t position = 0;
        stream.seek(8 - static_cast<int64_t>(done), ty::SeekCurrent, position);
    }
}

uint32_t MSGReader::findStreamByName(cfb::Storage& storage, const std::u16string& wanted, std::u16string& name)
{
    ty::TraceScope trace("mcl::MSGReader::findStreamByName");
    cfb::ElementEnumerator children;
    uint32_t code = storage.enumElements(children);
    if (cfb::failed(code)) return code;
    cfb::ElementInfo child;
    while ((code = children.next(child)) == cfb::S_OK_CODE) {
        if (contains(child.name, wanted.c_str())) {
            name = child.name;
            return cfb::S_OK_CODE;
        }
    }
    return cfb::failed(code) ? code : mul::E_FAIL_CODE;
}

void MSGReader::afterLoad(MailProperties* props, uint32_t filter)
{
    BaseReader::afterLoad(props, filter);
    if (!props || filter == LoadListing) return;
    MailProperty* map = props->findProperty(kNamedPropertyStorageTag);
    if (map) names_.fill(*props, map->id());
}

MailItem* MSGReader::embeddedMessage(const Attachment& attachment)
{
    const MailProperties& source = *attachment.getProperties();
    const MailProperty* message = source.findProperty(kEmbeddedMessageTag, attachment.getId());
    if (!message || message->tag() != kEmbeddedMessageTag) return nullptr;  // the lookup takes any type
    auto* item = new MailItem(this, kLoadEverything);
    MailProperties& copy = *item->getHeaderProperties();
    std::map<uint32_t, uint32_t> copiedIds{{message->id(), 0}};
    // A record is added after its parent, so one pass in table order takes the whole subtree.
    for (size_t i = 0; i < source.count(); ++i) {
        const MailProperty* record = source.at(i);
        auto parent = copiedIds.find(record->parentId());
        if (parent == copiedIds.end()) continue;
        MailProperty* added =
            record->hasValue()
                ? copy.addProperty(record->tag(), parent->second, record->name(), record->bytes(), record->size())
                : copy.addProperty(record->tag(), parent->second, record->name());
        copiedIds[record->id()] = added->id();
    }
    return item;
}

BaseReader* createMSGReader(const std::u16string& path) { return new MSGReader(path); }

}  // namespace mcl
