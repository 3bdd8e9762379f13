// The MAPI property lists of a TNEF stream: the message's and each attachment's.
#include <algorithm>
#include <string>

#include "core/types.h"
#include "foundation/binary_reader.h"
#include "foundation/log.h"
#include "foundation/win_time.h"
#include "msg/msg_reader.h"
#include "tnef/tnef_parser.h"

namespace mcl {

namespace {

constexpr uint16_t kMultiValued = 0x1000;
constexpr uint16_t kFirstNamedId = 0x8000;

// Value types beside those of core/types.h.
constexpr uint16_t kFloat = 0x0004;
constexpr uint16_t kDouble = 0x0005;
constexpr uint16_t kCurrency = 0x0006;
constexpr uint16_t kAppTime = 0x0007;
constexpr uint16_t kInt64 = 0x0014;
constexpr uint16_t kGuid = 0x0048;

constexpr uint32_t kAttachDataObject = 0x3701000D;
constexpr uint32_t kAttachDataBinary = 0x37010102;

// Reads a list out of an attribute's data. A read gets all it asks for or fails, and a skip
// never leaves the data, so no count in the list can carry the walk past its end.
class ListCursor {
public:
    explicit ListCursor(ty::Buffer& data) : data_(data), reader_(data) { data_._seek(0, ty::SeekBegin); }

    uint64_t position() { return static_cast<uint64_t>(data_._getPosition()); }
    uint64_t size() { return static_cast<uint64_t>(data_.getSize()); }
    uint64_t left() { return size() - position(); }
    const uint8_t* at(uint64_t offset) const { return data_.data() + offset; }

    bool read(uint16_t& out) { return reader_.readUInt16(out) == 2; }
    bool read(uint32_t& out) { return reader_.readUInt32(out) == 4; }
    bool read(uint64_t& out) { return reader_.readUInt64(out) == 8; }
    bool skip(uint64_t count)
    {
        if (count > left()) return false;
        data_._seek(static_cast<int64_t>(count), ty::SeekCurrent);
        return true;
    }
    bool append(std::string& out, uint64_t count)
    {
        if (count > left()) return false;
        size_t start = out.size();
        out.resize(start + count);
        return data_._read(out.data() + start, static_cast<int64_t>(count)) == static_cast<int64_t>(count);
    }
    // Values are padded to a multiple of 4; padding missing at the very end loses nothing.
    void skipPadding(uint64_t valueSize)
    {
        data_._seek(static_cast<int64_t>((4 - valueSize % 4) % 4), ty::SeekCurrent);
    }

private:
    ty::Buffer& data_;
    ty::BinaryReader reader_;
};

struct Value {
    const uint8_t* bytes = nullptr;
    uint64_t size = 0;
};

const uint8_t* bytesOf(const std::string& text) { return reinterpret_cast<const uint8_t*>(text.data()); }

// A named property's set and name are read over: the property is stored under its raw id. A
// kind other than 0 counts the names that follow, each a length and its bytes padded to 4.
bool skipPropertyName(ListCursor& list)
{
    uint32_t kind = 0;
    if (!list.skip(16) || !list.read(kind)) return false;
    if (kind == 0) {
        uint32_t number = 0;
        return list.read(number);
    }
    for (uint32_t i = 0; i < kind; ++i) {
        uint32_t length = 0;
        if (!list.read(length) || !list.skip((uint64_t{length} + 3) & ~uint64_t{3})) return false;
    }
    return true;
}

// Strings, binaries and objects: a count, then for each value a size and its bytes padded to 4.
// The values of a multi-valued property run together in one value with no separator.
bool readCountedValues(ListCursor& list, uint16_t type, std::string& scratch, Value& value, ty::TraceScope& trace)
{
    uint32_t count = 0;
    if (!list.read(count)) return false;
    trace.debug("valCount = ", count);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t size = 0;
        if (!list.read(size)) return false;
        trace.debug(i, ": sz = ", size);
        uint64_t payload = size;
        if (type == PT_OBJECT) {
            // The object's interface identifier leads its bytes.
            if (size < 16 || !list.skip(16)) return false;
            payload -= 16;
        }
        if (!list.append(scratch, payload)) return false;
        trace.debug("temp size: ", scratch.size());
        list.skipPadding(size);
    }
    if (count != 0) value = {bytesOf(scratch), scratch.size()};
    return true;
}

// Reads the value at the cursor. A multi-valued time comes back as binary.
bool readValue(ListCursor& list, uint16_t& type, bool multiValued, std::string& scratch, Value& value,
               ty::TraceScope& trace)
{
    uint64_t start = list.position();
    value = {list.at(start), 0};
    switch (type) {
    case PT_SHORT:
        value.size = 2;  // of the 4 bytes the field takes
        return list.skip(4);
    case PT_LONG: {
        if (!multiValued) {
            value.size = 4;
            return list.skip(4);
        }
        uint32_t count = 0;
        if (!list.read(count)) return false;
        value = {list.at(start + 4), uint64_t{count} * 4};
        return list.skip(value.size);
    }
    case kFloat:
    case PT_BOOLEAN: value.size = 4; return list.skip(4);
    case kDouble:
    case kCurrency:
    case kAppTime:
    case kInt64: value.size = 8; return list.skip(8);
    case PT_SYSTIME: {
        if (multiValued) {
            uint32_t count = 0;
            if (!list.read(count)) return false;
            uint64_t size = uint64_t{count} * 8;
            if (!list.skip(size)) return false;
            // The stored values begin 8 bytes on from the count, which takes 4; what would run
            // past the data is cut off.
            uint64_t from = std::min(start + 8, list.size());
            value = {list.at(from), std::min(size, list.size() - from)};
            type = PT_BINARY;
            return true;
        }
        uint64_t fileTime = 0;
        if (!list.read(fileTime)) return false;
        ty::SystemTime time;  // zero for a FILETIME that has no SYSTEMTIME
        if (auto converted = ty::fileTimeToSystemTime(fileTime)) time = *converted;
        scratch.assign(reinterpret_cast<const char*>(&time), sizeof time);
        value = {bytesOf(scratch), sizeof time};
        return true;
    }
    case kGuid: value.size = 16; return list.skip(16);
    case PT_OBJECT:
    case PT_STRING8:
    case PT_UNICODE:
    case PT_BINARY: return readCountedValues(list, type, scratch, value, trace);
    default: return false;
    }
}

bool holdsTNEFStream(const Value& value)
{
    if (value.size < 4) return false;
    uint32_t signature = uint32_t{value.bytes[0]} | uint32_t{value.bytes[1]} << 8 |
                         uint32_t{value.bytes[2]} << 16 | uint32_t{value.bytes[3]} << 24;
    return signature == kTNEFSignature;
}

}  // namespace

