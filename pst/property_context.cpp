// Property lists: a node's properties as one row of items.
#include <algorithm>
#include <array>

#include "pst/block.h"
#include "pst/little_endian.h"
#include "pst/reader.h"

namespace PST {

namespace {

constexpr size_t kEntrySize = 8;

// The properties a listing needs; with the reader's headersOnly set, no others are read.
constexpr std::array<uint16_t, 25> kHeaderProperties = {
    0x35E0, 0x3613, 0x3602, 0x360A, 0x3001, 0x001A, 0x0E07, 0x0FFF, 0x0E08, 0x0042, 0x0C1A, 0x0065, 0x0C1F,
    0x0064, 0x0C1E, 0x3FF8, 0x3FFA, 0x0037, 0x0070, 0x0039, 0x0E06, 0x0C00, 0x0E04, 0x0E03, 0x0E02,
};

bool isHeaderProperty(uint16_t id)
{
    return std::find(kHeaderProperties.begin(), kHeaderProperties.end(), id) != kHeaderProperties.end();
}

}  // namespace

bool Block::parseType1(const HeapHeader& header, const std::vector<HeapSegment>& segments)
{
    std::string list;
    if (!readReference(segments, header.userRoot, list)) return false;
    list.resize(std::max<size_t>(list.size(), 8));
    const auto* bytes = reinterpret_cast<const uint8_t*>(list.data());
    // Only the single-level form with 2-byte keys and 6-byte entries is a property list.
    if (loadU16(bytes) != 0x02B5 || loadU16(bytes + 2) != 0x0006) {
        setCorrupt(u"Invalid table data.", u"PST::Block::parseType1");
        return false;
    }
    std::string entries;
    readReference(segments, loadU32(bytes + 4), entries);

    rows_.assign(1, ItemRow{});
    ItemRow& row = rows_.front();
    const bool headersOnly = reader_ && reader_->headersOnly() == 1;
    std::string scratch;
    const auto* entry = reinterpret_cast<const uint8_t*>(entries.data());
    for (size_t i = 0; i + kEntrySize <= entries.size(); i += kEntrySize) {
        RawProperty raw{loadU16(entry + i), loadU16(entry + i + 2), loadU32(entry + i + 4)};
        if (headersOnly && !isHeaderProperty(raw.id)) continue;
        BlockItem item;
        if (fillItem(item, raw, scratch, segments, nullptr, 0)) row.emplace(item.id, std::move(item));
    }
    return true;
}

}  // namespace PST
