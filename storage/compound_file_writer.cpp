#include "storage/compound_file_writer.h"

#include <algorithm>
#include <stdexcept>

#include "storage/directory_entry.h"

namespace cfb {

namespace {

constexpr size_t kMiniStreamCutoff = 4096;
constexpr size_t kMiniSectorSize = 64;
constexpr size_t kEntrySize = 128;
constexpr size_t kHeaderDifatSlots = 109;
constexpr size_t kMaxNameUnits = 31;  // 64 bytes with the terminator

uint32_t divUp(size_t bytes, size_t unit) { return static_cast<uint32_t>((bytes + unit - 1) / unit); }

}  // namespace

CfbNode& CfbNode::addStorage(const std::u16string& childName)
{
    children.push_back(CfbNode{childName, true, {}, {}, {}});
    return children.back();
}

CfbNode& CfbNode::addStream(const std::u16string& childName, std::string bytes)
{
    children.push_back(CfbNode{childName, false, std::move(bytes), {}, {}});
    return children.back();
}

size_t CfbLayout::fatEntryOffset(uint32_t sector) const
{
    return sectorOffset(fatSectors.at(sector / (sectorSize / 4))) + sector % (sectorSize / 4) * 4;
}

size_t CfbLayout::miniFatEntryOffset(uint32_t miniSector) const
{
    return sectorOffset(miniFatSectors.at(miniSector / (sectorSize / 4))) + miniSector % (sectorSize / 4) * 4;
}

size_t CfbLayout::entryOffset(uint32_t id) const
{
    const uint32_t perSector = sectorSize / kEntrySize;
    return sectorOffset(directorySectors.at(id / perSector)) + id % perSector * kEntrySize;
}

void putU16(std::string& bytes, size_t at, uint16_t value)
{
    bytes[at] = static_cast<char>(value & 0xFF);
    bytes[at + 1] = static_cast<char>(value >> 8);
}

void putU32(std::string& bytes, size_t at, uint32_t value)
{
    putU16(bytes, at, static_cast<uint16_t>(value & 0xFFFF));
    putU16(bytes, at + 2, static_cast<uint16_t>(value >> 16));
}

uint32_t getU32(const std::string& bytes, size_t at)
{
    auto b = [&](size_t i) { return static_cast<uint32_t>(static_cast<uint8_t>(bytes[at + i])); };
    return b(0) | b(1) << 8 | b(2) << 16 | b(3) << 24;
}

CompoundFileWriter::CompoundFileWriter(uint16_t version) : version_(version), sectorSize_(version == 4 ? 4096 : 512)
{
    root.name = u"Root Entry";
}

std::string CompoundFileWriter::build(CfbLayout* layoutOut)
{
    entries_.clear();
    miniStream_.clear();
    miniFat_.clear();
    largeStreams_.clear();
    CfbLayout layout;
    layout.sectorSize = sectorSize_;
    entries_.push_back(Entry{root.name, EntryRoot, kNoStream, kNoStream, kNoStream, root.classId, kEnd, 0});
    layout.entryIds[u""] = 0;
    addChildren(root, 0, u"", layout);

    // The FAT covers every sector, itself and the DIFAT included, so their counts are found
    // by growing them until they stand still.
    const uint32_t perSector = sectorSize_ / 4;
    uint32_t directoryCount = divUp(entries_.size() * kEntrySize, sectorSize_);
    uint32_t miniFatCount = divUp(miniFat_.size() * 4, sectorSize_);
    uint32_t miniStreamCount = divUp(miniStream_.size(), sectorSize_);
    uint32_t largeCount = 0;
    for (const LargeStream& large : largeStreams_) largeCount += divUp(large.node->data.size(), sectorSize_);
    uint32_t fatCount = 1, difatCount = 0;
    for (;;) {
        uint32_t total = fatCount + difatCount + directoryCount + miniFatCount + miniStreamCount + largeCount;
        uint32_t needFat = divUp(total, perSector);
        uint32_t needDifat = needFat > kHeaderDifatSlots ? divUp(needFat - kHeaderDifatSlots, perSector - 1) : 0;
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

    std::vector<uint32_t> fat(static_cast<size_t>(fatCount) * perSector, kFree);
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
            size_t index = kHeaderDifatSlots + i * (perSector - 1) + k;
            putU32(bytes, at + 4 * k, index < layout.fatSectors.size() ? layout.fatSectors[index] : kFree);
        }
        putU32(bytes, at + 4 * (perSector - 1), i + 1 < layout.difatSectors.size() ? layout.difatSectors[i + 1] : kEnd);
    }
    for (size_t i = 0; i < fat.size(); ++i)
        putU32(bytes, layout.sectorOffset(layout.fatSectors[i / perSector]) + i % perSector * 4, fat[i]);
    for (size_t i = 0; i < static_cast<size_t>(miniFatCount) * perSector; ++i)
        putU32(bytes, layout.sectorOffset(layout.miniFatSectors[i / perSector]) + i % perSector * 4,
               i < miniFat_.size() ? miniFat_[i] : kFree);
    for (size_t i = 0; i < miniStream_.size(); i += sectorSize_)
        bytes.replace(layout.sectorOffset(layout.miniStreamSectors[i / sectorSize_]),
                      std::min<size_t>(sectorSize_, miniStream_.size() - i), miniStream_, i,
                      std::min<size_t>(sectorSize_, miniStream_.size() - i));
    for (size_t i = 0; i < largeStreams_.size(); ++i) {
        const std::string& data = largeStreams_[i].node->data;
        for (size_t k = 0; k < largeChains[i].size(); ++k) {
            size_t length = std::min<size_t>(sectorSize_, data.size() - k * sectorSize_);
            bytes.replace(layout.sectorOffset(largeChains[i][k]), length, data, k * sectorSize_, length);
        }
    }
    for (uint32_t id = 0; id < directoryCount * (sectorSize_ / kEntrySize); ++id)
        writeEntry(bytes, layout.entryOffset(id), id < entries_.size() ? &entries_[id] : nullptr);
    if (layoutOut) *layoutOut = std::move(layout);
    return bytes;
}

