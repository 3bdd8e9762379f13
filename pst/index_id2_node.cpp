#include "pst/index_id2_node.h"

namespace PST {

IndexId2Node* IndexId2Node::find(uint64_t nodeId)
{
    for (IndexId2Node* child = firstChild(); child; child = child->next()) {
        if (IndexId2Node* nested = child->find(nodeId)) return nested;
        if (child->id == nodeId || (child->id & 0xFFFFFFFF) == nodeId) return child;
    }
    return nullptr;
}

}  // namespace PST
