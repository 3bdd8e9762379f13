#pragma once
// Typed reads on top of any stream. Numbers are copied as they stand (little-endian);
// each read returns what the stream's _read returned, for the caller to compare with the width.
#include <cstdint>
#include <string>

#include "foundation/stream.h"

namespace ty {

class Reader {
public:
    virtual ~Reader() = default;
    virtual int64_t readString(std::u16string& out) = 0;
    virtual int64_t readAll(std::string& out) = 0;
    virtual int64_t readDouble(double& out) = 0;
    virtual int64_t readFloat(float& out) = 0;
    virtual int64_t readInt64(int64_t& out) = 0;
    virtual int64_t readUInt64(uint64_t& out) = 0;
    virtual int64_t readInt32(int32_t& out) = 0;
    virtual int64_t readUInt32(uint32_t& out) = 0;
    virtual int64_t readLong(int32_t& out) = 0;    // the 32-bit long of the file formats
    virtual int64_t readULong(uint32_t& out) = 0;
    virtual int64_t readInt16(int16_t& out) = 0;
    virtual int64_t readUInt16(uint16_t& out) = 0;
    virtual int64_t readWChar(char16_t& out) = 0;
    virtual int64_t readInt8(int8_t& out) = 0;
    virtual int64_t readUInt8(uint8_t& out) = 0;
};

class BinaryReader : public Reader {
public:
    explicit BinaryReader(IOS& stream) : stream_(&stream) {}

    // Takes what is left of the stream as UTF-16 text.
    int64_t readString(std::u16string& out) override;
    int64_t readAll(std::string& out) override { return stream_->readAll(out); }
    int64_t readDouble(double& out) override { return stream_->_read(&out, 8); }
    int64_t readFloat(float& out) override { return stream_->_read(&out, 4); }
    int64_t readInt64(int64_t& out) override { return stream_->_read(&out, 8); }
    int64_t readUInt64(uint64_t& out) override { return stream_->_read(&out, 8); }
    int64_t readInt32(int32_t& out) override { return stream_->_read(&out, 4); }
    int64_t readUInt32(uint32_t& out) override { return stream_->_read(&out, 4); }
    int64_t readLong(int32_t& out) override { return stream_->_read(&out, 4); }
    int64_t readULong(uint32_t& out) override { return stream_->_read(&out, 4); }
    int64_t readInt16(int16_t& out) override { return stream_->_read(&out, 2); }
    int64_t readUInt16(uint16_t& out) override { return stream_->_read(&out, 2); }
    int64_t readWChar(char16_t& out) override { return stream_->_read(&out, 2); }
    int64_t readInt8(int8_t& out) override { return stream_->_read(&out, 1); }
    int64_t readUInt8(uint8_t& out) override { return stream_->_read(&out, 1); }

    IOS& stream() { return *stream_; }
    ErrorKeeper& keeper() { return keeper_; }

private:
    IOS* stream_;
    ErrorKeeper keeper_;
};

}  // namespace ty
