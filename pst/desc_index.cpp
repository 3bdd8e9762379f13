#include "pst/desc_index.h"

#include <limits>

#include "pst/index_record_check.h"

namespace PST {

int64_t DescIndex::DescIndexNode::read(const FormatAdapter& adapter, ty::IOS& source)
{
    DescEntry entry;
    int64_t done = adapter.readDescEntry(source, entry);
    id = entry.nodeId;
    dataId = entry.dataId;
    subnodeId = entry.subnodeId;
    parentId = entry.parentId;
    return done;
}

bool DescIndex::DescIndexNode::checkDataConsistency(uint64_t start, uint64_t end, uint64_t& previous,
                                                    size_t position) const
{
    return checkLeafKey(id, start, end, previous, position);
}

DescIndex::DescIndex(const FormatAdapter& adapter, ty::IOS& source)
{
    const Layout& layout = adapter.layout();
    rootOffset_ = static_cast<uint64_t>(adapter.readAt(source, layout.nodeTreeRootOffsetField));
    rootId_ = static_cast<uint64_t>(adapter.readAt(source, layout.nodeTreeRootIdField));
    root_ = std::make_unique<TableNodeLazy<DescIndexNode>>(adapter, source, rootOffset_, rootId_, kMessageStoreNodeId,
                                                           std::numeric_limits<uint64_t>::max());
    root_->build();
}

DescIndex::~DescIndex() = default;

const DescIndex::DescIndexNode* DescIndex::find(uint64_t nodeId)
{
    return root_->find(nodeId);
}

}  // namespace PST
