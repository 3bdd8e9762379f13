#pragma once
// Builds compound files in memory for tests: nested storages, streams in the mini stream and
// in normal sectors, a DIFAT when the FAT outgrows the header, version 3 or 4. It reports where
// everything landed, so that a test can damage a chosen structure by patching bytes.
#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace test_support {

struct CfbNode {
    std::u16string name;
    bool isStorage = true;
    std::string data;
    std::array<uint8_t, 16> classId{};
    std::vector<CfbNode> children;

    CfbNode& addStorage(const std::u16string& childName)
    {
        children.push_back(CfbNode{childName, true, {}, {}, {}});
        return children.back();
    }
    CfbNode& addStream(const std::u16string& childName, std::string bytes)
    {
        children.push_back(CfbNode{childName, false, std::move(bytes), {}, {}});
        return children.back();
    }
};

// Where the parts of a built file lie. Paths join names with "/"; the root is "".
struct CfbLayout {
    uint32_t sectorSize = 0;
    std::vector<uint32_t> fatSectors;
    std::vector<uint32_t> difatSectors;
    std::vector<uint32_t> directorySectors;
    std::vector<uint32_t> miniFatSectors;
    std::vector<uint32_t> miniStreamSectors;
    std::map<std::u16string, uint32_t> entryIds;
    std::map<std::u16string, uint32_t> startSectors;  // normal or mini sector, by the stream's size

    size_t sectorOffset(uint32_t sector) const { return (static_cast<size_t>(sector) + 1) * sectorSize; }
    size_t fatEntryOffset(uint32_t sector) const
    {
        return sectorOffset(fatSectors.at(sector / (sectorSize / 4))) + sector % (sectorSize / 4) * 4;
    }
    size_t miniFatEntryOffset(uint32_t miniSector) const
    {
        return sectorOffset(miniFatSectors.at(miniSector / (sectorSize / 4))) + miniSector % (sectorSize / 4) * 4;
    }
    size_t entryOffset(uint32_t id) const
    {
        return sectorOffset(directorySectors.at(id / (sectorSize / 128))) + id % (sectorSize / 128) * 128;
    }
    size_t entryOffset(const std::u16string& path) const { return entryOffset(entryIds.at(path)); }
};

inline void putU16(std::string& bytes, size_t at, uint16_t value)
{
    bytes[at] = static_cast<char>(value & 0xFF);
    bytes[at + 1] = static_cast<char>(value >> 8);
}

inline void putU32(std::string& bytes, size_t at, uint32_t value)
{
    putU16(bytes, at, static_cast<uint16_t>(value & 0xFFFF));
    putU16(bytes, at + 2, static_cast<uint16_t>(value >> 16));
}

inline uint32_t getU32(const std::string& bytes, size_t at)
{
    auto b = [&](size_t i) { return static_cast<uint32_t>(static_cast<uint8_t>(bytes[at + i])); };
    return b(0) | b(1) << 8 | b(2) << 16 | b(3) << 24;
}

