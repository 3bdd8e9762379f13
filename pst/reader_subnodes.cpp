// Building a node's sub-node tree from its sub-node blocks.
#include <string>

#include "pst/block.h"
#include "pst/positioned_read.h"
#include "pst/reader.h"

namespace PST {

namespace {

constexpr uint8_t kSubnodeBlockType = 2;
constexpr uint32_t kBlockErrorLevel = 3;
constexpr uint32_t kCorruptCode = static_cast<uint32_t>(-5);
// Embedded messages nest their sub-node trees; real files stay far below this.
constexpr int kMaxSubnodeDepth = 64;

}  // namespace

IndexId2Node* Reader::buildId2(uint64_t blockId, IndexId2Node* parent)
{
    SubnodeTreeBuild build;
    return buildSubnodeLevel(blockId, parent, build);
}

IndexId2Node* Reader::buildSubnodeLevel(uint64_t blockId, IndexId2Node* parent, SubnodeTreeBuild& build)
{
    const Index::IndexNode* entry = index_ ? index_->find(blockId) : nullptr;
    if (!entry) return nullptr;
    // A block met again in the same tree (a loop, or a shared branch) adds nothing more.
    if (build.depth >= kMaxSubnodeDepth || !build.expanded.insert(entry->id).second) return nullptr;

    std::string bytes(entry->size, '\0');
    if (readAtPosition(file_, entry->offset, bytes.data(), entry->size) != entry->size) {
        setError(u"Can't read whole id2 block.", u"PST::Reader::buildId2", kBlockErrorLevel, kCorruptCode);
        return nullptr;
    }
    ty::Buffer block(bytes.data(), static_cast<int64_t>(bytes.size()));
    BlockHeader header;
    adapter_->readBlockHeader(block, header);
    if (header.type != kSubnodeBlockType) {
        setError(u"Invalid id2 block type.", u"PST::Reader::buildId2", kBlockErrorLevel, kCorruptCode);
        return nullptr;
    }

    std::unique_ptr<IndexId2Node> root;
    if (!parent) {
        root = std::make_unique<IndexId2Node>();
        parent = root.get();
    }
    ++build.depth;
    const int64_t idSize = static_cast<int64_t>(adapter_->layout().idSize);
    // Entries that run past the block's end aren't there: the loop stops at the first.
    for (uint32_t i = 0; i < header.count && header.level <= 1; ++i) {
        if (header.level == 0) {
            SubnodeLeafEntry leaf;
            if (adapter_->readSubnodeLeafEntry(block, leaf) < 3 * idSize) break;
            const Index::IndexNode* data = index_->find(leaf.dataId);
            if (!data) continue;
            auto* node = new IndexId2Node(leaf.nodeId, data->id);
            parent->appendChild(node);
            if (leaf.subnodeId != 0 && index_->find(leaf.subnodeId)) buildSubnodeLevel(leaf.subnodeId, node, build);
        } else {
            SubnodeIndexEntry branch;
            if (adapter_->readSubnodeIndexEntry(block, branch) < 2 * idSize) break;
            auto* node = new IndexId2Node(branch.nodeId, branch.blockId);
            parent->appendChild(node);
            buildSubnodeLevel(branch.blockId, node, build);
        }
    }
    --build.depth;
    return root ? root.release() : parent;
}

}  // namespace PST
