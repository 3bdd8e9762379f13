// Loading the name-to-id map: the named properties of the file and the property ids that
// stand for them.
#include <array>

#include "foundation/binary_reader.h"
#include "pst/block.h"
#include "pst/node_ids.h"
#include "pst/reader.h"

namespace PST {

namespace {

constexpr uint32_t kGuidStreamId = 2;
constexpr uint32_t kEntryStreamId = 3;
constexpr uint32_t kStringStreamId = 4;
constexpr uint32_t kFirstNamedPropertyId = 0x8000;

// PS_MAPI and PS_PUBLIC_STRINGS, the two GUIDs the map names by index, as on disk.
constexpr std::array<uint8_t, 16> kMapiGuid = {0x28, 0x03, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                               0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};
constexpr std::array<uint8_t, 16> kPublicStringsGuid = {0x29, 0x03, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                                        0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};

std::string stringName(const std::string& strings, uint32_t offset)
{
    if (offset >= strings.size()) return {};
    ty::Buffer stream(strings.data(), static_cast<int64_t>(strings.size()));
    stream._seek(offset, ty::SeekBegin);
    uint32_t length = 0;
    ty::BinaryReader(stream).readUInt32(length);
    size_t start = static_cast<size_t>(stream._getPosition());
    return strings.substr(start, std::min<size_t>(length, strings.size() - start));
}

std::string numericName(const std::string& guids, uint16_t word, uint32_t value)
{
    std::string payload(16, '\0');
    if (word > 1) {
        uint32_t guidIndex = word >> 1;
        if (guidIndex == 1) {
            payload.assign(kMapiGuid.begin(), kMapiGuid.end());
        } else if (guidIndex == 2) {
            payload.assign(kPublicStringsGuid.begin(), kPublicStringsGuid.end());
        } else {
            size_t at = (guidIndex - 3) * size_t{16};
            if (at < guids.size()) guids.copy(payload.data(), 16, at);
        }
    }
    for (int shift = 0; shift < 32; shift += 8) payload += static_cast<char>(value >> shift);
    return payload;
}

}  // namespace

void Reader::loadNameMap()
{
    // The map describes the file now open: nothing of an earlier file stays in it.
    nameMap_.clear();
    nameEntryStream_.clear();
    nameStringStream_.clear();
    nameGuidStream_.clear();

    const DescIndex::DescIndexNode* node = descIndex_->find(NID_NAME_TO_ID_MAP);
    if (!node) return;
    Block block(this, node, nullptr, KindUnknown);
    if (block.hasError()) {
        setError(block.error());
        return;
    }
    std::string entries, strings, guids;
    if (!block.rows().empty()) {
        for (const auto& [id, item] : block.rows().front()) {
            if (id == kEntryStreamId) entries = item.value;
            else if (id == kStringStreamId) strings = item.value;
            else if (id == kGuidStreamId) guids = item.value;
        }
    }
    if (entries.empty()) return;
    nameEntryStream_ = entries;
    nameStringStream_ = strings;
    nameGuidStream_ = guids;

    ty::Buffer stream(entries.data(), static_cast<int64_t>(entries.size()));
    ty::BinaryReader reader(stream);
    // A record cut short at the end is taken with zeros for what is missing.
    while (stream._getPosition() < stream.getSize()) {
        uint32_t value = 0;
        uint16_t word = 0;
        uint16_t propertyIndex = 0;
        reader.readUInt32(value);
        reader.readUInt16(word);
        reader.readUInt16(propertyIndex);
        NamedProperty entry;
        entry.word = word;
        entry.propertyId = propertyIndex + kFirstNamedPropertyId;
        if (word & 1) {
            entry.kind = NamedProperty::String;
            entry.payload = stringName(strings, value);
        } else {
            entry.kind = NamedProperty::Numeric;
            entry.payload = numericName(guids, word, value);
        }
        nameMap_.emplace(entry.propertyId, std::move(entry));
    }
}

}  // namespace PST