// The sibling order of the format, written out plainly for names of ASCII and Latin-1 letters.
inline bool cfbNameLess(const std::u16string& a, const std::u16string& b)
{
    if (a.size() != b.size()) return a.size() < b.size();
    auto upper = [](char16_t c) -> char16_t {
        if ((c >= u'a' && c <= u'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7)) return static_cast<char16_t>(c - 32);
        return c;
    };
    for (size_t i = 0; i < a.size(); ++i)
        if (upper(a[i]) != upper(b[i])) return upper(a[i]) < upper(b[i]);
    return false;
}

class CompoundFileWriter {
public:
    static constexpr uint32_t kFree = 0xFFFFFFFF;
    static constexpr uint32_t kEnd = 0xFFFFFFFE;
    static constexpr uint32_t kFatMark = 0xFFFFFFFD;
    static constexpr uint32_t kDifatMark = 0xFFFFFFFC;

    explicit CompoundFileWriter(uint16_t version = 3) : version_(version), sectorSize_(version == 4 ? 4096 : 512)
    {
        root.name = u"Root Entry";
    }

    CfbNode root;
    bool sortChildren = true;     // off: the sibling tree's in-order is the order the children were added
    bool interleave = false;      // the large streams' sectors alternate, so no chain is contiguous
    uint32_t sizeHighBits = 0;    // a version 3 writer may leave garbage in the size's high half

    std::string build(CfbLayout* layoutOut = nullptr)
    {
        entries_.clear();
        miniStream_.clear();
        miniFat_.clear();
        largeStreams_.clear();
        CfbLayout layout;
        layout.sectorSize = sectorSize_;
        entries_.push_back(Entry{root.name, 5, kNoStream, kNoStream, kNoStream, root.classId, kEnd, 0});
        layout.entryIds[u""] = 0;
        addChildren(root, 0, u"", layout);

        const uint32_t perSector = sectorSize_ / 4;
        uint32_t directoryCount = divUp(entries_.size() * 128, sectorSize_);
        uint32_t miniFatCount = divUp(miniFat_.size() * 4, sectorSize_);
        uint32_t miniStreamCount = divUp(miniStream_.size(), sectorSize_);
        uint32_t largeCount = 0;
        for (const LargeStream& large : largeStreams_) largeCount += divUp(large.node->data.size(), sectorSize_);
        uint32_t fatCount = 1, difatCount = 0;
        for (;;) {
            uint32_t total = fatCount + difatCount + directoryCount + miniFatCount + miniStreamCount + largeCount;
            uint32_t needFat = divUp(total, perSector);
            uint32_t needDifat = needFat > 109 ? divUp(needFat - 109, perSector - 1) : 0;
            if (needFat == fatCount && needDifat == difatCount) break;
            fatCount = needFat;
            difatCount = needDifat;
        }
        uint32_t next = 0;
        auto take = [&](uint32_t count, std::vector<uint32_t>& into) {
            for (uint32_t i = 0; i < count; ++i) into.push_back(next++);
        };
        take(fatCount, layout.fatSectors);
        take(difatCount, layout.difatSectors);
        take(directoryCount, layout.directorySectors);
        take(miniFatCount, layout.miniFatSectors);
        take(miniStreamCount, layout.miniStreamSectors);
        std::vector<std::vector<uint32_t>> largeChains(largeStreams_.size());
        if (interleave) {
            for (bool more = true; more;) {
                more = false;
                for (size_t i = 0; i < largeStreams_.size(); ++i)
                    if (largeChains[i].size() < divUp(largeStreams_[i].node->data.size(), sectorSize_)) {
                        largeChains[i].push_back(next++);
                        more = true;
                    }
            }
        } else {
            for (size_t i = 0; i < largeStreams_.size(); ++i)
                take(divUp(largeStreams_[i].node->data.size(), sectorSize_), largeChains[i]);
        }
        const uint32_t sectorCount = next;

        std::vector<uint32_t> fat(fatCount * perSector, kFree);
        for (uint32_t s : layout.fatSectors) fat[s] = kFatMark;
        for (uint32_t s : layout.difatSectors) fat[s] = kDifatMark;
        auto chain = [&](const std::vector<uint32_t>& sectors) {
            for (size_t i = 0; i < sectors.size(); ++i) fat[sectors[i]] = i + 1 < sectors.size() ? sectors[i + 1] : kEnd;
        };
        chain(layout.directorySectors);
        chain(layout.miniFatSectors);
        chain(layout.miniStreamSectors);
        for (const auto& sectors : largeChains) chain(sectors);

        entries_[0].start = layout.miniStreamSectors.empty() ? kEnd : layout.miniStreamSectors[0];
        entries_[0].size = miniStream_.size();
        for (size_t i = 0; i < largeStreams_.size(); ++i) {
            entries_[largeStreams_[i].entry].start = largeChains[i][0];
            layout.startSectors[largeStreams_[i].path] = largeChains[i][0];
        }

        std::string bytes((static_cast<size_t>(sectorCount) + 1) * sectorSize_, '\0');
        writeHeader(bytes, layout, directoryCount, miniFatCount);
        for (size_t i = 0; i < layout.difatSectors.size(); ++i) {
            size_t at = layout.sectorOffset(layout.difatSectors[i]);
            for (uint32_t k = 0; k < perSector - 1; ++k) {
                size_t index = 109 + i * (perSector - 1) + k;
                putU32(bytes, at + 4 * k, index < layout.fatSectors.size() ? layout.fatSectors[index] : kFree);
            }
            putU32(bytes, at + 4 * (perSector - 1),
                   i + 1 < layout.difatSectors.size() ? layout.difatSectors[i + 1] : kEnd);
        }
        for (size_t i = 0; i < fat.size(); ++i)
            putU32(bytes, layout.sectorOffset(layout.fatSectors[i / perSector]) + i % perSector * 4, fat[i]);
        for (size_t i = 0; i < miniFat_.size(); ++i)
            putU32(bytes, layout.sectorOffset(layout.miniFatSectors[i / perSector]) + i % perSector * 4, miniFat_[i]);
        for (size_t i = miniFat_.size(); i < miniFatCount * perSector; ++i)
            putU32(bytes, layout.sectorOffset(layout.miniFatSectors[i / perSector]) + i % perSector * 4, kFree);
        for (size_t i = 0; i < miniStream_.size(); ++i)
            bytes[layout.sectorOffset(layout.miniStreamSectors[i / sectorSize_]) + i % sectorSize_] = miniStream_[i];
        for (size_t i = 0; i < largeStreams_.size(); ++i) {
            const std::string& data = largeStreams_[i].node->data;
            for (size_t k = 0; k < largeChains[i].size(); ++k) {
                size_t length = std::min<size_t>(sectorSize_, data.size() - k * sectorSize_);
                bytes.replace(layout.sectorOffset(largeChains[i][k]), length, data, k * sectorSize_, length);
            }
        }
        for (uint32_t id = 0; id < directoryCount * (sectorSize_ / 128); ++id)
            writeEntry(bytes, layout.entryOffset(id), id < entries_.size() ? &entries_[id] : nullptr);
        if (layoutOut) *layoutOut = std::move(layout);
        return bytes;
    }

private:
    static constexpr uint32_t kNoStream = 0xFFFFFFFF;

    struct Entry {
        std::u16string name;
        uint8_t type;
        uint32_t left, right, child;
        std::array<uint8_t, 16> classId;
        uint32_t start;
        uint64_t size;
    };
    struct LargeStream {
        const CfbNode* node;
        uint32_t entry;
        std::u16string path;
    };

    static uint32_t divUp(size_t bytes, size_t unit) { return static_cast<uint32_t>((bytes + unit - 1) / unit); }

    // Entries for the children first, then a balanced sibling tree over them, then each
    // child storage's own children.
    void addChildren(const CfbNode& storage, uint32_t storageId, const std::u16string& path, CfbLayout& layout)
    {
        std::vector<const CfbNode*> order;
        for (const CfbNode& child : storage.children) order.push_back(&child);
        if (sortChildren)
            std::sort(order.begin(), order.end(), [](const CfbNode* a, const CfbNode* b) { return cfbNameLess(a->name, b->name); });
        std::vector<uint32_t> ids;
        for (const CfbNode* child : order) {
            uint32_t id = static_cast<uint32_t>(entries_.size());
            std::u16string childPath = path.empty() ? child->name : path + u"/" + child->name;
            layout.entryIds[childPath] = id;
            Entry entry{child->name, static_cast<uint8_t>(child->isStorage ? 1 : 2), kNoStream, kNoStream, kNoStream,
                        child->classId, kEnd, 0};
            if (!child->isStorage) {
                entry.size = child->data.size();
                if (child->data.size() >= 4096) {
                    largeStreams_.push_back(LargeStream{child, id, childPath});
                } else if (!child->data.empty()) {
                    entry.start = static_cast<uint32_t>(miniStream_.size() / 64);
                    layout.startSectors[childPath] = entry.start;
                    uint32_t count = divUp(child->data.size(), 64);
                    for (uint32_t k = 0; k < count; ++k)
                        miniFat_.push_back(k + 1 < count ? entry.start + k + 1 : kEnd);
                    miniStream_ += child->data;
                    miniStream_.resize(static_cast<size_t>(count) * 64 + entry.start * 64, '\0');
                }
            }
            entries_.push_back(entry);
            ids.push_back(id);
        }
        entries_[storageId].child = balance(ids, 0, static_cast<int>(ids.size()) - 1);
        for (size_t i = 0; i < order.size(); ++i)
            if (order[i]->isStorage) {
                std::u16string childPath = path.empty() ? order[i]->name : path + u"/" + order[i]->name;
                addChildren(*order[i], ids[i], childPath, layout);
            }
    }

    uint32_t balance(const std::vector<uint32_t>& ids, int low, int high)
    {
        if (low > high) return kNoStream;
        int middle = (low + high) / 2;
        uint32_t id = ids[middle];
        entries_[id].left = balance(ids, low, middle - 1);
        entries_[id].right = balance(ids, middle + 1, high);
        return id;
    }

    void writeHeader(std::string& bytes, const CfbLayout& layout, uint32_t directoryCount, uint32_t miniFatCount) const
    {
        static const uint8_t signature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
        bytes.replace(0, 8, reinterpret_cast<const char*>(signature), 8);
        putU16(bytes, 0x18, 0x3E);
        putU16(bytes, 0x1A, version_);
        putU16(bytes, 0x1C, 0xFFFE);
        putU16(bytes, 0x1E, version_ == 4 ? 12 : 9);
        putU16(bytes, 0x20, 6);
        putU32(bytes, 0x28, version_ == 4 ? directoryCount : 0);
        putU32(bytes, 0x2C, static_cast<uint32_t>(layout.fatSectors.size()));
        putU32(bytes, 0x30, layout.directorySectors.at(0));
        putU32(bytes, 0x38, 4096);
        putU32(bytes, 0x3C, miniFatCount ? layout.miniFatSectors[0] : kEnd);
        putU32(bytes, 0x40, miniFatCount);
        putU32(bytes, 0x44, layout.difatSectors.empty() ? kEnd : layout.difatSectors[0]);
        putU32(bytes, 0x48, static_cast<uint32_t>(layout.difatSectors.size()));
        for (size_t i = 0; i < 109; ++i)
            putU32(bytes, 0x4C + 4 * i, i < layout.fatSectors.size() ? layout.fatSectors[i] : kFree);
    }

    void writeEntry(std::string& bytes, size_t at, const Entry* entry) const
    {
        if (!entry) {  // an unused slot
            putU32(bytes, at + 0x44, kNoStream);
            putU32(bytes, at + 0x48, kNoStream);
            putU32(bytes, at + 0x4C, kNoStream);
            return;
        }
        for (size_t i = 0; i < entry->name.size(); ++i) putU16(bytes, at + 2 * i, entry->name[i]);
        putU16(bytes, at + 0x40, static_cast<uint16_t>((entry->name.size() + 1) * 2));
        bytes[at + 0x42] = static_cast<char>(entry->type);
        bytes[at + 0x43] = 1;  // black
        putU32(bytes, at + 0x44, entry->left);
        putU32(bytes, at + 0x48, entry->right);
        putU32(bytes, at + 0x4C, entry->child);
        bytes.replace(at + 0x50, 16, reinterpret_cast<const char*>(entry->classId.data()), 16);
        putU32(bytes, at + 0x74, entry->start);
        putU32(bytes, at + 0x78, static_cast<uint32_t>(entry->size));
        putU32(bytes, at + 0x7C, entry->type == 2 && version_ == 3 ? sizeHighBits : static_cast<uint32_t>(entry->size >> 32));
    }

    uint16_t version_;
    uint32_t sectorSize_;
    std::vector<Entry> entries_;
    std::string miniStream_;
    std::vector<uint32_t> miniFat_;
    std::vector<LargeStream> largeStreams_;
};

}  // namespace test_support
