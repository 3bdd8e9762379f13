#include "pst/format_adapter32.h"

#include "pst/little_endian.h"
#include "pst/positioned_read.h"

namespace PST {

const Layout& FormatAdapter32::layout() const
{
    static const Layout table{168, 196, 192, 188, 184, 461, 496, 499, 504, 12, 16, 41, 31, 4, 12};
    return table;
}

int64_t FormatAdapter32::readIndexEntry(ty::IOS& source, IndexEntry& out) const
{
    std::array<uint8_t, 12> bytes;
    int64_t done = readRecord(source, bytes);
    out.id = loadU32(&bytes[0]);
    out.offset = loadU32(&bytes[4]);
    out.size = loadU16(&bytes[8]);  // a reference count follows
    return done;
}

int64_t FormatAdapter32::readDescEntry(ty::IOS& source, DescEntry& out) const
{
    std::array<uint8_t, 16> bytes;
    int64_t done = readRecord(source, bytes);
    out.nodeId = loadU32(&bytes[0]);
    out.dataId = loadU32(&bytes[4]);
    out.subnodeId = loadU32(&bytes[8]);
    out.parentId = loadU32(&bytes[12]);
    return done;
}

int64_t FormatAdapter32::readPageEntry(ty::IOS& source, PageEntry& out) const
{
    std::array<uint8_t, 12> bytes;
    int64_t done = readRecord(source, bytes);
    out.key = loadU32(&bytes[0]);
    out.pageId = loadU32(&bytes[4]);
    out.offset = loadU32(&bytes[8]);
    return done;
}

int64_t FormatAdapter32::readId(ty::IOS& source, uint64_t& out) const
{
    std::array<uint8_t, 4> bytes;
    int64_t done = readRecord(source, bytes);
    out = loadU32(&bytes[0]);
    return done;
}

int64_t FormatAdapter32::readAt(ty::IOS& source, uint64_t offset) const
{
    std::array<uint8_t, 4> bytes;
    bytes.fill(0xFF);
    readAtPosition(source, offset, bytes.data(), 4);
    return static_cast<int32_t>(loadU32(&bytes[0]));
}

int64_t FormatAdapter32::readPackedEntry(ty::IOS& source, PackedEntry& out) const
{
    std::array<uint8_t, 12> bytes;
    int64_t done = readRecord(source, bytes);
    out.id = loadU32(&bytes[0]);
    out.first = loadU32(&bytes[4]);
    out.second = loadU32(&bytes[8]);
    return done;
}

int64_t FormatAdapter32::readRowIndexEntry(ty::IOS& source, RowIndexEntry& out) const
{
    std::array<uint8_t, 6> bytes;
    int64_t done = readRecord(source, bytes);
    out.rowId = loadU32(&bytes[0]);
    out.rowIndex = loadU16(&bytes[4]);
    return done;
}

int64_t FormatAdapter32::readBlockTrailer(ty::IOS& source, BlockTrailer& out) const
{
    std::array<uint8_t, 12> bytes;
    int64_t done = readRecord(source, bytes);
    out.size = loadU16(&bytes[0]);
    out.signature = loadU16(&bytes[2]);
    out.id = loadU32(&bytes[4]);
    out.crc = loadU32(&bytes[8]);
    return done;
}

int64_t FormatAdapter32::readBlockHeader(ty::IOS& source, BlockHeader& out) const
{
    std::array<uint8_t, 4> bytes;
    int64_t done = readRecord(source, bytes);
    out.type = bytes[0];
    out.level = bytes[1];
    out.count = loadU16(&bytes[2]);
    return done;
}

int64_t FormatAdapter32::readSubnodeLeafEntry(ty::IOS& source, SubnodeLeafEntry& out) const
{
    std::array<uint8_t, 12> bytes;
    int64_t done = readRecord(source, bytes);
    out = done < 12 ? SubnodeLeafEntry{} : SubnodeLeafEntry{loadU32(&bytes[0]), loadU32(&bytes[4]), loadU32(&bytes[8])};
    return done;
}

int64_t FormatAdapter32::readSubnodeIndexEntry(ty::IOS& source, SubnodeIndexEntry& out) const
{
    std::array<uint8_t, 8> bytes;
    int64_t done = readRecord(source, bytes);
    out = done < 8 ? SubnodeIndexEntry{} : SubnodeIndexEntry{loadU32(&bytes[0]), loadU32(&bytes[4])};
    return done;
}

}  // namespace PST
