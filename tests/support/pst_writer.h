#pragma once
// Builds personal-folder files in memory for tests, after the published format: the 32-bit
// (ANSI) and the 64-bit (Unicode) layout, no, permutative or cyclic encoding, data trees,
// sub-node trees of one or two levels, heaps with property lists and tables, and index trees of
// several levels (a small fan-out forces them). It reports where pages and blocks landed, so a
// test can damage a chosen structure by patching bytes.
#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "pst/block_encoding.h"

namespace test_support {

inline void pstPut(std::string& bytes, size_t at, uint64_t value, int width)
{
    if (bytes.size() < at + width) bytes.resize(at + width, '\0');
    for (int i = 0; i < width; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
}

inline std::string pstBytes(uint64_t value, int width)
{
    std::string out;
    pstPut(out, 0, value, width);
    return out;
}

inline std::string utf16(const std::u16string& text, bool terminated = false)
{
    std::string out;
    for (char16_t c : text) out += pstBytes(c, 2);
    if (terminated) out += std::string(2, '\0');
    return out;
}

// The CRC of the format: the reflected 0xEDB88320 polynomial, starting from 0, no final xor.
inline uint32_t pstCrc(const char* data, size_t size)
{
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t i = 0; i < 256; ++i) {
            uint32_t c = i;
            for (int k = 0; k < 8; ++k) c = c & 1 ? 0xEDB88320 ^ (c >> 1) : c >> 1;
            t[i] = c;
        }
        return t;
    }();
    uint32_t crc = 0;
    for (size_t i = 0; i < size; ++i) crc = table[(crc ^ static_cast<uint8_t>(data[i])) & 0xFF] ^ (crc >> 8);
    return crc;
}

// A heap on a node: items in one or more blocks, addressed by heap ids.
class HeapBuilder {
public:
    // Items added after this go to a new block of the heap.
    void startBlock() { blocks_.emplace_back(); }
    uint32_t add(const std::string& bytes)
    {
        if (blocks_.empty()) startBlock();
        blocks_.back().push_back(bytes);
        return static_cast<uint32_t>((blocks_.size() - 1) << 16 | blocks_.back().size() << 5);
    }
    // One data block per heap block; the first starts with the heap header.
    std::vector<std::string> build(uint8_t clientSignature, uint32_t userRoot) const
    {
        std::vector<std::string> out;
        for (size_t b = 0; b < std::max<size_t>(blocks_.size(), 1); ++b) {
            std::string data = b == 0 ? std::string(12, '\0') : std::string(2, '\0');
            std::vector<uint16_t> starts;
            if (b < blocks_.size())
                for (const std::string& item : blocks_[b]) {
                    starts.push_back(static_cast<uint16_t>(data.size()));
                    data += item;
                }
            starts.push_back(static_cast<uint16_t>(data.size()));
            if (data.size() % 2) data += '\0';
            pstPut(data, 0, data.size(), 2);
            if (b == 0) {
                data[2] = static_cast<char>(0xEC);
                data[3] = static_cast<char>(clientSignature);
                pstPut(data, 4, userRoot, 4);
            }
            data += pstBytes(starts.size() - 1, 2) + pstBytes(0, 2);
            for (uint16_t start : starts) data += pstBytes(start, 2);
            out.push_back(data);
        }
        return out;
    }

private:
    std::vector<std::vector<std::string>> blocks_;
};

// One property of a property list. Types 2, 3 and 11 are stored in `value`; the others take
// `bytes` into the heap, or name a sub-node by `value` when `bytes` is unset and `value` is.
struct PstProperty {
    uint16_t id = 0;
    uint16_t type = 0;
    std::string bytes;
    uint32_t value = 0;
};

inline bool pstInlineType(uint16_t type) { return type == 2 || type == 3 || type == 11; }

