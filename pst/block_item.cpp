// From a raw property to an item: its value fetched by type, and what it tells of the block.
#include <algorithm>
#include <array>
#include <string_view>

#include "pst/block.h"
#include "pst/little_endian.h"
#include "pst/reader.h"

namespace PST {

namespace {

constexpr uint16_t PT_OBJECT_TYPE = 13;
constexpr uint16_t PT_STRING8_TYPE = 30;
constexpr uint16_t PT_UNICODE_TYPE = 31;

bool isInlineType(uint16_t type)
{
    return type == 2 || type == 3 || type == 11;
}

bool isReferenceType(uint16_t type)
{
    static constexpr std::array<uint16_t, 13> types = {5, 13, 20, 30, 31, 64, 72, 258, 4099, 4116, 4126, 4127, 4354};
    return std::find(types.begin(), types.end(), type) != types.end();
}

// Message classes that make a block a message, tried in this order.
constexpr std::array<std::u16string_view, 8> kMessageClasses = {
    u"IPM.Note", u"IPM.Contact", u"IPM.Task", u"IPM.Appointment",
    u"IPM.Document", u"IPM.StickyNote", u"IPM.Activity", u"IPM.Schedule",
};

bool startsWithClass(const std::string& value, uint16_t type, std::u16string_view name)
{
    if (type == PT_STRING8_TYPE) {
        if (value.size() < name.size()) return false;
        for (size_t i = 0; i < name.size(); ++i)
            if (static_cast<uint8_t>(value[i]) != name[i]) return false;
        return true;
    }
    if (value.size() < name.size() * 2) return false;
    const auto* bytes = reinterpret_cast<const uint8_t*>(value.data());
    for (size_t i = 0; i < name.size(); ++i)
        if (loadU16(bytes + 2 * i) != name[i]) return false;
    return true;
}

}  // namespace

bool Block::fillItem(BlockItem& item, const RawProperty& raw, std::string& scratch,
                     const std::vector<HeapSegment>& segments, const uint8_t* inlineData, size_t inlineLength)
{
    item.id = raw.id;
    item.type = 0;
    item.reserved = 0;
    if (isInlineType(raw.type)) {
        item.type = raw.type;
        item.value.clear();
        for (int shift = 0; shift < 32; shift += 8) item.value += static_cast<char>(raw.value >> shift);
    } else if (isReferenceType(raw.type)) {
        if (inlineData) {
            item.type = raw.type;
            item.value.assign(reinterpret_cast<const char*>(inlineData), inlineLength);
        } else if (readReference(segments, raw.value, scratch)) {
            item.type = raw.type;
            item.value = scratch;
        } else {
            if ((raw.value & 0xF) != 0xF) return false;
            // A reference that names a node of the file rather than a sub-node.
            item.value.clear();
            const DescIndex::DescIndexNode* node = reader_ && reader_->descIndex() ? reader_->descIndex()->find(raw.value) : nullptr;
            if (node) readBuffer(item.value, node->dataId);
        }
        if (raw.type == PT_OBJECT_TYPE) {
            uint8_t nodeBytes[4] = {};
            item.value.copy(reinterpret_cast<char*>(nodeBytes), 4);
            uint32_t subnodeId = loadU32(nodeBytes);
            readSubnode(item.value, subnodes_, subnodeId);
            // An object whose sub-node isn't there keeps that sub-node's id in place of its type.
            if (item.value.empty()) item.type = subnodeId;
        } else if (raw.type == PT_UNICODE_TYPE) {
            item.value.append(2, '\0');
        } else if (raw.type == PT_STRING8_TYPE) {
            item.value.append(1, '\0');
        }
        if (item.type == 0) item.type = raw.type;
    } else {
        setCorrupt(u"Unknown ref type", u"PST::Block::fillItem");
        return false;
    }
    classify(item, raw.type);
    return true;
}

void Block::classify(const BlockItem& item, uint16_t rawType)
{
    switch (item.id) {
    case 0x35E0: kind_ = KindStore; break;
    case 0x3602:
    case 0x360A:
    case 0x3613: kind_ = KindFolder; break;
    case 0x001A:
        if (rawType != PT_STRING8_TYPE && rawType != PT_UNICODE_TYPE) break;
        for (std::u16string_view name : kMessageClasses) {
            if (startsWithClass(item.value, rawType, name)) {
                kind_ = KindMessage;
                break;
            }
        }
        break;
    case 0x3701:
    case 0x3705:
    case 0x3707: kind_ = KindAttachment; break;
    default: break;
    }
}

}  // namespace PST
