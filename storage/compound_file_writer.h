#pragma once
// Writing compound files (OLE structured storage) in memory: nested storages, streams in the
// mini stream and in normal sectors, a DIFAT when the FAT outgrows the header, version 3 (512-byte
// sectors) or 4 (4096-byte sectors). The writer reports where everything landed, so that a caller
// can find a structure again in the bytes, or change one by patching them.
#include <array>
#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "storage/storage.h"

namespace cfb {

// One storage or stream to be written. Children are kept in a list, so that a reference to a
// child stays good while its siblings are added.
struct CfbNode {
    std::u16string name;
    bool isStorage = true;
    std::string data;
    std::array<uint8_t, 16> classId{};
    std::list<CfbNode> children;

    CfbNode& addStorage(const std::u16string& childName);
    CfbNode& addStream(const std::u16string& childName, std::string bytes);
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
    size_t fatEntryOffset(uint32_t sector) const;
    size_t miniFatEntryOffset(uint32_t miniSector) const;
    size_t entryOffset(uint32_t id) const;
    size_t entryOffset(const std::u16string& path) const { return entryOffset(entryIds.at(path)); }
};

// Little-endian numbers in a byte string, for patching built files.
void putU16(std::string& bytes, size_t at, uint16_t value);
void putU32(std::string& bytes, size_t at, uint32_t value);
uint32_t getU32(const std::string& bytes, size_t at);

class CompoundFileWriter {
public:
    static constexpr uint32_t kFree = 0xFFFFFFFF;
    static constexpr uint32_t kEnd = 0xFFFFFFFE;
    static constexpr uint32_t kFatMark = 0xFFFFFFFD;
    static constexpr uint32_t kDifatMark = 0xFFFFFFFC;

    explicit CompoundFileWriter(uint16_t version = 3);

    CfbNode root;
    // Layout choices that other writers make and that readers must cope with.
    bool sortChildren = true;   // off: the sibling tree's in-order is the order the children were added
    bool interleave = false;    // the large streams' sectors alternate, so no chain is contiguous
    uint32_t sizeHighBits = 0;  // a version 3 writer may leave garbage in a stream size's high half

    // The whole file. Throws std::invalid_argument for a name the format can't hold: empty, or
    // longer than 31 code units.
    std::string build(CfbLayout* layoutOut = nullptr);

private:
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

    void addChildren(const CfbNode& storage, uint32_t storageId, const std::u16string& path, CfbLayout& layout);
    uint32_t balance(const std::vector<uint32_t>& ids, int low, int high);
    void writeHeader(std::string& bytes, const CfbLayout& layout, uint32_t directoryCount, uint32_t miniFatCount) const;
    void writeEntry(std::string& bytes, size_t at, const Entry* entry) const;

    uint16_t version_;
    uint32_t sectorSize_;
    std::vector<Entry> entries_;
    std::string miniStream_;
    std::vector<uint32_t> miniFat_;
    std::vector<LargeStream> largeStreams_;
};

// Copies an open storage, with its class and everything below it, into `into`'s children and
// class. Returns the first failing code of the source; what was copied until then stays.
uint32_t copyStorageTree(Storage& source, CfbNode& into);

}  // namespace cfb