bool TNEFParser::parseMAPIAttrs(std::string& messageName, TNEFObject& object, MailProperties* props,
                                uint32_t parentId)
{
    ty::TraceScope trace("mcl::TNEFParser::parseMAPIAttrs");
    trace.debug("props: ", props->count(), " parentId: ", parentId);
    ListCursor list(object.data);
    uint32_t count = 0;
    if (!list.read(count)) return false;
    trace.debug("count: ", count);

    for (uint32_t i = 0; i < count; ++i) {
        uint16_t type = 0;
        uint16_t id = 0;
        if (!list.read(type) || !list.read(id)) return false;
        bool multiValued = (type & kMultiValued) != 0;
        type = static_cast<uint16_t>(type & ~kMultiValued);
        trace.debug("name: ", id, " type: ", type);
        if (id >= kFirstNamedId && !skipPropertyName(list)) return false;

        std::string scratch;
        Value value;
        if (!readValue(list, type, multiValued, scratch, value, trace)) return false;
        uint32_t tag = uint32_t{id} << 16 | type;

        if (tag != kAttachDataObject) {
            trace.debug("before createProperty");
            props->addProperty(tag, parentId, u"TNEF Property", value.bytes, value.size);
            trace.debug("after createProperty");
        } else if (holdsTNEFStream(value)) {
            // An attached message travels as a TNEF stream of its own; it is kept as the
            // attachment's data.
            trace.debug("1.1");
            if (MailProperty* data = props->findProperty(kAttachDataBinary, parentId))
                data->setValue(value.bytes, value.size);
            else
                props->addProperty(kAttachDataBinary, parentId, u"TNEF Property", value.bytes, value.size);
            messageName.clear();
        } else {
            // An OLE object's storage: kept as it stands, and read for the object it holds.
            trace.debug("1.2");
            props->addProperty(kAttachDataObject, parentId, u"TNEF Property", value.bytes, value.size);
            MSGReader::ReadOLEStorage(std::string(reinterpret_cast<const char*>(value.bytes), value.size), parentId,
                                      props);
        }
    }
    trace.debug("end");
    return true;
}

}  // namespace mcl
