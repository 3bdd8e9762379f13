#pragma once
// The store node, NID_MESSAGE_STORE. This holds the node and its block; the store's own
// properties (its name, record key and root folder) come with the folder classes.
#include <memory>

#include "pst/tree_node.h"

namespace PST {

class Store : public TreeNode {
public:
    explicit Store(std::unique_ptr<Block> block) : TreeNode(std::move(block)) {}
};

}  // namespace PST