// A property list heap; `splitAfter` items go to a second heap block.
inline std::vector<std::string> buildPropertyList(std::vector<PstProperty> properties, size_t splitAfter = SIZE_MAX)
{
    std::sort(properties.begin(), properties.end(), [](auto& a, auto& b) { return a.id < b.id; });
    HeapBuilder heap;
    std::string records;
    size_t added = 0;
    for (const PstProperty& p : properties) {
        if (added++ == splitAfter) heap.startBlock();
        uint32_t value = p.value;
        if (!pstInlineType(p.type) && (value == 0 || !p.bytes.empty())) value = heap.add(p.bytes);
        records += pstBytes(p.id, 2) + pstBytes(p.type, 2) + pstBytes(value, 4);
    }
    uint32_t recordsId = heap.add(records);
    uint32_t header = heap.add(std::string("\xB5\x02\x06\x00", 4) + pstBytes(recordsId, 4));
    return heap.build(0xBC, header);
}

struct PstColumn {
    uint32_t tag = 0;
    uint8_t size = 4;
};

// A table heap. Cells are given as raw bytes of the column's size; for columns of 4 bytes or
// less with a type that lives in the heap, the cell is a heap id made from `heapCells`. A
// missing cell leaves its presence bit clear. The row matrix goes into the heap, or, with
// `rowsSubnode` set, is returned in `matrix` for the caller to store under that sub-node.
struct PstTable {
    std::vector<PstColumn> columns;
    std::vector<std::map<size_t, std::string>> cells;  // per row: column index to bytes
    std::vector<std::map<size_t, std::string>> heapCells;
    std::vector<uint32_t> rowIds;
    bool wideLayout = true;
    uint32_t rowsSubnode = 0;
    bool emptyIndex = false;
};

inline std::vector<std::string> buildTable(const PstTable& table, std::string* matrix = nullptr)
{
    HeapBuilder heap;
    std::vector<uint16_t> offsets;
    uint16_t end = 0;
    for (const PstColumn& c : table.columns) {
        offsets.push_back(end);
        end = static_cast<uint16_t>(end + c.size);
    }
    const size_t bitmap = (table.columns.size() + 7) / 8;
    const uint16_t rowSize = static_cast<uint16_t>(end + bitmap);
    std::string rows;
    for (size_t r = 0; r < table.cells.size(); ++r) {
        std::string row(rowSize, '\0');
        for (size_t c = 0; c < table.columns.size(); ++c) {
            std::string cell;
            auto given = table.cells[r].find(c);
            if (given != table.cells[r].end()) cell = given->second;
            if (r < table.heapCells.size() && table.heapCells[r].count(c)) cell = pstBytes(heap.add(table.heapCells[r].at(c)), 4);
            if (cell.empty()) continue;
            row.replace(offsets[c], cell.size(), cell);
            row[end + c / 8] = static_cast<char>(row[end + c / 8] | 0x80 >> (c % 8));
        }
        rows += row;
    }
    std::string index;
    for (size_t r = 0; r < table.rowIds.size(); ++r)
        index += pstBytes(table.rowIds[r], 4) + pstBytes(r, table.wideLayout ? 4 : 2);
    uint32_t indexRoot = table.emptyIndex ? 0 : heap.add(index);
    uint32_t indexHeader =
        heap.add(std::string("\xB5\x04", 2) + static_cast<char>(table.wideLayout ? 4 : 2) + '\0' + pstBytes(indexRoot, 4));
    uint32_t rowsReference = table.rowsSubnode;
    if (rowsReference == 0) rowsReference = heap.add(rows);
    else if (matrix) *matrix = rows;
    std::string info = std::string(1, '\x7C') + static_cast<char>(table.columns.size()) + pstBytes(end, 2) +
                       pstBytes(end, 2) + pstBytes(end, 2) + pstBytes(rowSize, 2) + pstBytes(indexHeader, 4) +
                       pstBytes(rowsReference, 4) + pstBytes(0, 4);
    for (size_t c = 0; c < table.columns.size(); ++c)
        info += pstBytes(table.columns[c].tag, 4) + pstBytes(offsets[c], 2) + static_cast<char>(table.columns[c].size) +
                static_cast<char>(c);
    return heap.build(0x7C, heap.add(info));
}

