#include "storage/directory_tree.h"

#include <string>

#include "foundation/utf.h"
#include "storage/storage_codes.h"

namespace cfb {

namespace {

// Callers walk storages by recursion, as the message reader does; a file can't make them
// recurse deeper than this. Messages nest two storages for each embedded message.
constexpr size_t kMaxNesting = 256;

std::u16string number(uint64_t value) { return ty::utf8ToWide(std::to_string(value)); }

}  // namespace

DirectoryTree::DirectoryTree(std::vector<DirectoryEntry> entries) : entries_(std::move(entries))
{
    if (entries_.empty() || entries_[0].type != EntryRoot || !entries_[0].nameValid)
        throw Failure{STG_E_DOCFILECORRUPT, u"The directory has no root entry"};
    listings_.resize(entries_.size());
    // Every entry may be reached once only: a second visit means a cycle or a shared subtree,
    // and refusing it keeps the tree a tree, however the links were written.
    std::vector<bool> reached(entries_.size(), false);
    reached[0] = true;
    std::vector<std::pair<uint32_t, size_t>> storages{{0, 0}};  // with their nesting depth
    while (!storages.empty()) {
        auto [storage, depth] = storages.back();
        storages.pop_back();
        if (depth >= kMaxNesting)
            listings_[storage].damage = u"Directory entry " + number(storage) + u": storages nest deeper than " +
                                        number(kMaxNesting) + u" levels";
        else
            listChildren(storage, depth, reached, storages);
    }
}

void DirectoryTree::listChildren(uint32_t storage, size_t depth, std::vector<bool>& reached,
                                 std::vector<std::pair<uint32_t, size_t>>& storages)
{
    Listing& listing = listings_[storage];
    std::vector<uint32_t> pending;
    uint32_t node = entries_[storage].child;
    auto damaged = [&](std::u16string text) {
        listing.children.clear();
        listing.damage = u"Directory entry " + number(storage) + u": " + text;
    };
    while (node != kNoStream || !pending.empty()) {
        while (node != kNoStream) {
            if (node >= entries_.size())
                return damaged(u"a link points to entry " + number(node) + u", past the directory's " +
                               number(entries_.size()) + u" entries");
            if (reached[node]) return damaged(u"entry " + number(node) + u" is reached twice");
            reached[node] = true;
            const DirectoryEntry& entry = entries_[node];
            if (entry.type != EntryStorage && entry.type != EntryStream)
                return damaged(u"entry " + number(node) + u" is neither a storage nor a stream");
            if (!entry.nameValid)
                return damaged(u"entry " + number(node) + u" has a name without a terminator or over 64 bytes");
            pending.push_back(node);
            node = entry.left;
        }
        node = pending.back();
        pending.pop_back();
        listing.children.push_back(node);
        node = entries_[node].right;
    }
    for (uint32_t child : listing.children)
        if (entries_[child].type == EntryStorage) storages.emplace_back(child, depth + 1);
}

const std::vector<uint32_t>& DirectoryTree::children(uint32_t storage) const
{
    const Listing& listing = listings_[storage];
    if (!listing.damage.empty()) throw Failure{STG_E_DOCFILECORRUPT, listing.damage};
    return listing.children;
}

uint32_t DirectoryTree::find(uint32_t storage, std::u16string_view name) const
{
    const std::vector<uint32_t>& list = children(storage);
    // The sibling tree is a search tree in a sound file; a bounded descent finds the name.
    uint32_t node = entries_[storage].child;
    for (size_t steps = 0; node != kNoStream && steps < list.size(); ++steps) {
        int order = compareNames(name, entries_[node].name);
        if (order == 0) return node;
        node = order < 0 ? entries_[node].left : entries_[node].right;
    }
    // A tree written out of order still lists every child: look through them all.
    for (uint32_t child : list)
        if (compareNames(name, entries_[child].name) == 0) return child;
    return kNoStream;
}

}  // namespace cfb
