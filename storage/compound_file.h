#pragma once
// A compound file opened for reading: the header, the allocation tables, the directory, and
// the reading of a stream's bytes wherever its sectors lie. Everything read from the file is
// checked against the file's size before it is used, and every chain is walked a bounded
// number of steps, so damage shows up as a Failure and never as a stray read or a hang.
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "storage/byte_source.h"
#include "storage/directory_tree.h"
#include "storage/storage_codes.h"

namespace cfb {

// Where one stream's bytes lie: its sectors in order, normal ones or 64-byte mini sectors.
struct StreamLayout {
    bool inMiniStream = false;
    uint64_t size = 0;
    std::vector<uint32_t> sectors;
};

class CompoundFile {
public:
    // Reads and checks the header, the allocation tables and the directory. Throws a Failure.
    explicit CompoundFile(std::unique_ptr<ByteSource> source);

    uint16_t majorVersion() const { return majorVersion_; }
    uint32_t sectorSize() const { return sectorSize_; }
    const DirectoryTree& directory() const { return *directory_; }

    // Follows the stream's chain as far as its size needs. Throws a Failure if the chain is
    // shorter, loops or leaves the file.
    StreamLayout layoutOf(uint32_t streamId);
    // Copies up to `count` bytes from `position`; returns how many there were.
    uint64_t read(const StreamLayout& layout, uint64_t position, void* out, uint64_t count);

private:
    void readHeader();
    void readFat();
    void readDirectory();
    // Follows `table` from `start` for `wanted` sectors, or to the end of the chain when
    // `wanted` is zero. Sectors from `limit` on don't exist.
    std::vector<uint32_t> chainOf(uint32_t start, const std::vector<uint32_t>& table, uint64_t limit,
                                  uint64_t wanted, const std::u16string& what) const;
    std::vector<uint8_t> readSectors(const std::vector<uint32_t>& sectors);
    const StreamLayout& miniStream();
    uint64_t miniSectorLimit() const;
    uint64_t sectorOffset(uint32_t sector) const { return (static_cast<uint64_t>(sector) + 1) * sectorSize_; }

    std::unique_ptr<ByteSource> source_;
    uint16_t majorVersion_ = 0;
    uint32_t sectorSize_ = 0;
    uint64_t sectorCount_ = 0;  // sectors that begin inside the file

    uint32_t fatSectorCount_ = 0;
    uint32_t firstDirectorySector_ = 0;
    uint32_t firstMiniFatSector_ = 0;
    uint32_t firstDifatSector_ = 0;
    std::vector<uint32_t> headerDifat_;

    std::vector<uint32_t> fat_;
    std::vector<uint32_t> miniFat_;
    std::unique_ptr<DirectoryTree> directory_;
    // Built on first need: a damaged mini stream spoils the small streams only.
    std::optional<StreamLayout> miniStream_;
    std::optional<Failure> miniStreamFailure_;
};

}  // namespace cfb
