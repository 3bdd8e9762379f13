#include "pst/format_adapter64.h"

#include "pst/little_endian.h"
#include "pst/positioned_read.h"

namespace PST {

const Layout& FormatAdapter64::layout() const
{
    static const Layout table{184, 240, 232, 224, 216, 513, 488, 491, 504, 24, 32, 20, 15, 8, 16};
    return table;
}

int64_t FormatAdapter64::readIndexEntry(ty::IOS& source, IndexEntry& out) const
{
    std::array<uint8_t, 24> bytes;
    int64_t done = readRecord(source, bytes);
    out.id = loadU64(&bytes[0]);
    out.offset = loadU64(&bytes[8]);
    out.size = loadU16(&bytes[16]);  // a reference count and padding follow
    return done;
}

int64_t FormatAdapter64::readDescEntry(ty::IOS& source, DescEntry& out) const
{
    std::array<uint8_t, 32> bytes;
    int64_t done = readRecord(source, bytes);
    out.nodeId = loadU64(&bytes[0]);
    out.dataId = loadU64(&bytes[8]);
    out.subnodeId = loadU64(&bytes[16]);
    out.parentId = loadU32(&bytes[24]);  // padding follows
    return done;
}

int64_t FormatAdapter64::readPageEntry(ty::IOS& source, PageEntry& out) const
{
    std::array<uint8_t, 24> bytes;
    int64_t done = readRecord(source, bytes);
    out.key = loadU64(&bytes[0]);
    out.pageId = loadU64(&bytes[8]);
    out.offset = loadU64(&bytes[16]);
    return done;
}

int64_t FormatAdapter64::readId(ty::IOS& source, uint64_t& out) const
{
    std::array<uint8_t, 8> bytes;
    int64_t done = readRecord(source, bytes);
    out = loadU64(&bytes[0]);
    return done;
}

int64_t FormatAdapter64::readAt(ty::IOS& source, uint64_t offset) const
{
    std::array<uint8_t, 8> bytes;
    bytes.fill(0xFF);
    readAtPosition(source, offset, bytes.data(), 8);
    return static_cast<int64_t>(loadU64(&bytes[0]));
}

int64_t FormatAdapter64::readPackedEntry(ty::IOS& source, PackedEntry& out) const
{
    std::array<uint8_t, 24> bytes;
    int64_t done = readRecord(source, bytes);
    out.id = static_cast<uint32_t>(loadU64(&bytes[0]));
    out.first = loadU64(&bytes[8]);
    out.second = loadU64(&bytes[16]);
    return done;
}

int64_t FormatAdapter64::readRowIndexEntry(ty::IOS& source, RowIndexEntry& out) const
{
    std::array<uint8_t, 8> bytes;
    int64_t done = readRecord(source, bytes);
    out.rowId = loadU32(&bytes[0]);
    out.rowIndex = loadU32(&bytes[4]);
    return done;
}

int64_t FormatAdapter64::readBlockTrailer(ty::IOS& source, BlockTrailer& out) const
{
    std::array<uint8_t, 16> bytes;
    int64_t done = readRecord(source, bytes);
    out.size = loadU16(&bytes[0]);
    out.signature = loadU16(&bytes[2]);
    out.crc = loadU32(&bytes[4]);
    out.id = loadU64(&bytes[8]);
    return done;
}

int64_t FormatAdapter64::readBlockHeader(ty::IOS& source, BlockHeader& out) const
{
    std::array<uint8_t, 8> bytes;
    int64_t done = readRecord(source, bytes);
    out.type = bytes[0];
    out.level = bytes[1];
    out.count = loadU16(&bytes[2]);
    return done;
}

int64_t FormatAdapter64::readSubnodeLeafEntry(ty::IOS& source, SubnodeLeafEntry& out) const
{
    std::array<uint8_t, 24> bytes;
    int64_t done = readRecord(source, bytes);
    out = done < 24 ? SubnodeLeafEntry{} : SubnodeLeafEntry{loadU64(&bytes[0]), loadU64(&bytes[8]), loadU64(&bytes[16])};
    return done;
}

int64_t FormatAdapter64::readSubnodeIndexEntry(ty::IOS& source, SubnodeIndexEntry& out) const
{
    std::array<uint8_t, 16> bytes;
    int64_t done = readRecord(source, bytes);
    out = done < 16 ? SubnodeIndexEntry{} : SubnodeIndexEntry{loadU64(&bytes[0]), loadU64(&bytes[8])};
    return done;
}

}  // namespace PST