// Where the parts of a built file lie.
struct PstLayoutInfo {
    std::map<uint64_t, size_t> blockOffsets;  // by block id
    std::vector<std::vector<size_t>> nodePages;   // by level from the leaves up
    std::vector<std::vector<size_t>> blockPages;
    size_t nodeRootOffset = 0;
    size_t blockRootOffset = 0;
};

class PstWriter {
public:
    PstWriter(bool unicode, uint8_t encryption, size_t fanout = 0)
        : unicode_(unicode), encryption_(encryption), fanout_(fanout)
    {
    }

    int idSize() const { return unicode_ ? 8 : 4; }

    // A data block (encoded on writing) or an internal one (a data tree or sub-node block).
    uint64_t addBlock(const std::string& data, bool internal = false)
    {
        uint64_t id = (nextBlock_ += 4) | (internal ? 2 : 0);
        blocks_[id] = data;
        return id;
    }
    // A block id that the block tree lists with the given size but whose bytes lie elsewhere.
    uint64_t addRawEntry(uint64_t offset, uint16_t size, bool internal = false)
    {
        uint64_t id = (nextBlock_ += 4) | (internal ? 2 : 0);
        rawEntries_[id] = {offset, size};
        return id;
    }
    // A node's data: one block, or a data tree of one level over several.
    uint64_t addData(const std::vector<std::string>& parts)
    {
        if (parts.size() == 1) return addBlock(parts[0]);
        std::vector<uint64_t> ids;
        size_t total = 0;
        for (const std::string& part : parts) {
            ids.push_back(addBlock(part));
            total += part.size();
        }
        return addTreeBlock(1, ids, total);
    }
    uint64_t addTreeBlock(uint8_t level, const std::vector<uint64_t>& ids, size_t total)
    {
        std::string tree = std::string(1, '\x01') + static_cast<char>(level) + pstBytes(ids.size(), 2) + pstBytes(total, 4);
        for (uint64_t id : ids) tree += pstBytes(id, idSize());
        return addBlock(tree, true);
    }

    struct Subnode {
        uint64_t nodeId;
        uint64_t dataId;
        uint64_t subnodeId = 0;
    };
    // A sub-node block of level 0, sorted as given.
    uint64_t addSubnodeLeaf(const std::vector<Subnode>& entries, uint8_t level = 0)
    {
        std::string block = std::string(1, '\x02') + static_cast<char>(level) + pstBytes(entries.size(), 2);
        if (unicode_) block += pstBytes(0, 4);
        for (const Subnode& e : entries) block += pstBytes(e.nodeId, idSize()) + pstBytes(e.dataId, idSize()) + pstBytes(e.subnodeId, idSize());
        return addBlock(block, true);
    }
    // A sub-node block of level 1 over sub-node blocks, each named by its first node id.
    uint64_t addSubnodeBranch(const std::vector<std::pair<uint64_t, uint64_t>>& children)
    {
        std::string block = std::string("\x02\x01", 2) + pstBytes(children.size(), 2);
        if (unicode_) block += pstBytes(0, 4);
        for (const auto& [nodeId, blockId] : children) block += pstBytes(nodeId, idSize()) + pstBytes(blockId, idSize());
        return addBlock(block, true);
    }

    void addNode(uint64_t nodeId, uint64_t dataId, uint64_t subnodeId = 0, uint32_t parentId = 0)
    {
        nodes_[nodeId] = {dataId, subnodeId, parentId};
    }

    // Version word and header fields may be changed before build through these.
    uint16_t version = 0;
    int64_t fileSizeAdjust = 0;