// Entries for the children first, then a balanced sibling tree over them, then each child
// storage's own children.
void CompoundFileWriter::addChildren(const CfbNode& storage, uint32_t storageId, const std::u16string& path,
                                     CfbLayout& layout)
{
    std::vector<const CfbNode*> order;
    for (const CfbNode& child : storage.children) {
        if (child.name.empty() || child.name.size() > kMaxNameUnits)
            throw std::invalid_argument("a compound file name has 1 to 31 characters");
        order.push_back(&child);
    }
    if (sortChildren)
        std::stable_sort(order.begin(), order.end(),
                         [](const CfbNode* a, const CfbNode* b) { return compareNames(a->name, b->name) < 0; });
    std::vector<uint32_t> ids;
    for (const CfbNode* child : order) {
        uint32_t id = static_cast<uint32_t>(entries_.size());
        std::u16string childPath = path.empty() ? child->name : path + u"/" + child->name;
        layout.entryIds[childPath] = id;
        Entry entry{child->name, child->isStorage ? EntryStorage : EntryStream,
                    kNoStream, kNoStream, kNoStream, child->classId, kEnd, 0};
        if (!child->isStorage) {
            entry.size = child->data.size();
            if (child->data.size() >= kMiniStreamCutoff) {
                largeStreams_.push_back(LargeStream{child, id, childPath});
            } else if (!child->data.empty()) {
                entry.start = static_cast<uint32_t>(miniStream_.size() / kMiniSectorSize);
                layout.startSectors[childPath] = entry.start;
                uint32_t count = divUp(child->data.size(), kMiniSectorSize);
                for (uint32_t k = 0; k < count; ++k) miniFat_.push_back(k + 1 < count ? entry.start + k + 1 : kEnd);
                miniStream_ += child->data;
                miniStream_.resize((static_cast<size_t>(entry.start) + count) * kMiniSectorSize, '\0');
            }
        }
        entries_.push_back(entry);
        ids.push_back(id);
    }
    entries_[storageId].child = balance(ids, 0, static_cast<int>(ids.size()) - 1);
    for (size_t i = 0; i < order.size(); ++i)
        if (order[i]->isStorage)
            addChildren(*order[i], ids[i], path.empty() ? order[i]->name : path + u"/" + order[i]->name, layout);
}

