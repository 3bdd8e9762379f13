#pragma once
// A node of the file as a place in a tree of nodes: it reads its block only when its rows are
// asked for. Attachment and recipient trees are made of these, and stores, folders and
// messages build on them.
#include <cstdint>
#include <memory>
#include <vector>

#include "foundation/error.h"
#include "pst/base_tree_node.h"
#include "pst/block.h"
#include "pst/desc_index.h"

namespace PST {

class Reader;

class TreeNode : public ty::TreeNode<TreeNode> {
public:
    // Nothing is read until rows() needs it.
    TreeNode(Reader* reader, uint64_t nodeId);
    // Takes the block over; a null block is reported as "Null block pointer".
    explicit TreeNode(std::unique_ptr<Block> block);
    ~TreeNode() override;

    bool init(Reader* reader, uint64_t nodeId);
    // Replaces the block and takes over its reader, id and node.
    bool setBlock(std::unique_ptr<Block> block);
    // The block's rows, reading the block first if there is none yet.
    const std::vector<ItemRow>& rows();

    ty::ErrorKeeper& keeper() { return keeper_; }
    Block* block() const { return block_.get(); }
    uint64_t blockId() const { return blockId_; }
    uint64_t nodeId() const { return nodeId_; }
    Reader* reader() const { return reader_; }
    const DescIndex::DescIndexNode* desc() const { return desc_; }

private:
    ty::ErrorKeeper keeper_;
    uint64_t blockId_ = 0;
    uint64_t nodeId_ = 0;
    std::unique_ptr<Block> block_;
    Reader* reader_ = nullptr;
    const DescIndex::DescIndexNode* desc_ = nullptr;
};

}  // namespace PST