    std::string build(PstLayoutInfo* info = nullptr)
    {
        PstLayoutInfo local;
        PstLayoutInfo& where = info ? *info : local;
        std::string file(unicode_ ? 0x400 : 0x400, '\0');
        std::vector<std::array<uint64_t, 3>> blockEntries;  // id, offset, size
        for (auto& [id, data] : blocks_) {
            std::string stored = data;
            if (!(id & 2)) encode(stored, id);
            size_t offset = file.size();
            where.blockOffsets[id] = offset;
            blockEntries.push_back({id, offset, data.size()});
            size_t trailer = unicode_ ? 16 : 12;
            size_t total = (stored.size() + trailer + 63) / 64 * 64;
            file += stored;
            file.resize(offset + total - trailer, '\0');
            uint64_t w = offset ^ id;
            std::string t = pstBytes(data.size(), 2) + pstBytes((w >> 16 ^ w) & 0xFFFF, 2);
            uint32_t crc = pstCrc(stored.data(), stored.size());
            t += unicode_ ? pstBytes(crc, 4) + pstBytes(id, 8) : pstBytes(id, 4) + pstBytes(crc, 4);
            file += t;
        }
        for (auto& [id, entry] : rawEntries_) blockEntries.push_back({id, entry.first, entry.second});
        std::sort(blockEntries.begin(), blockEntries.end());
        file.resize((file.size() + 511) / 512 * 512, '\0');

        std::vector<std::string> blockLeaves, nodeLeaves;
        std::vector<uint64_t> blockKeys, nodeKeys;
        for (auto& [id, offset, size] : blockEntries) {
            blockKeys.push_back(id);
            blockLeaves.push_back(pstBytes(id, idSize()) + pstBytes(offset, idSize()) + pstBytes(size, 2) +
                                  pstBytes(1, 2) + std::string(unicode_ ? 4 : 0, '\0'));
        }
        for (auto& [nodeId, n] : nodes_) {
            nodeKeys.push_back(nodeId);
            nodeLeaves.push_back(pstBytes(nodeId, idSize()) + pstBytes(n.dataId, idSize()) + pstBytes(n.subnodeId, idSize()) +
                                 pstBytes(n.parentId, 4) + std::string(unicode_ ? 4 : 0, '\0'));
        }
        auto [blockRoot, blockRootId] = writeTree(file, blockLeaves, blockKeys, 0x80, where.blockPages);
        auto [nodeRoot, nodeRootId] = writeTree(file, nodeLeaves, nodeKeys, 0x81, where.nodePages);
        where.blockRootOffset = blockRoot;
        where.nodeRootOffset = nodeRoot;
        writeHeader(file, blockRoot, blockRootId, nodeRoot, nodeRootId);
        return file;
    }

private:
    struct Node {
        uint64_t dataId;
        uint64_t subnodeId;
        uint32_t parentId;
    };

    void encode(std::string& data, uint64_t id) const
    {
        if (encryption_ == pst_permute) {
            for (char& c : data) c = static_cast<char>(PST::mpbbR[static_cast<uint8_t>(c)]);
        } else if (encryption_ == pst_cyclic) {
            // The cyclic substitution undoes itself, so encoding is the same walk.
            auto w = static_cast<uint16_t>((id >> 16) ^ id);
            for (char& c : data) {
                uint8_t b = static_cast<uint8_t>(static_cast<uint8_t>(c) + static_cast<uint8_t>(w));
                b = PST::mpbbR[b];
                b = static_cast<uint8_t>(b + (w >> 8));
                b = PST::mpbbS[b];
                b = static_cast<uint8_t>(b - (w >> 8));
                b = PST::mpbbI[b];
                c = static_cast<char>(static_cast<uint8_t>(b - static_cast<uint8_t>(w)));
                ++w;
            }
        }
    }

    static constexpr uint8_t pst_permute = 1;
    static constexpr uint8_t pst_cyclic = 2;

