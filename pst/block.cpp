#include "pst/block.h"

#include <algorithm>
#include <set>

#include "foundation/binary_reader.h"
#include "pst/block_encoding.h"
#include "pst/little_endian.h"
#include "pst/positioned_read.h"
#include "pst/reader.h"
#include "pst/tree_node.h"

namespace PST {

namespace {

constexpr uint32_t kBlockErrorLevel = 3;
constexpr uint32_t kHeapErrorLevel = 2;
constexpr uint32_t kCorruptCode = static_cast<uint32_t>(-5);
constexpr uint32_t kBadArgumentCode = static_cast<uint32_t>(-4);
constexpr uint16_t kPropertyListSignature = 0xBCEC;
constexpr uint16_t kTableSignature = 0x7CEC;
constexpr uint8_t kDataTreeType = 1;
constexpr size_t kHeaderSize = 8;
constexpr uint64_t kInternalBlockBit = 2;
// Data trees have two levels; one more covers a heap block that looks like a tree block.
constexpr int kMaxFlattenDepth = 3;
constexpr size_t kJoinChunk = 8192;

bool looksLikeTreeBlock(uint8_t type, uint8_t level) { return type == kDataTreeType && level >= 1; }

HeapHeader readHeapHeader(const std::string& data)
{
    uint8_t bytes[kHeaderSize] = {};
    data.copy(reinterpret_cast<char*>(bytes), kHeaderSize);
    return HeapHeader{loadU16(bytes), loadU16(bytes + 2), loadU32(bytes + 4)};
}

}  // namespace

// What one read of a data tree may still take: the joined bytes can't outgrow the file, since
// every real block lies in it, and each tree block is expanded only once.
struct Block::TreeReading {
    int64_t bytesLeft = 0;
    std::set<uint64_t> expanded;

