#pragma once
// One 512-byte page of an index tree, read from the file only when a lookup first reaches it
// and kept afterwards. Pages above the leaves hold child pages; leaves hold records of type T
// (PST::Index::IndexNode or PST::DescIndex::DescIndexNode).
//
// T provides: key(), read(adapter, source) for one leaf record, checkDataConsistency(start,
// end, previous, position), and kTypeName for the sources of the page's messages.
#include <cstdint>
#include <deque>

#include "foundation/error.h"
#include "foundation/stream.h"
#include "pst/base_tree_node.h"
#include "pst/format_adapter.h"

namespace PST {

template <class T>
class TableNodeLazy : public ty::TreeNode<TableNodeLazy<T>>, public ty::TypeDesciber<T> {
public:
    TableNodeLazy(const FormatAdapter& adapter, ty::IOS& source, uint64_t pageOffset, uint64_t pageId,
                  uint64_t startKey, uint64_t endKey);

    // The first record with this key below this page, or null.
    virtual const T* find(uint64_t key);
    // From `node` along its siblings to the page whose range holds the key, building it on
    // the way, and on down to a page without children. Null when the key lies below `node`.
    virtual TableNodeLazy* descend(uint64_t key, TableNodeLazy* node);

    // Reads the page and appends its child pages or its records; false with the reason in
    // keeper(). A failure after some children were appended keeps them.
    bool buildImpl();
    // Builds the page on first need. A page that failed isn't read again: the file doesn't
    // change while it is open, so another try would fail the same way and only append the
    // children it had appended before once more, making every later lookup slower.
    bool build();

    ty::ErrorKeeper& keeper() { return keeper_; }
    const std::deque<T>& entries() const { return entries_; }
    bool built() const { return built_; }
    uint8_t level() const { return level_; }
    uint64_t pageOffset() const { return pageOffset_; }
    uint64_t pageId() const { return pageId_; }
    uint64_t startKey() const { return startKey_; }
    uint64_t endKey() const { return endKey_; }

private:
    bool fail(const char16_t* text);

    ty::ErrorKeeper keeper_;
    // A deque, so that the records handed out by find stay where they are when a page that
    // failed is built again and appends more.
    std::deque<T> entries_;
    const FormatAdapter* adapter_;
    ty::IOS* source_;
    uint64_t pageOffset_;
    uint64_t pageId_;
    uint64_t startKey_;
    uint64_t endKey_;
    bool built_ = false;
    bool tried_ = false;
    uint8_t level_ = 0;
};

}  // namespace PST
