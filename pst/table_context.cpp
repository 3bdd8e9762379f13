// Tables: the row ids from a table's row index and, unless the block is a folder's table,
// its rows as items.
#include <algorithm>
#include <set>

#include "foundation/binary_reader.h"
#include "pst/block.h"
#include "pst/little_endian.h"
#include "pst/reader.h"

namespace PST {

namespace {

constexpr uint8_t kTableType = 0x7C;
constexpr uint8_t kRowIndexType = 0xB5;
constexpr size_t kTableInfoSize = 22;
constexpr size_t kColumnSize = 8;
constexpr size_t kInlineCellLimit = 4;

struct Column {
    uint32_t tag = 0;
    uint16_t offset = 0;
    uint8_t size = 0;
    uint8_t bit = 0;
};

// Bits of the presence bitmap run from the most significant one of each byte.
bool cellPresent(const uint8_t* bitmap, size_t bitmapSize, uint8_t bit)
{
    // A bit beyond the bitmap can't be set: such a column is absent.
    if (static_cast<size_t>(bit >> 3) >= bitmapSize) return false;
    return bitmap[bit >> 3] & (0x80 >> (bit & 7));
}

}  // namespace

bool Block::parseType2(const HeapHeader& header, const std::vector<HeapSegment>& segments)
{
    std::string info;
    if (!readReference(segments, header.userRoot, info)) return false;
    const size_t infoSize = info.size();
    info.resize(std::max(infoSize, kTableInfoSize));
    const auto* bytes = reinterpret_cast<const uint8_t*>(info.data());
    if (bytes[0] != kTableType) {
        setCorrupt(u"TC block has invalid signature.", u"PST::Block::parseType2");
        return false;
    }
    const uint8_t columnCount = bytes[1];
    const uint16_t rowSize = loadU16(bytes + 8);
    const uint32_t rowIndexId = loadU32(bytes + 10);
    const uint32_t rowsReference = loadU32(bytes + 14);
    // Descriptors cut off by the end of the item aren't there.
    std::vector<Column> columns;
    for (size_t i = 0; i < columnCount && kTableInfoSize + (i + 1) * kColumnSize <= infoSize; ++i) {
        const uint8_t* column = bytes + kTableInfoSize + i * kColumnSize;
        columns.push_back(Column{loadU32(column), loadU16(column + 4), column[6], column[7]});
    }

    std::string rowIndex;
    if (!readReference(segments, rowIndexId, rowIndex)) return false;
    rowIndex.resize(std::max<size_t>(rowIndex.size(), 8));
    const auto* indexHeader = reinterpret_cast<const uint8_t*>(rowIndex.data());
    if (indexHeader[0] != kRowIndexType) {
        setCorrupt(u"BTH block has invalid signature.", u"PST::Block::parseType2");
        return false;
    }
    const uint32_t rootId = loadU32(indexHeader + 4);
    if (rootId == 0) return true;
    std::string root;
    if (!readReference(segments, rootId, root)) return false;
    rowIds_.clear();
    std::set<uint32_t> visited{rootId};
    walkRowIndex(segments, root, indexHeader[1], indexHeader[2], indexHeader[3], visited);
    if (kind_ == KindFolder) return true;

    std::string matrix;
    if (!readReference(segments, rowsReference, matrix)) return false;
    // A table whose rows have no size has no rows to read.
    if (rowSize == 0) {
        setCorrupt(u"Invalid table data.", u"PST::Block::parseType2");
        return false;
    }
    const size_t rowCount = matrix.size() / rowSize;
    rows_.assign(rowCount, ItemRow{});
    const size_t bitmapSize = (columns.size() + 7) / 8;
    std::string scratch;
    for (size_t r = 0; r < rowCount && bitmapSize <= rowSize; ++r) {
        const auto* row = reinterpret_cast<const uint8_t*>(matrix.data()) + r * rowSize;
        const uint8_t* bitmap = row + rowSize - bitmapSize;
        for (const Column& column : columns) {
            // A cell must lie inside its row.
            if (!cellPresent(bitmap, bitmapSize, column.bit) || column.offset + size_t{column.size} > rowSize) continue;
            const uint8_t* cell = row + column.offset;
            RawProperty raw{static_cast<uint16_t>(column.tag >> 16), static_cast<uint16_t>(column.tag), 0};
            const uint8_t* inlineData = nullptr;
            if (column.size > kInlineCellLimit) {
                inlineData = cell;
            } else {
                for (size_t i = 0; i < column.size; ++i) raw.value |= static_cast<uint32_t>(cell[i]) << (8 * i);
            }
            BlockItem item;
            if (fillItem(item, raw, scratch, segments, inlineData, inlineData ? column.size : 0))
                rows_[r].emplace(item.id, std::move(item));
        }
    }
    return true;
}

void Block::walkRowIndex(const std::vector<HeapSegment>& segments, const std::string& page, uint8_t keySize,
                         uint8_t entrySize, uint32_t levels, std::set<uint32_t>& visited)
{
    if (!reader_ || !reader_->adapter()) return;  // the entry widths come from the file's layout
    ty::Buffer stream(page.data(), static_cast<int64_t>(page.size()));
    if (levels == 0) {
        const int64_t leafSize = keySize + entrySize;
        RowIndexEntry entry;
        while (reader_->adapter()->readRowIndexEntry(stream, entry) == leafSize && entry.rowId != 0)
            rowIds_.push_back(entry);
        return;
    }
    ty::BinaryReader reader(stream);
    std::string key(keySize, '\0');
    std::string child;
    while (stream._read(key.data(), keySize) == keySize) {
        uint32_t childId = 0;
        if (reader.readUInt32(childId) != 4) break;
        // An index page reached a second time (a loop, or a shared page) is not walked again.
        if (!visited.insert(childId).second) continue;
        if (readReference(segments, childId, child)) walkRowIndex(segments, child, keySize, entrySize, levels - 1, visited);
    }
}

}  // namespace PST
