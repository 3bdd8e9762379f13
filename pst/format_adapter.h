#pragma once
// The one place that knows how the two on-disk layouts of a personal-folder file differ: the
// 32-bit layout (ANSI files: ids, offsets and keys of 4 bytes) and the 64-bit layout (Unicode
// files: 8 bytes). Everything above an adapter works in 64-bit values.
//
// Every read operation takes its source stream, reads one record where the stream stands and
// returns the number of bytes read, for the caller to compare with the record's size. Fields of
// 32 bits are widened by zero extension, except in readAt.
#include <array>
#include <cstdint>

#include "foundation/stream.h"

namespace PST {

// Offsets and sizes of one layout. Header offsets count from the start of the file, page
// offsets from the start of a 512-byte index page.
struct Layout {
    uint64_t fileSizeOffset;
    uint64_t blockTreeRootOffsetField;
    uint64_t blockTreeRootIdField;
    uint64_t nodeTreeRootOffsetField;
    uint64_t nodeTreeRootIdField;
    uint64_t encryptionField;
    uint64_t pageEntryCountOffset;
    uint64_t pageLevelOffset;
    uint64_t pageBackLinkOffset;
    uint64_t blockTreeEntrySize;
    uint64_t nodeTreeEntrySize;
    uint64_t pageEntryLimit;  // highest entry count of any index page, in both trees
    uint64_t nodeTreeEntryLimit;
    uint64_t idSize;
    uint64_t subnodeIndexEntrySize;
};

constexpr int64_t kPageSize = 512;

// A leaf record of the block tree.
struct IndexEntry {
    uint64_t id = 0;
    uint64_t offset = 0;
    uint16_t size = 0;
};

// A leaf record of the node tree.
struct DescEntry {
    uint64_t nodeId = 0;
    uint64_t dataId = 0;
    uint64_t subnodeId = 0;
    uint64_t parentId = 0;
};

// An entry of an index page above the leaves.
struct PageEntry {
    uint64_t key = 0;
    uint64_t offset = 0;
    uint64_t pageId = 0;
};

struct PackedEntry {
    uint32_t id = 0;
    uint64_t first = 0;
    uint64_t second = 0;
};

// A leaf entry of a table's row index.
struct RowIndexEntry {
    uint32_t rowId = 0;
    uint32_t rowIndex = 0;
};

struct BlockTrailer {
    uint16_t size = 0;
    uint16_t signature = 0;
    uint32_t crc = 0;
    uint64_t id = 0;
};

// The first bytes of a data tree or sub-node block.
struct BlockHeader {
    uint8_t type = 0;
    uint8_t level = 0;
    uint16_t count = 0;
};

struct SubnodeLeafEntry {
    uint64_t nodeId = 0;
    uint64_t dataId = 0;
    uint64_t subnodeId = 0;
};

struct SubnodeIndexEntry {
    uint64_t nodeId = 0;
    uint64_t blockId = 0;
};

class FormatAdapter {
public:
    virtual ~FormatAdapter() = default;

    // 1 for the 32-bit layout, 2 for the 64-bit layout.
    virtual int formatNumber() const = 0;
    virtual const Layout& layout() const = 0;
    virtual int64_t readIndexEntry(ty::IOS& source, IndexEntry& out) const = 0;
    virtual int64_t readDescEntry(ty::IOS& source, DescEntry& out) const = 0;
    virtual int64_t readPageEntry(ty::IOS& source, PageEntry& out) const = 0;
    virtual int64_t readId(ty::IOS& source, uint64_t& out) const = 0;
    // Seeks to an absolute offset and reads one id-sized value, sign-extended to 64 bits from a
    // value of all ones: what a short read leaves is ones, and in the 32-bit layout a value with
    // its top bit set becomes negative, so a corrupt offset fails later comparisons.
    virtual int64_t readAt(ty::IOS& source, uint64_t offset) const = 0;
    virtual int64_t readPackedEntry(ty::IOS& source, PackedEntry& out) const = 0;
    virtual int64_t readRowIndexEntry(ty::IOS& source, RowIndexEntry& out) const = 0;
    virtual int64_t readBlockTrailer(ty::IOS& source, BlockTrailer& out) const = 0;
    virtual int64_t readBlockHeader(ty::IOS& source, BlockHeader& out) const = 0;
    // All three fields are zero after a short read.
    virtual int64_t readSubnodeLeafEntry(ty::IOS& source, SubnodeLeafEntry& out) const = 0;
    // Both fields are zero after a short read.
    virtual int64_t readSubnodeIndexEntry(ty::IOS& source, SubnodeIndexEntry& out) const = 0;

protected:
    // Reads a record of N bytes where the source stands; what isn't there reads as zeros.
    template <size_t N>
    static int64_t readRecord(ty::IOS& source, std::array<uint8_t, N>& bytes)
    {
        bytes.fill(0);
        int64_t done = source._read(bytes.data(), static_cast<int64_t>(N));
        return done < 0 ? 0 : done;
    }
};

}  // namespace PST
