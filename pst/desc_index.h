#pragma once
// The node tree: from a node id to the ids of its data block, its sub-node tree and its parent.
#include <cstdint>
#include <memory>
#include <string_view>

#include "foundation/error.h"
#include "foundation/stream.h"
#include "pst/base_tree_node.h"
#include "pst/format_adapter.h"
#include "pst/table_node_lazy.h"

namespace PST {

// NID_MESSAGE_STORE, the smallest key of a node tree: the first key of each level must be it.
constexpr uint64_t kMessageStoreNodeId = 33;

class DescIndex {
public:
    class DescIndexNode : public ty::TreeNode<DescIndexNode> {
    public:
        static constexpr std::u16string_view kTypeName = u"class PST::DescIndex::DescIndexNode";

        uint64_t key() const { return id; }
        int64_t read(const FormatAdapter& adapter, ty::IOS& source);
        // As PST::Index::IndexNode::checkDataConsistency.
        bool checkDataConsistency(uint64_t start, uint64_t end, uint64_t& previous, size_t position) const;

        uint64_t id = 0;
        uint64_t dataId = 0;
        uint64_t subnodeId = 0;
        uint64_t parentId = 0;
    };

    // As PST::Index, with the root's range starting at NID_MESSAGE_STORE.
    DescIndex(const FormatAdapter& adapter, ty::IOS& source);
    ~DescIndex();
    DescIndex(const DescIndex&) = delete;
    DescIndex& operator=(const DescIndex&) = delete;

    // The node id is looked up as given.
    const DescIndexNode* find(uint64_t nodeId);

    TableNodeLazy<DescIndexNode>& root() { return *root_; }
    ty::ErrorKeeper& keeper() { return keeper_; }
    uint64_t rootOffset() const { return rootOffset_; }
    uint64_t rootId() const { return rootId_; }

private:
    ty::ErrorKeeper keeper_;
    std::unique_ptr<TableNodeLazy<DescIndexNode>> root_;
    uint64_t rootOffset_;
    uint64_t rootId_;
};

}  // namespace PST