    bool take(size_t bytes)
    {
        if (static_cast<int64_t>(bytes) > bytesLeft) return false;
        bytesLeft -= static_cast<int64_t>(bytes);
        return true;
    }
};

Block::Block(Reader* reader, const DescIndex::DescIndexNode* node, IndexId2Node* subnodes, uint32_t kind)
    : kind_(kind), file_(reader ? &reader->file() : nullptr), reader_(reader), subnodes_(subnodes)
{
    if (!node) {
        setCorrupt(u"Can't parse block, desc node is null.", u"PST::Block::Block");
        return;
    }
    if (node->dataId == 0) {
        setCorrupt(u"Can't parse block, descId = 0.", u"PST::Block::Block");
        return;
    }
    id_ = node->dataId;
    nodeId_ = node->id;
    desc_ = node;
    if (node->subnodeId != 0 && reader_) {
        ownedSubnodes_.reset(reader_->buildId2(node->subnodeId, nullptr));
        subnodes_ = ownedSubnodes_.get();
    }
    readAndParse(id_);
}

Block::Block(Reader* reader, uint64_t blockId, IndexId2Node* subnodes, uint32_t kind)
    : id_(blockId), kind_(kind), file_(reader ? &reader->file() : nullptr), reader_(reader), subnodes_(subnodes)
{
    if (!reader_ || !reader_->index() || !reader_->index()->find(blockId)) {
        setCorrupt(u"Index node not found", u"PST::Block::Block");
        return;
    }
    readAndParse(blockId);
}

Block::Block(Reader* reader, const std::string& data, IndexId2Node* subnodes, uint32_t kind)
    : kind_(kind), file_(reader ? &reader->file() : nullptr), reader_(reader), subnodes_(subnodes)
{
    parseBuffer(data);
}

Block::~Block() = default;

void Block::setCorrupt(const char16_t* text, const char16_t* source)
{
    setError(text, source, kBlockErrorLevel, kCorruptCode);
}

bool Block::readAndParse(uint64_t dataId)
{
    std::string data;
    if (!readBuffer(data, dataId)) {
        // A block that wasn't found has said so already.
        if (!hasError()) setCorrupt(u"Can't read buffer data by id.", u"PST::Block::Block");
        return false;
    }
    return parseBuffer(data);
}

bool Block::readRawBuffer(std::string& buffer, uint64_t id)
{
    const Index::IndexNode* entry = reader_ && reader_->index() ? reader_->index()->find(id) : nullptr;
    if (!entry) {
        setCorrupt(u"Can't find index node.", u"PST::Block::readRawBuffer");
        return false;
    }
    buffer.assign(entry->size, '\0');
    int64_t done = readAtPosition(*file_, entry->offset, buffer.data(), entry->size);
    buffer.resize(static_cast<size_t>(done));
    return done == entry->size;
}

bool Block::readBuffer(std::string& buffer, uint64_t id)
{
    if (!readRawBuffer(buffer, id)) return false;
    uint8_t method = reader_->encryptionMethod();
    if (method == NDB_CRYPT_NONE || (id & kInternalBlockBit)) return true;
    if (decodeBlock(reinterpret_cast<uint8_t*>(buffer.data()), buffer.size(), method, id)) return true;
    buffer.clear();
    return false;
}

void Block::flatten(const std::string& data, std::vector<HeapSegment>& segments, int depth, TreeReading& reading)
{
    ty::Buffer tree(data.data(), static_cast<int64_t>(data.size()));
    tree._seek(kHeaderSize, ty::SeekBegin);
    const FormatAdapter& adapter = *reader_->adapter();
    const int64_t idSize = static_cast<int64_t>(adapter.layout().idSize);
    const uint16_t count = data.size() >= 4 ? loadU16(reinterpret_cast<const uint8_t*>(data.data()) + 2) : 0;
    for (uint32_t i = 0; i < count; ++i) {
        uint64_t childId = 0;
        if (adapter.readId(tree, childId) < idSize) break;  // the rest lies past the block's end
        std::string child;
        readBuffer(child, childId);
        if (child.empty()) continue;
        const auto* bytes = reinterpret_cast<const uint8_t*>(child.data());
        if (child.size() >= 2 && looksLikeTreeBlock(bytes[0], bytes[1])) {
            if (depth < kMaxFlattenDepth && reading.expanded.insert(childId & ~uint64_t{1}).second)
                flatten(child, segments, depth + 1, reading);
            continue;
        }
        if (!reading.take(child.size())) return;
        HeapSegment segment;
        segment.mapOffset = loadU16(bytes);
        segment.data = std::move(child);
        segments.push_back(std::move(segment));
        if (segments.size() == 1) header_ = readHeapHeader(segments.front().data);
    }
}

bool Block::readDataTree(uint64_t id, std::string& out)
{
    TreeReading reading;
    reading.bytesLeft = reader_ ? reader_->openedFileSize() : 0;
    return joinDataTree(id, out, 2, reading);
}

bool Block::joinDataTree(uint64_t id, std::string& out, uint8_t highestLevel, TreeReading& reading)
{
    out.clear();
    std::string tree;
    if (!readRawBuffer(tree, id)) return false;
    if (tree.size() < kHeaderSize || static_cast<uint8_t>(tree[0]) != kDataTreeType) return false;
    uint8_t level = static_cast<uint8_t>(tree[1]);
    // A tree has two levels at most: below a second level there is only a first.
    if (level < 1 || level > highestLevel || !reading.expanded.insert(id & ~uint64_t{1}).second) return false;
    const uint16_t count = loadU16(reinterpret_cast<const uint8_t*>(tree.data()) + 2);
    const FormatAdapter& adapter = *reader_->adapter();
    const int64_t idSize = static_cast<int64_t>(adapter.layout().idSize);
    ty::Buffer entries(tree.data(), static_cast<int64_t>(tree.size()));
    entries._seek(kHeaderSize, ty::SeekBegin);

    if (level == 1) {
        std::string joined;
        joined.reserve(std::min<size_t>((count + size_t{2}) * kJoinChunk, static_cast<size_t>(reading.bytesLeft)));
        std::string part;
        for (uint32_t i = 0; i < count; ++i) {
            uint64_t childId = 0;
            if (adapter.readId(entries, childId) < idSize || !readBuffer(part, childId) || !reading.take(part.size()))
                return false;
            joined += part;
        }
        out = std::move(joined);
        return true;
    }
    std::string part;
    for (uint32_t i = 0; i < count; ++i) {
        uint64_t childId = 0;
        if (adapter.readId(entries, childId) < idSize || !joinDataTree(childId, part, 1, reading)) return false;
        out += part;
    }
    return true;
}

bool Block::readSubnodeData(const IndexId2Node& record, std::string& out)
{
    if (record.blockId & kInternalBlockBit) return readDataTree(record.blockId, out);
    return readBuffer(out, record.blockId);
}

bool Block::readSubnode(std::string& out, IndexId2Node* tree, uint64_t nodeId)
{
    out.clear();
    IndexId2Node* record = tree ? tree->find(nodeId) : nullptr;
    return record && readSubnodeData(*record, out);
}

bool Block::readReference(const std::vector<HeapSegment>& segments, uint32_t reference, std::string& out)
{
    if (reference == 0) return false;
    out.clear();
    if (reference & 0xF) {
        readSubnode(out, subnodes_, reference);
    } else {
        size_t segmentIndex = reference >> 16;
        if (segmentIndex < segments.size()) {
            const HeapSegment& segment = segments[segmentIndex];
            const auto* bytes = reinterpret_cast<const uint8_t*>(segment.data.data());
            HeapRange range;
            // Bounds that reach past the segment keep what lies inside it.
            if (getBlockOffset(bytes, segment.data.size(), segment.mapOffset, static_cast<uint16_t>(reference), range) &&
                range.start < segment.data.size())
                out.assign(segment.data, range.start, std::min<size_t>(range.end, segment.data.size()) - range.start);
        }
    }
    return !out.empty();
}

bool Block::getBlockOffset(const uint8_t* buffer, size_t size, uint16_t mapOffset, uint16_t word, HeapRange& range)
{
    if (mapOffset == 0 || (word & 0xF)) {
        setError(u"Invalid offset.", u"PST::Block::getBlockOffset", kHeapErrorLevel, kBadArgumentCode);
        return false;
    }
    uint32_t at = mapOffset + (word >> 4) + 2u;
    if (at + 4u > size) {
        setError(u"Not enough data in source buffer.", u"PST::Block::getBlockOffset", kHeapErrorLevel, kCorruptCode);
        return false;
    }
    range.start = loadU16(buffer + at);
    range.end = loadU16(buffer + at + 2);
    if (range.start > range.end) {
        setError(u"Block start offset > end offset.", u"PST::Block::getBlockOffset", kHeapErrorLevel, kCorruptCode);
        return false;
    }
    return true;
}

bool Block::parseBuffer(const std::string& data)
{
    if (data.size() < kHeaderSize) {
        setCorrupt(u"Invalid block size", u"PST::Block::parseBuffer");
        return false;
    }
    header_ = readHeapHeader(data);
    std::vector<HeapSegment> segments;
    const auto* bytes = reinterpret_cast<const uint8_t*>(data.data());
    if (looksLikeTreeBlock(bytes[0], bytes[1])) {
        if (reader_ && reader_->adapter()) {
            TreeReading reading;
            reading.bytesLeft = reader_->openedFileSize();
            reading.expanded.insert(id_ & ~uint64_t{1});
            flatten(data, segments, 1, reading);
        }
    } else {
        segments.push_back(HeapSegment{data, header_.mapOffset});
    }
    switch (header_.signature) {
    case kPropertyListSignature: return parseType1(header_, segments);
    case kTableSignature: return parseType2(header_, segments);
    default: setCorrupt(u"Invalid block type.", u"PST::Block::parseBuffer"); return false;
    }
}

const BlockItem* Block::findItem(uint32_t propertyId, size_t row) const
{
    if (row >= rows_.size()) return nullptr;
    auto found = rows_[row].find(propertyId);
    return found == rows_[row].end() ? nullptr : &found->second;
}

}  // namespace PST
