#include "pst/index.h"

#include <limits>

#include "pst/index_record_check.h"

namespace PST {

int64_t Index::IndexNode::read(const FormatAdapter& adapter, ty::IOS& source)
{
    IndexEntry entry;
    int64_t done = adapter.readIndexEntry(source, entry);
    id = entry.id;
    offset = entry.offset;
    size = entry.size;
    return done;
}

bool Index::IndexNode::checkDataConsistency(uint64_t start, uint64_t end, uint64_t& previous, size_t position) const
{
    return checkLeafKey(id, start, end, previous, position);
}

Index::Index(const FormatAdapter& adapter, ty::IOS& source)
{
    const Layout& layout = adapter.layout();
    rootOffset_ = static_cast<uint64_t>(adapter.readAt(source, layout.blockTreeRootOffsetField));
    rootId_ = static_cast<uint64_t>(adapter.readAt(source, layout.blockTreeRootIdField));
    root_ = std::make_unique<TableNodeLazy<IndexNode>>(adapter, source, rootOffset_, rootId_, 0,
                                                       std::numeric_limits<uint64_t>::max());
    root_->build();
}

Index::~Index() = default;

const Index::IndexNode* Index::find(uint64_t blockId)
{
    return root_->find(blockId & ~uint64_t{1});
}

}  // namespace PST
