#include "foundation/stream.h"

#include <algorithm>
#include <cstring>

namespace ty {

IOS::~IOS()
{
    keeper_.clearError();
}

int64_t IOS::_read(void*, int64_t) { return -1; }
int64_t IOS::_write(const void*, int64_t) { return -1; }
void IOS::_commit() {}
int64_t IOS::_seek(int64_t, int) { return -1; }
int64_t IOS::_getPosition() { return _seek(0, SeekCurrent); }

int64_t IOS::readAll(std::string& out)
{
    int64_t size = getSize();
    out.resize(static_cast<size_t>(std::max<int64_t>(size, 0)));
    int64_t result = size >= 1 ? _read(out.data(), size) : 0;
    if (result < 0)
        out.clear();
    else
        out.resize(static_cast<size_t>(result));
    return result;
}

int64_t IOS::writeAll(const std::string& bytes)
{
    return _write(bytes.data(), static_cast<int64_t>(bytes.size()));
}

int64_t IOS::getSize()
{
    int64_t position = _getPosition();
    if (position < 0) return -1;
    int64_t end = _seek(0, SeekEnd);
    _seek(position, SeekBegin);
    return end;
}

int64_t IOS::setSize(int64_t)
{
    return getSize();
}

bool IOS::isEnd()
{
    return _getPosition() == getSize();
}

Buffer::Buffer(const void* data, int64_t size, bool owns)
{
    attach(data, size, owns);
}

Buffer::~Buffer()
{
    releaseData();
}

void Buffer::releaseData()
{
    if (ownsData_) delete[] data_;
    data_ = nullptr;
}

void Buffer::attach(const void* data, int64_t size, bool owns)
{
    releaseData();
    // A borrowed block is only written through when the caller asked for writes.
    data_ = static_cast<uint8_t*>(const_cast<void*>(data));
    size_ = data ? std::max<int64_t>(size, 0) : 0;
    ownsData_ = owns ? 1 : 0;
    position_ = 0;
}

int64_t Buffer::_read(void* buffer, int64_t count)
{
    count = std::clamp<int64_t>(count, 0, size_ - position_);
    if (count > 0) std::memcpy(buffer, data_ + position_, static_cast<size_t>(count));
    position_ += count;
    return count;
}

int64_t Buffer::_write(const void* buffer, int64_t count)
{
    if (count < 0) count = 0;
    if (ownsData_ && count > size_ - position_)
        setSize(position_ + count);
    else
        count = std::min(count, size_ - position_);
    if (count > 0) std::memcpy(data_ + position_, buffer, static_cast<size_t>(count));
    position_ += count;
    return count;
}

int64_t Buffer::setSize(int64_t newSize)
{
    if (newSize < 0) newSize = 0;
    if (newSize != size_) {
        auto* block = new uint8_t[static_cast<size_t>(newSize) + 1]();
        if (data_) std::memcpy(block, data_, static_cast<size_t>(std::min(size_, newSize)));
        int64_t keptPosition = std::min(position_, newSize);
        attach(block, newSize, true);
        position_ = keptPosition;
    }
    return newSize;
}

int64_t Buffer::_seek(int64_t offset, int origin)
{
    switch (origin) {
    case SeekCurrent:
        if (__builtin_add_overflow(position_, offset, &position_)) position_ = offset < 0 ? 0 : size_;
        break;
    case SeekBegin: position_ = offset; break;
    case SeekEnd:
        size_ = std::clamp<int64_t>(size_ - offset, 0, size_);
        position_ = size_;
        break;
    default: break;
    }
    position_ = std::clamp<int64_t>(position_, 0, size_);
    return position_;
}

}  // namespace ty
