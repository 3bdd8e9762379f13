#pragma once
// One node of a sub-node tree: the nodes that live inside another node (a message's recipient
// and attachment tables, its attachments, an attachment's embedded message, large values),
// with their own sub-nodes as children.
#include <cstdint>

#include "pst/base_tree_node.h"

namespace PST {

class IndexId2Node : public ty::TreeNode<IndexId2Node> {
public:
    IndexId2Node(uint64_t subnodeId = 0, uint64_t dataBlockId = 0) : id(subnodeId), blockId(dataBlockId) {}

    // Depth first below this node, and within each child its descendants before the child
    // itself, so a nested node wins over its ancestor of the same id. A node matches by its
    // whole id or by the low 32 bits of it. This node itself is not compared.
    IndexId2Node* find(uint64_t nodeId);

    uint64_t id;
    uint64_t blockId;
};

}  // namespace PST
