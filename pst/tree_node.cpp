#include "pst/tree_node.h"

#include "pst/reader.h"

namespace PST {

namespace {

constexpr uint32_t kBlockErrorLevel = 3;

}  // namespace

TreeNode::TreeNode(Reader* reader, uint64_t nodeId)
{
    init(reader, nodeId);
}

TreeNode::TreeNode(std::unique_ptr<Block> block)
{
    if (!block) {
        keeper_.setError(u"Null block pointer", u"PST::TreeNode::TreeNode", kBlockErrorLevel, static_cast<uint32_t>(-5));
        return;
    }
    setBlock(std::move(block));
}

TreeNode::~TreeNode() = default;

bool TreeNode::init(Reader* reader, uint64_t nodeId)
{
    if (!reader) {
        keeper_.setError(u"Null reader pointer", u"PST::TreeNode::init", kBlockErrorLevel, static_cast<uint32_t>(-4));
        return false;
    }
    reader_ = reader;
    nodeId_ = nodeId;
    blockId_ = 0;
    desc_ = nullptr;
    return true;
}

bool TreeNode::setBlock(std::unique_ptr<Block> block)
{
    if (!block) return false;
    block_ = std::move(block);
    reader_ = block_->reader();
    blockId_ = block_->id();
    desc_ = block_->desc();
    if (!desc_ && reader_ && reader_->descIndex() && block_->nodeId() != 0)
        desc_ = reader_->descIndex()->find(block_->nodeId());
    nodeId_ = desc_ ? desc_->id : 0;
    return true;
}

const std::vector<ItemRow>& TreeNode::rows()
{
    static const std::vector<ItemRow> none;
    if (!block_) {
        if (!desc_ && reader_ && reader_->descIndex()) desc_ = reader_->descIndex()->find(nodeId_);
        if (!desc_) return none;
        block_ = std::make_unique<Block>(reader_, desc_, nullptr, KindUnknown);
        blockId_ = block_->id();
    }
    return block_->rows();
}

}  // namespace PST
