// The blocks inside a message: its attachments, recipients and embedded messages, reached
// through the message's sub-node tree.
#include "pst/block.h"
#include "pst/little_endian.h"
#include "pst/node_ids.h"
#include "pst/reader.h"
#include "pst/tree_node.h"

namespace PST {

namespace {

constexpr uint32_t kAttachDataObject = 0x3701;
constexpr uint32_t kMessageClass = 0x001A;
constexpr uint32_t kLtpRowId = 0x67F2;
constexpr uint32_t PT_OBJECT_TYPE = 13;

}  // namespace

std::unique_ptr<Block> Block::createChildBlock(IndexId2Node* subnode)
{
    if (!subnode) return nullptr;
    auto child = std::make_unique<Block>(reader_, subnode->blockId, subnode, KindAttachment);
    if (child->rows_.empty()) return child;
    auto data = child->rows_.front().find(kAttachDataObject);
    if (data == child->rows_.front().end()) return child;
    // An object not resolved while parsing carries its sub-node's id in its type.
    if (IndexId2Node* object = subnode->find(data->second.type)) child->readSubnodeData(*object, data->second.value);
    return child;
}

std::unique_ptr<Block> Block::findChildByValue(IndexId2Node* subnode, uint32_t propertyId, std::string_view pattern)
{
    if (!subnode) return nullptr;
    std::unique_ptr<Block> candidate = createChildBlock(subnode);
    if (candidate && candidate->id_ != id_) {
        const BlockItem* item = candidate->findItem(propertyId);
        if (item && item->value.compare(0, pattern.size(), pattern) == 0) return candidate;
    }
    for (IndexId2Node* child = subnode->firstChild(); child; child = child->next())
        if (std::unique_ptr<Block> found = findChildByValue(child, propertyId, pattern)) return found;
    return nullptr;
}

std::unique_ptr<TreeNode> Block::getAttachmentTree()
{
    return getTableTree(NID_ATTACHMENT_TABLE, KindAttachment, true);
}

std::unique_ptr<TreeNode> Block::getRecipientTree()
{
    return getTableTree(NID_RECIPIENT_TABLE, KindRecipient, false);
}

std::unique_ptr<TreeNode> Block::getTableTree(uint64_t tableNodeId, uint32_t rowKind, bool withEmbedded)
{
    IndexId2Node* table = subnodes_ ? subnodes_->find(tableNodeId) : nullptr;
    if (!table) return nullptr;
    auto root = std::make_unique<TreeNode>(std::make_unique<Block>(reader_, table->blockId, table, rowKind));
    for (const ItemRow& row : root->block()->rows()) {
        auto rowId = row.find(kLtpRowId);
        uint8_t nodeId[4] = {};
        if (rowId != row.end()) rowId->second.value.copy(reinterpret_cast<char*>(nodeId), 4);
        IndexId2Node* subnode = subnodes_->find(loadU32(nodeId));
        if (!subnode) continue;
        auto* node = new TreeNode(std::make_unique<Block>(reader_, subnode->blockId, subnode, rowKind));
        root->appendChild(node);
        if (!withEmbedded) continue;
        const BlockItem* data = node->block()->findItem(kAttachDataObject);
        if (!data || data->type != PT_OBJECT_TYPE) continue;
        static constexpr char kNoteWide[] = "I\0P\0M\0.\0N\0o\0t\0e\0";
        std::unique_ptr<Block> embedded =
            findChildByValue(subnode, kMessageClass, std::string_view(kNoteWide, sizeof kNoteWide - 1));
        if (!embedded) embedded = findChildByValue(subnode, kMessageClass, "IPM.Note");
        if (embedded && embedded->id_ != id_) node->appendChild(new TreeNode(std::move(embedded)));
    }
    return root;
}

}  // namespace PST
