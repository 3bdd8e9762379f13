#pragma once
// The block tree: from a block id to the place and size of the block in the file.
#include <cstdint>
#include <memory>
#include <string_view>

#include "foundation/error.h"
#include "foundation/stream.h"
#include "pst/base_tree_node.h"
#include "pst/format_adapter.h"
#include "pst/table_node_lazy.h"

namespace PST {

class Index {
public:
    class IndexNode : public ty::TreeNode<IndexNode> {
    public:
        static constexpr std::u16string_view kTypeName = u"class PST::Index::IndexNode";

        uint64_t key() const { return id; }
        int64_t read(const FormatAdapter& adapter, ty::IOS& source);
        // False for a record outside [start, end), below `previous`, or, as the first of its
        // page, different from a non-zero start. Moves `previous` on unless the first test fails.
        // Such a record is dropped without a trace: nothing reads why.
        bool checkDataConsistency(uint64_t start, uint64_t end, uint64_t& previous, size_t position) const;

        uint64_t id = 0;
        uint64_t offset = 0;
        uint16_t size = 0;
    };

    // Reads where the root page lies and builds it. A failure of that build stays in the root
    // page's keeper, and shows as lookups that find nothing.
    Index(const FormatAdapter& adapter, ty::IOS& source);
    ~Index();
    Index(const Index&) = delete;
    Index& operator=(const Index&) = delete;

    // Bit 0 of a block id is not part of the key: it is cleared before the lookup.
    const IndexNode* find(uint64_t blockId);

    TableNodeLazy<IndexNode>& root() { return *root_; }
    ty::ErrorKeeper& keeper() { return keeper_; }
    uint64_t rootOffset() const { return rootOffset_; }
    uint64_t rootId() const { return rootId_; }

private:
    ty::ErrorKeeper keeper_;
    std::unique_ptr<TableNodeLazy<IndexNode>> root_;
    uint64_t rootOffset_;
    uint64_t rootId_;
};

}  // namespace PST
