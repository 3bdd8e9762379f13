#pragma once
// The stream family that carries all binary reading: a memory block, a file, and the base.
#include <cstdint>
#include <string>

#include "foundation/error.h"

namespace ty {

// Seek origins as this system numbers them (not the C runtime's numbering).
enum SeekOrigin : int { SeekCurrent = 0, SeekBegin = 1, SeekEnd = 2 };

class IOS {
public:
    virtual ~IOS();
    virtual int64_t _read(void* buffer, int64_t count);
    virtual int64_t _write(const void* buffer, int64_t count);
    virtual void _commit();
    // Asks for the whole size, not what is left, and keeps what comes back.
    virtual int64_t readAll(std::string& out);
    virtual int64_t writeAll(const std::string& bytes);
    virtual int64_t _seek(int64_t offset, int origin);
    virtual int64_t _getPosition();
    virtual int64_t getSize();
    virtual int64_t setSize(int64_t newSize);
    virtual bool isEnd();

    ErrorKeeper& keeper() { return keeper_; }
    const ErrorKeeper& keeper() const { return keeper_; }

private:
    ErrorKeeper keeper_;
};

class Buffer : public IOS {
public:
    Buffer() = default;
    // Reads the caller's memory without copying unless `owns`; the caller keeps it alive.
    Buffer(const void* data, int64_t size, bool owns = false);
    ~Buffer() override;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    void attach(const void* data, int64_t size, bool owns);
    const uint8_t* data() const { return data_; }

    int64_t _read(void* buffer, int64_t count) override;
    int64_t _write(const void* buffer, int64_t count) override;
    // From the end: takes `offset` off the size itself, so the block gets shorter.
    int64_t _seek(int64_t offset, int origin) override;
    int64_t _getPosition() override { return position_; }
    int64_t getSize() override { return size_; }
    int64_t setSize(int64_t newSize) override;
    bool isEnd() override { return position_ >= size_; }

private:
    void releaseData();

    uint8_t ownsData_ = 0;
    uint8_t* data_ = nullptr;
    int64_t position_ = 0;
    int64_t size_ = 0;
};

// Access and creation as the Windows file API numbers them.
enum FileMode : uint32_t { FileRead = 0, FileWrite = 1, FileReadWrite = 2 };
enum FileDisposition : uint32_t {
    CreateAlways = 0,
    CreateNew = 1,
    OpenExisting = 2,
    OpenAlways = 3,
    OpenAlwaysAppend = 4,  // opens or creates, then stands at the end
    TruncateExisting = 5,
};

class File : public IOS {
public:
    File() = default;
    ~File() override;
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool open(const std::u16string& path, uint32_t mode, uint32_t disposition);
    void close();
    bool isOpen() const { return fd_ >= 0; }
    const std::u16string& path() const { return path_; }

    int64_t _read(void* buffer, int64_t count) override;
    int64_t _write(const void* buffer, int64_t count) override;
    void _commit() override;
    int64_t _seek(int64_t offset, int origin) override;
    int64_t _getPosition() override;

private:
    uint32_t mode_ = 0;
    uint32_t disposition_ = OpenExisting;
    std::u16string path_;
    int fd_ = -1;
};

}  // namespace ty
