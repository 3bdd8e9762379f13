#include "tnef/tnef_parser.h"

#include <memory>

#include "core/types.h"
#include "foundation/binary_reader.h"
#include "foundation/log.h"
#include "rtf/rtf_body_import.h"

namespace mcl {

namespace {

// Attributes acted on, by their low 16 bits.
constexpr uint16_t kAttSubject = 0x8004;
constexpr uint16_t kAttMessageClass = 0x8008;
constexpr uint16_t kAttBody = 0x800C;
constexpr uint16_t kAttMessageProps = 0x9003;
constexpr uint16_t kAttAttachRendering = 0x9002;
constexpr uint16_t kAttAttachTitle = 0x8010;
constexpr uint16_t kAttAttachData = 0x800F;
constexpr uint16_t kAttAttachmentProps = 0x9005;

constexpr uint32_t kSubjectA = 0x0037001E;
constexpr uint32_t kMessageClassA = 0x001A001E;
constexpr uint32_t kBodyA = 0x1000001E;
constexpr uint32_t kAttachFileNameA = 0x3704001E;
constexpr uint32_t kDisplayNameA = 0x3001001E;
constexpr uint32_t kAttachDataBinary = 0x37010102;
constexpr uint32_t kRtfCompressed = 0x10090102;

void appendToText(MailProperties* props, uint32_t tag, uint32_t rowId, const std::string& suffix)
{
    MailProperty* property = props->findProperty(tag, rowId);
    if (!property) return;
    std::string text;
    if (property->hasValue()) text.assign(reinterpret_cast<const char*>(property->bytes()), property->size());
    text += suffix;
    property->setValue(text.data(), text.size());
}

void addMessageAttribute(std::string& messageName, TNEFObject& object, MailProperties* props, uint32_t parentId)
{
    switch (object.attribute) {
    case kAttSubject: TNEFParser::addTNEFString(messageName, kSubjectA, object, props, parentId); break;
    case kAttMessageClass: TNEFParser::addTNEFString(messageName, kMessageClassA, object, props, parentId); break;
    case kAttBody: TNEFParser::addTNEFString(messageName, kBodyA, object, props, parentId); break;
    default: break;
    }
}

}  // namespace

bool TNEFParser::parse(std::string& messageName, ty::IOS& stream, MailProperties* props, uint32_t parentId)
{
    ty::TraceScope trace("mcl::TNEFParser::parse");
    if (!props) return false;
    ty::BinaryReader reader(stream);
    uint32_t signature = 0;
    if (reader.readUInt32(signature) != 4 || signature != kTNEFSignature) return false;
    uint16_t key = 0;
    reader.readUInt16(key);

    MailProperty* current = nullptr;  // the attachment row that attachment attributes belong to
    while (stream._getPosition() < stream.getSize()) {
        TNEFObject object;
        if (!parseObject(object, stream)) break;

        if (object.level == TNEFMessageLevel) {
            if (object.attribute != kAttMessageProps) {
                addMessageAttribute(messageName, object, props, parentId);
                continue;
            }
            if (!parseMAPIAttrs(messageName, object, props, parentId)) return false;
            if (MailProperty* rtf = props->findProperty(kRtfCompressed, parentId)) {
                ty::Buffer body(rtf->bytes(), static_cast<int64_t>(rtf->size()));
                importRtfBody(body, parentId, u"", *props);
            }
            continue;
        }

        switch (object.attribute) {
        case kAttAttachRendering:
            current = props->addProperty(kAttachmentRow, parentId, u"Attachment");
            messageName.clear();
            break;
        case kAttAttachData:
            // The lookup is under the message's parent while the row goes under the attachment.
            if (!current || props->findProperty(kAttachDataBinary, parentId)) break;
            props->addProperty(kAttachDataBinary, current->id(), u"Attach Data", object.data.data(), object.length);
            break;
        case kAttAttachTitle:
            if (current) addTNEFString(messageName, kAttachFileNameA, object, props, current->id());
            break;
        case kAttAttachmentProps:
            if (!current) break;
            if (!parseMAPIAttrs(messageName, object, props, current->id())) return false;
            if (!messageName.empty()) {
                appendToText(props, kDisplayNameA, current->id(), messageName);
                appendToText(props, kAttachFileNameA, current->id(), messageName);
            }
            break;
        default: break;
        }
    }
    return true;
}

bool TNEFParser::parseObject(TNEFObject& object, ty::IOS& stream)
{
    ty::TraceScope trace("mcl::TNEFParser::parseObject");
    ty::BinaryReader reader(stream);
    if (reader.readUInt8(object.level) != 1) return false;
    if (object.level != TNEFMessageLevel && object.level != TNEFAttachmentLevel) return false;
    uint32_t id = 0;
    if (reader.readUInt32(id) != 4 || reader.readUInt32(object.length) != 4) return false;
    object.attribute = static_cast<uint16_t>(id & 0xFFFF);
    object.attributeType = static_cast<uint16_t>(id >> 16);

    if (object.length > 0) {
        int64_t left = stream.getSize() - stream._getPosition();
        if (static_cast<int64_t>(object.length) > left) return false;
        auto block = std::make_unique_for_overwrite<uint8_t[]>(object.length);
        if (stream._read(block.get(), object.length) != static_cast<int64_t>(object.length)) return false;
        object.data.attach(block.release(), object.length, true);
    }
    // The checksum is not compared, so that a damaged stream parses as far as its lengths carry
    // it; a stream that ends where the checksum would stand still keeps its last attribute.
    uint16_t checksum = 0;
    reader.readUInt16(checksum);
    return true;
}

void TNEFParser::addTNEFString(const std::string&, uint32_t tag, TNEFObject& object, MailProperties* props,
                               uint32_t parentId)
{
    ty::TraceScope trace("mcl::TNEFParser::addTNEFString");
    std::string bytes;
    object.data.readAll(bytes);
    props->addProperty(tag, parentId, u"", bytes.data(), bytes.size());
}

}  // namespace mcl
