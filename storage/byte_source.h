#pragma once
// Where the bytes of a compound file come from: a file read on demand, or a block in memory.
#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/stream.h"

namespace cfb {

class ByteSource {
public:
    virtual ~ByteSource() = default;
    virtual uint64_t size() const = 0;
    // Fills `count` bytes from `offset`; what lies past the end reads as zero, so a short last
    // sector is padded. Throws a Failure with STG_E_READFAULT when the medium refuses.
    virtual void read(uint64_t offset, void* out, size_t count) = 0;
};

class MemorySource : public ByteSource {
public:
    explicit MemorySource(std::string bytes) : bytes_(std::move(bytes)) {}
    uint64_t size() const override { return bytes_.size(); }
    void read(uint64_t offset, void* out, size_t count) override;

private:
    std::string bytes_;
};

// Reads through a handful of cached blocks, so that many small reads (the mini stream's
// 64-byte sectors, fixed-size property values) don't each cost a system call.
class FileSource : public ByteSource {
public:
    // Takes an open file.
    explicit FileSource(std::unique_ptr<ty::File> file, uint64_t size) : file_(std::move(file)), size_(size) {}
    uint64_t size() const override { return size_; }
    void read(uint64_t offset, void* out, size_t count) override;

private:
    static constexpr size_t kBlockSize = 4096;
    static constexpr size_t kBlockCount = 8;
    struct Block {
        uint64_t offset = UINT64_MAX;
        uint64_t lastUse = 0;
        std::array<uint8_t, kBlockSize> bytes{};
    };

    void readDirect(uint64_t offset, uint8_t* out, size_t count);
    const Block& block(uint64_t blockOffset);

    std::unique_ptr<ty::File> file_;
    uint64_t size_;
    std::unique_ptr<std::array<Block, kBlockCount>> blocks_ = std::make_unique<std::array<Block, kBlockCount>>();
    uint64_t useCounter_ = 0;
};

}  // namespace cfb
