#pragma once
// One decoded node of a personal-folder file. Construction fetches the node's bytes, undoes
// the file's encoding, joins a data tree into heap segments, and parses them as a property
// list (one row) or a table (one row per table row); a failure stays in the block's keeper
// (level 3 and up means the block is unusable). A block also owns the node's sub-node tree.
//
// Every structure read from the file is bounded: data trees can't yield more bytes than the
// file holds, each tree block is expanded once per read, and heap items never reach outside
// their segment.
#include <cstdint>
#include <map>
#include <set>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/error.h"
#include "foundation/stream.h"
#include "pst/desc_index.h"
#include "pst/format_adapter.h"
#include "pst/index_id2_node.h"

namespace PST {

class Reader;
class TreeNode;

// What a block is.
enum BlockKind : uint32_t {
    KindUnknown = 0,
    KindStore = 1,
    KindFolder = 2,  // a folder or a folder's table: tables of this kind are read for their row ids only
    KindMessage = 3,
    KindAttachment = 4,  // an attachment, or a sub-node of one
    KindRecipient = 5,
};

// The first 8 bytes of a node's heap.
struct HeapHeader {
    uint16_t mapOffset = 0;
    uint16_t signature = 0;  // 0xBCEC property list, 0x7CEC table
    uint32_t userRoot = 0;
};

// One data block of a heap and the offset of its heap map.
struct HeapSegment {
    std::string data;
    uint16_t mapOffset = 0;
};

// Where a heap item lies in its segment.
struct HeapRange {
    uint32_t start = 0;
    uint32_t end = 0;
};

// One property of a row.
struct BlockItem {
    uint32_t id = 0;    // property id, without type
    uint32_t type = 0;  // the stored type; for an object whose sub-node wasn't found, that sub-node's id
    std::string value;  // strings end with their terminator
    uint64_t reserved = 0;
};

using ItemRow = std::map<uint32_t, BlockItem>;

// One property as a property list or a table cell gives it, before its value is fetched.
struct RawProperty {
    uint16_t id = 0;
    uint16_t type = 0;
    uint32_t value = 0;
};

class Block : public ty::ErrorKeeper {
public:
    // From a node of the node tree. A node with a sub-node tree gets its own, replacing `subnodes`.
    Block(Reader* reader, const DescIndex::DescIndexNode* node, IndexId2Node* subnodes, uint32_t kind);
    // From a block id, sharing `subnodes` without owning it.
    Block(Reader* reader, uint64_t blockId, IndexId2Node* subnodes, uint32_t kind);
    // From a node's bytes already at hand, such as an embedded message's data.
    Block(Reader* reader, const std::string& data, IndexId2Node* subnodes, uint32_t kind);
    ~Block() override;
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    uint64_t id() const { return id_; }
    uint64_t nodeId() const { return nodeId_; }
    uint32_t kind() const { return kind_; }
    const HeapHeader& header() const { return header_; }
    Reader* reader() const { return reader_; }
    bool ownsSubnodes() const { return ownedSubnodes_ != nullptr; }
    IndexId2Node* subnodes() const { return subnodes_; }
    const DescIndex::DescIndexNode* desc() const { return desc_; }
    const std::vector<ItemRow>& rows() const { return rows_; }
    const std::vector<RowIndexEntry>& rowIds() const { return rowIds_; }

    // The block's bytes as stored, exactly its size from the block tree (no trailer).
    bool readRawBuffer(std::string& buffer, uint64_t id);
    // As readRawBuffer, decoded unless the file is plain or the id is a data tree block's
    // (bit 1 set). A block that can't be decoded comes back empty.
    bool readBuffer(std::string& buffer, uint64_t id);
    // A data tree of one or two levels joined into one buffer; false for anything else.
    bool readDataTree(uint64_t id, std::string& out);
    // A sub-node's data: its data tree if its block id has bit 1 set, else its block.
    bool readSubnodeData(const IndexId2Node& record, std::string& out);
    // False if there is no tree or the node isn't in it.
    bool readSubnode(std::string& out, IndexId2Node* tree, uint64_t nodeId);
    // A 32-bit reference as bytes: a sub-node id if any of its low four bits is set, else a
    // heap id. A value of length 0 counts as a failure.
    bool readReference(const std::vector<HeapSegment>& segments, uint32_t reference, std::string& out);
    // Start and end of a heap item from the segment's heap map.
    bool getBlockOffset(const uint8_t* buffer, size_t size, uint16_t mapOffset, uint16_t word, HeapRange& range);
    bool parseBuffer(const std::string& data);

    bool parseType1(const HeapHeader& header, const std::vector<HeapSegment>& segments);
    bool parseType2(const HeapHeader& header, const std::vector<HeapSegment>& segments);
    // Turns one raw property into an item; false drops it. `scratch` receives the bytes of a
    // reference. `inlineData` is a table cell of more than 4 bytes.
    bool fillItem(BlockItem& item, const RawProperty& raw, std::string& scratch,
                  const std::vector<HeapSegment>& segments, const uint8_t* inlineData, size_t inlineLength);

    const BlockItem* findItem(uint32_t propertyId, size_t row = 0) const;
    // The sub-node as a block of kind 4, with an unresolved object in 0x3701 read from the
    // sub-node's tree.
    std::unique_ptr<Block> createChildBlock(IndexId2Node* subnode);
    // The first block in the sub-node's tree, the sub-node included, whose row 0 holds the
    // property with a value that starts with `pattern`, and which isn't this block.
    std::unique_ptr<Block> findChildByValue(IndexId2Node* subnode, uint32_t propertyId, std::string_view pattern);
    // A root with one child per attachment (sub-node 0x671), each with its embedded message
    // as child if it has one; null without an attachment table.
    std::unique_ptr<TreeNode> getAttachmentTree();
    // A root with one child per recipient (sub-node 0x692); null without a recipient table.
    std::unique_ptr<TreeNode> getRecipientTree();

private:
    struct TreeReading;

    void setCorrupt(const char16_t* text, const char16_t* source);
    bool readAndParse(uint64_t dataId);
    void flatten(const std::string& data, std::vector<HeapSegment>& segments, int depth, TreeReading& reading);
    bool joinDataTree(uint64_t id, std::string& out, uint8_t highestLevel, TreeReading& reading);
    void walkRowIndex(const std::vector<HeapSegment>& segments, const std::string& page, uint8_t keySize,
                      uint8_t entrySize, uint32_t levels, std::set<uint32_t>& visited);
    void classify(const BlockItem& item, uint16_t rawType);
    std::unique_ptr<TreeNode> getTableTree(uint64_t tableNodeId, uint32_t rowKind, bool withEmbedded);

    uint64_t id_ = 0;
    uint64_t nodeId_ = 0;
    uint32_t kind_;
    HeapHeader header_;
    ty::IOS* file_;
    Reader* reader_;
    std::unique_ptr<IndexId2Node> ownedSubnodes_;
    IndexId2Node* subnodes_;
    const DescIndex::DescIndexNode* desc_ = nullptr;
    std::vector<ItemRow> rows_;
    std::vector<RowIndexEntry> rowIds_;
};

}  // namespace PST
