#pragma once
// The directory of a compound file as a tree: for each storage, its children in the order of
// its sibling tree. Built once and checked as it is built, so every walk over it ends, and
// storages nest at most 256 deep.
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "storage/directory_entry.h"

namespace cfb {

class DirectoryTree {
public:
    // Throws a Failure when the root entry itself is unusable. Damage below a storage is kept
    // and reported when that storage is listed, so the rest of the file stays readable.
    explicit DirectoryTree(std::vector<DirectoryEntry> entries);

    size_t size() const { return entries_.size(); }
    const DirectoryEntry& entry(uint32_t id) const { return entries_[id]; }
    // The in-order walk of the storage's sibling tree. Throws a Failure if that tree is damaged.
    const std::vector<uint32_t>& children(uint32_t storage) const;
    // The child of that name, compared as siblings are ordered; kNoStream when there is none.
    uint32_t find(uint32_t storage, std::u16string_view name) const;

private:
    struct Listing {
        std::vector<uint32_t> children;
        std::u16string damage;  // empty when the sibling tree is sound
    };

    void listChildren(uint32_t storage, size_t depth, std::vector<bool>& reached,
                      std::vector<std::pair<uint32_t, size_t>>& storages);

    std::vector<DirectoryEntry> entries_;
    std::vector<Listing> listings_;  // by entry id; filled for storages reached from the root
};

}  // namespace cfb
