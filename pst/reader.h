#pragma once
// The entry point of the standalone personal-folder parser: opens a .pst or .ost file, picks
// the adapter of its layout, builds the two index trees and the name-to-id map, and hands out
// nodes. It knows nothing of mail: stores, folders and messages are built on top of it.
//
// Failures are reported through the reader's keeper: a held error of level 3 or above means
// failure to the readers above. Every object built from a reader keeps a plain pointer to it
// and must not outlive it; the file's position is shared, so one thread at a time.
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "foundation/error.h"
#include "foundation/stream.h"
#include "pst/desc_index.h"
#include "pst/format_adapter.h"
#include "pst/index.h"
#include "pst/index_id2_node.h"
#include "pst/store.h"
#include "pst/tree_node.h"

namespace PST {

// One record of the name-to-id map.
struct NamedProperty {
    enum Kind : uint32_t { Numeric = 1, String = 2 };
    uint16_t word = 0;  // bit 0: string name; above it, the GUID index
    uint32_t kind = 0;
    uint32_t propertyId = 0;  // 0x8000 and up
    // String name: its UTF-16 bytes (empty if the offset lay outside the string stream).
    // Numeric name: 16 GUID bytes as on disk, then the 4 bytes of the number.
    std::string payload;
};

// Keyed by property id; every record of the entry stream is kept.
using NameMap = std::multimap<uint32_t, NamedProperty>;

class Reader : public ty::ErrorKeeper {
public:
    Reader();
    ~Reader() override;
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    // Checks the signature and the layout, builds the root pages of both trees, and loads the
    // name-to-id map. A header whose file size differs from the file's leaves its message in
    // the keeper (level 4) and still opens: the caller decides.
    bool open(const std::u16string& path);
    // Closes the file; adapter, trees and map stay until the next open replaces them.
    void close();

    // The store node (NID_MESSAGE_STORE), owned by the caller, or null.
    std::unique_ptr<Store> getStore();
    // The node as a store if its block classified itself so, else a plain node; null if the
    // node tree hasn't it. Owned by the caller.
    std::unique_ptr<TreeNode> createNode(uint64_t nodeId);
    // Builds the sub-node tree of a sub-node block below `parent`, or below a new root if
    // `parent` is null, which the caller then owns. Returns the root, or null if the block
    // can't be used. Each sub-node block is expanded once per tree, so a tree that refers back
    // into itself ends.
    IndexId2Node* buildId2(uint64_t blockId, IndexId2Node* parent);

    const std::u16string& path() const { return path_; }
    ty::File& file() { return file_; }
    // The size the header states, and the size the file had when opened.
    int64_t fileSize() const { return fileSize_; }
    int64_t openedFileSize() const { return openedFileSize_; }
    uint8_t encryptionMethod() const { return encryptionMethod_; }
    const FormatAdapter* adapter() const { return adapter_.get(); }
    Index* index() { return index_.get(); }
    DescIndex* descIndex() { return descIndex_.get(); }
    const NameMap& nameMap() const { return nameMap_; }
    // The raw streams of the name-to-id map, kept for writing a message out.
    const std::string& nameEntryStream() const { return nameEntryStream_; }
    const std::string& nameStringStream() const { return nameStringStream_; }
    const std::string& nameGuidStream() const { return nameGuidStream_; }
    // 1: property lists keep only the short list of header properties.
    uint32_t headersOnly() const { return headersOnly_; }
    void setHeadersOnly(uint32_t value) { headersOnly_ = value; }

private:
    struct SubnodeTreeBuild {
        std::set<uint64_t> expanded;  // sub-node blocks already read into this tree
        int depth = 0;
    };

    bool fail(const char16_t* text, uint32_t code);
    void loadNameMap();
    IndexId2Node* buildSubnodeLevel(uint64_t blockId, IndexId2Node* parent, SubnodeTreeBuild& build);

    std::u16string path_;
    ty::File file_;
    int64_t fileSize_ = 0;
    int64_t openedFileSize_ = 0;
    uint8_t encryptionMethod_ = 0;
    std::unique_ptr<FormatAdapter> adapter_;
    std::unique_ptr<Index> index_;
    std::unique_ptr<DescIndex> descIndex_;
    NameMap nameMap_;
    std::string nameEntryStream_;
    std::string nameStringStream_;
    std::string nameGuidStream_;
    uint32_t headersOnly_ = 0;
};

}  // namespace PST