uint32_t CompoundFileWriter::balance(const std::vector<uint32_t>& ids, int low, int high)
{
    if (low > high) return kNoStream;
    int middle = (low + high) / 2;
    uint32_t id = ids[middle];
    entries_[id].left = balance(ids, low, middle - 1);
    entries_[id].right = balance(ids, middle + 1, high);
    return id;
}

void CompoundFileWriter::writeHeader(std::string& bytes, const CfbLayout& layout, uint32_t directoryCount,
                                     uint32_t miniFatCount) const
{
    static const uint8_t signature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
    bytes.replace(0, 8, reinterpret_cast<const char*>(signature), 8);
    putU16(bytes, 0x18, 0x3E);  // minor version
    putU16(bytes, 0x1A, version_);
    putU16(bytes, 0x1C, 0xFFFE);  // little-endian
    putU16(bytes, 0x1E, version_ == 4 ? 12 : 9);
    putU16(bytes, 0x20, 6);
    putU32(bytes, 0x28, version_ == 4 ? directoryCount : 0);
    putU32(bytes, 0x2C, static_cast<uint32_t>(layout.fatSectors.size()));
    putU32(bytes, 0x30, layout.directorySectors.at(0));
    putU32(bytes, 0x38, static_cast<uint32_t>(kMiniStreamCutoff));
    putU32(bytes, 0x3C, miniFatCount ? layout.miniFatSectors[0] : kEnd);
    putU32(bytes, 0x40, miniFatCount);
    putU32(bytes, 0x44, layout.difatSectors.empty() ? kEnd : layout.difatSectors[0]);
    putU32(bytes, 0x48, static_cast<uint32_t>(layout.difatSectors.size()));
    for (size_t i = 0; i < kHeaderDifatSlots; ++i)
        putU32(bytes, 0x4C + 4 * i, i < layout.fatSectors.size() ? layout.fatSectors[i] : kFree);
}

void CompoundFileWriter::writeEntry(std::string& bytes, size_t at, const Entry* entry) const
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
    bytes[at + 0x43] = 1;  // black: a tree of black nodes only is a valid red-black tree
    putU32(bytes, at + 0x44, entry->left);
    putU32(bytes, at + 0x48, entry->right);
    putU32(bytes, at + 0x4C, entry->child);
    bytes.replace(at + 0x50, 16, reinterpret_cast<const char*>(entry->classId.data()), 16);
    putU32(bytes, at + 0x74, entry->start);
    putU32(bytes, at + 0x78, static_cast<uint32_t>(entry->size));
    putU32(bytes, at + 0x7C,
           entry->type == EntryStream && version_ == 3 ? sizeHighBits : static_cast<uint32_t>(entry->size >> 32));
}

uint32_t copyStorageTree(Storage& source, CfbNode& into)
{
    ElementInfo info;
    uint32_t code = source.stat(info);
    if (failed(code)) return code;
    into.classId = info.classId;
    ElementEnumerator children;
    code = source.enumElements(children);
    if (failed(code)) return code;
    while (children.next(info) == S_OK_CODE) {
        if (info.type == ElementStorage) {
            Storage child;
            code = source.openStorage(info.name, child);
            if (failed(code)) return code;
            code = copyStorageTree(child, into.addStorage(info.name));
        } else {
            Stream child;
            code = source.openStream(info.name, child);
            if (failed(code)) return code;
            std::string bytes(static_cast<size_t>(child.size()), '\0');
            uint64_t done = 0;
            code = child.read(bytes.data(), bytes.size(), done);
            bytes.resize(static_cast<size_t>(done));
            into.addStream(info.name, std::move(bytes));
        }
        if (failed(code)) return code;
    }
    return S_OK_CODE;
}

}  // namespace cfb
