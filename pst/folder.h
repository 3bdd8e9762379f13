#pragma once
// A folder of a store: its own properties at once, its hierarchy and contents tables on first
// need, and its subfolders as children built from the hierarchy. Messages and subfolders come
// in ascending row id order, the order of the tables' row indexes.
#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include "foundation/error.h"
#include "pst/base_tree_node.h"
#include "pst/block.h"
#include "pst/tree_node.h"

namespace PST {

class Reader;

class Folder : public ty::TreeNode<Folder> {
public:
    // Takes the folder's block over; nothing else is read.
    explicit Folder(std::unique_ptr<Block> block);
    // The node's block if the node tree has it; otherwise every answer is empty.
    Folder(Reader* reader, uint64_t nodeId);
    ~Folder() override;

    ty::ErrorKeeper& keeper() { return keeper_; }
    Block* block() const { return block_.get(); }
    uint64_t nodeId() const;

    const std::u16string& getName();
    bool hasSubfolders() const;
    uint32_t getUnreadCount() const;
    // The folder's own count (0x3602); it limits the messages offered, whatever the table holds.
    uint32_t getMessageCount() const;
    Block* getHierarchy();
    Block* getContents();
    // The row id of the index-th message, or 0.
    uint64_t getMessageId(uint32_t index);
    // A node for the index-th message, read on first need; null for none.
    std::unique_ptr<PST::TreeNode> getMessageNode(uint32_t index);
    uint32_t getSubfolderCount();
    std::unique_ptr<Folder> getSubfolder(uint32_t index);

    // The subfolders, built from the hierarchy on first call.
    Folder* firstChild() const override;

private:
    // Folders already placed in this folder's tree. A damaged hierarchy may name a folder twice
    // or name an ancestor; each folder takes one place, so the tree stays finite and acyclic.
    using PlacedFolders = std::set<uint64_t>;

    Block* table(std::unique_ptr<Block>& slot, bool& fetched, uint32_t lowBits);
    uint32_t numberOf(uint32_t propertyId) const;
    Folder* loadChildren();

    ty::ErrorKeeper keeper_;
    std::u16string name_;
    Reader* reader_ = nullptr;
    std::unique_ptr<Block> block_;
    std::unique_ptr<Block> hierarchy_;
    std::unique_ptr<Block> contents_;
    bool hierarchyFetched_ = false;
    bool contentsFetched_ = false;
    bool childrenLoaded_ = false;
    std::shared_ptr<PlacedFolders> placed_;
};

}  // namespace PST
