#pragma once
// The store node, NID_MESSAGE_STORE: the store's name, its record key (part of every message's
// entry id) and its root folder.
#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "pst/folder.h"
#include "pst/tree_node.h"

namespace PST {

class Store : public TreeNode {
public:
    // Takes the block over; a block that isn't a store's is reported in keeper().
    explicit Store(std::unique_ptr<Block> block);
    ~Store() override;

    // The folder of 0x35E0, or node 290 when the store names none. Kept by the store; null when
    // it can't be built (the reason is in keeper() for a named folder).
    Folder* getRootFolder();

    uint32_t blockKind() const { return blockKind_; }
    const std::u16string& name() const { return name_; }
    const std::array<uint8_t, 16>& recordKey() const { return recordKey_; }

private:
    uint32_t blockKind_ = 0;
    std::u16string name_;
    // A key of a size other than 16 can't be used; zero bytes stand in for it, as for a missing one.
    std::array<uint8_t, 16> recordKey_{};
    std::unique_ptr<Folder> rootFolder_;
};

}  // namespace PST
