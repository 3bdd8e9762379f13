// The OLE object an attachment carries as a storage of its own.
//
// There is no OLE on this platform to run the object's server, so the object is recorded by what
// its storage holds: "OLE Object" is the storage itself, written out as a compound file of its
// own; "MailStream" is the object's native data (a packaged file, a document's contents); the
// width and height are those of its stored presentation, in hundredths of a millimetre.
#include <array>
#include <exception>
#include <string>

#include "foundation/log.h"
#include "msg/msg_reader.h"
#include "storage/compound_file_writer.h"

namespace mcl {

namespace {

constexpr uint32_t kOleObjectTag = 0xF011000D;
constexpr uint32_t kOleMailStreamTag = 0xF0140102;
constexpr uint32_t kOleHeightTag = 0xF1100003;
constexpr uint32_t kOleWidthTag = 0xF1110003;

// Where objects keep their own data, most telling first: an OLE 1 object (packaged files among
// them), then the contents of documents.
constexpr const char16_t* kNativeStreamMarks[] = {u"Ole10Native", u"CONTENTS", u"Contents", u"Package"};
constexpr char16_t kPresentationMark[] = u"OlePres";

struct Extent {
    uint32_t width = 0;
    uint32_t height = 0;
};

bool readStream(cfb::Storage& storage, const std::u16string& name, std::string& bytes)
{
    cfb::Stream stream;
    if (cfb::failed(storage.openStream(name, stream))) return false;
    bytes.assign(static_cast<size_t>(stream.size()), '\0');
    uint64_t done = 0;
    if (cfb::failed(stream.read(bytes.data(), bytes.size(), done))) return false;
    bytes.resize(static_cast<size_t>(done));
    return true;
}

// The presentation stream's width and height: a clipboard format (none, a number, or a named
// format), a target device, then aspect, index, advise flags, a reserved word, width and height.
bool presentationExtent(const std::string& bytes, Extent& extent)
{
    size_t at = 0;
    auto next = [&](uint32_t& value) {
        if (bytes.size() - at < 4) return false;
        value = 0;
        for (int i = 3; i >= 0; --i) value = value << 8 | static_cast<uint8_t>(bytes[at + i]);
        at += 4;
        return true;
    };
    auto skip = [&](uint64_t count) {
        if (bytes.size() - at < count) return false;
        at += static_cast<size_t>(count);
        return true;
    };
    uint32_t marker = 0, ignored = 0, deviceSize = 0;
    if (!next(marker)) return false;
    if (marker == 0xFFFFFFFF || marker == 0xFFFFFFFE) {
        if (!next(ignored)) return false;
    } else if (!skip(marker)) {
        return false;
    }
    if (!next(deviceSize) || deviceSize < 4 || !skip(deviceSize - 4)) return false;
    for (int field = 0; field < 4; ++field)
        if (!next(ignored)) return false;
    return next(extent.width) && next(extent.height);
}

}  // namespace

bool MSGReader::ReadOLEStorage(cfb::Storage& storage, uint32_t parent, MailProperties* props)
{
    ty::TraceScope trace("mcl::MSGReader::ReadOLEStorage");
    cfb::ElementInfo info;
    if (!props || cfb::failed(storage.stat(info)) || info.classId == std::array<uint8_t, 16>{}) return false;
    std::string object;
    try {
        cfb::CompoundFileWriter writer;
        if (cfb::failed(cfb::copyStorageTree(storage, writer.root))) return false;
        object = writer.build();
    } catch (const std::exception& e) {
        trace.debug("not recorded: ", e.what());
        return false;
    }
    props->addProperty(kOleObjectTag, parent, u"OLE Object", object.data(), object.size());

    std::u16string name;
    std::string bytes;
    for (const char16_t* mark : kNativeStreamMarks) {
        if (findStreamByName(storage, mark, name) == cfb::S_OK_CODE && readStream(storage, name, bytes)) {
            props->addProperty(kOleMailStreamTag, parent, u"MailStream", bytes.data(), bytes.size());
            break;
        }
    }
    Extent extent;
    if (findStreamByName(storage, kPresentationMark, name) == cfb::S_OK_CODE && readStream(storage, name, bytes) &&
        presentationExtent(bytes, extent)) {
        props->addProperty(kOleWidthTag, parent, u"OLE Object width", &extent.width, sizeof extent.width);
        props->addProperty(kOleHeightTag, parent, u"OLE Object height", &extent.height, sizeof extent.height);
    }
    return true;
}

bool MSGReader::ReadOLEStorage(std::string bytes, uint32_t parent, MailProperties* props)
{
    cfb::Storage storage;
    if (cfb::failed(cfb::openStorageMemory(std::move(bytes), storage))) return false;
    return ReadOLEStorage(storage, parent, props);
}

}  // namespace mcl