    // Writes the pages of one tree from its leaf entries up; returns the root's offset and id.
    std::pair<size_t, uint64_t> writeTree(std::string& file, std::vector<std::string> entries, std::vector<uint64_t> keys,
                                          uint8_t pageType, std::vector<std::vector<size_t>>& levels)
    {
        const size_t entryBytes = unicode_ ? 488 : 496;
        uint8_t level = 0;
        while (true) {
            size_t entrySize = entries.empty() ? (level ? 3 * idSize() : 0) : entries.front().size();
            size_t capacity = entrySize ? entryBytes / entrySize : 1;
            size_t perPage = fanout_ ? std::min(fanout_, capacity) : capacity;
            std::vector<std::string> parents;
            std::vector<uint64_t> parentKeys;
            levels.emplace_back();
            for (size_t first = 0; first < std::max<size_t>(entries.size(), 1); first += perPage) {
                size_t count = std::min(perPage, entries.size() - std::min(first, entries.size()));
                std::string page(512, '\0');
                for (size_t i = 0; i < count; ++i) page.replace(i * entrySize, entrySize, entries[first + i]);
                size_t trailer = unicode_ ? 496 : 500;
                size_t counts = unicode_ ? 488 : 496;
                page[counts] = static_cast<char>(count);
                page[counts + 1] = static_cast<char>(entrySize ? entryBytes / entrySize : 0);
                page[counts + 2] = static_cast<char>(entrySize);
                page[counts + 3] = static_cast<char>(level);
                uint64_t pageId = (nextPage_ += 4) | 0x100000;
                size_t offset = file.size();
                page[trailer] = page[trailer + 1] = static_cast<char>(pageType);
                uint64_t w = offset ^ pageId;
                pstPut(page, trailer + 2, (w >> 16 ^ w) & 0xFFFF, 2);
                uint32_t crc = pstCrc(page.data(), unicode_ ? 496 : 500);
                if (unicode_) {
                    pstPut(page, 500, crc, 4);
                    pstPut(page, 504, pageId, 8);
                } else {
                    pstPut(page, 504, pageId, 4);
                    pstPut(page, 508, crc, 4);
                }
                file += page;
                levels.back().push_back(offset);
                uint64_t key = count ? keys[first] : 0;
                parentKeys.push_back(key);
                parents.push_back(pstBytes(key, idSize()) + pstBytes(pageId, idSize()) + pstBytes(offset, idSize()));
                if (parents.size() == 1 && entries.size() <= perPage) return {offset, pageId};
            }
            entries = parents;
            keys = parentKeys;
            ++level;
        }
    }

    void writeHeader(std::string& file, size_t blockRoot, uint64_t blockRootId, size_t nodeRoot, uint64_t nodeRootId)
    {
        file.replace(0, 4, "!BDN");
        file.replace(8, 2, "SM");
        pstPut(file, 10, version ? version : (unicode_ ? 23 : 14), 2);
        pstPut(file, 12, 19, 2);
        file[14] = file[15] = 1;
        const uint64_t size = file.size() + fileSizeAdjust;
        if (unicode_) {
            pstPut(file, 184, size, 8);
            pstPut(file, 216, nodeRootId, 8);
            pstPut(file, 224, nodeRoot, 8);
            pstPut(file, 232, blockRootId, 8);
            pstPut(file, 240, blockRoot, 8);
            file[512] = static_cast<char>(0x80);
            file[513] = static_cast<char>(encryption_);
            pstPut(file, 4, pstCrc(file.data() + 8, 471), 4);
            pstPut(file, 524, pstCrc(file.data() + 8, 516), 4);
        } else {
            pstPut(file, 168, size, 4);
            pstPut(file, 184, nodeRootId, 4);
            pstPut(file, 188, nodeRoot, 4);
            pstPut(file, 192, blockRootId, 4);
            pstPut(file, 196, blockRoot, 4);
            file[460] = static_cast<char>(0x80);
            file[461] = static_cast<char>(encryption_);
            pstPut(file, 4, pstCrc(file.data() + 8, 471), 4);
        }
    }

    bool unicode_;
    uint8_t encryption_;
    size_t fanout_;
    uint64_t nextBlock_ = 0;
    uint64_t nextPage_ = 0;
    std::map<uint64_t, std::string> blocks_;
    std::map<uint64_t, std::pair<uint64_t, uint16_t>> rawEntries_;
    std::map<uint64_t, Node> nodes_;
};

}  // namespace test_support
