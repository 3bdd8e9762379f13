#pragma once
// The 32-bit layout of ANSI personal-folder files (format bytes 14 and 15).
#include "pst/format_adapter.h"

namespace PST {

class FormatAdapter32 : public FormatAdapter {
public:
    int formatNumber() const override { return 1; }
    const Layout& layout() const override;
    int64_t readIndexEntry(ty::IOS& source, IndexEntry& out) const override;
    int64_t readDescEntry(ty::IOS& source, DescEntry& out) const override;
    int64_t readPageEntry(ty::IOS& source, PageEntry& out) const override;
    int64_t readId(ty::IOS& source, uint64_t& out) const override;
    int64_t readAt(ty::IOS& source, uint64_t offset) const override;
    int64_t readPackedEntry(ty::IOS& source, PackedEntry& out) const override;
    int64_t readRowIndexEntry(ty::IOS& source, RowIndexEntry& out) const override;
    int64_t readBlockTrailer(ty::IOS& source, BlockTrailer& out) const override;
    int64_t readBlockHeader(ty::IOS& source, BlockHeader& out) const override;
    int64_t readSubnodeLeafEntry(ty::IOS& source, SubnodeLeafEntry& out) const override;
    int64_t readSubnodeIndexEntry(ty::IOS& source, SubnodeIndexEntry& out) const override;
};

}  // namespace PST
