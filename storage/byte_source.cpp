#include "storage/byte_source.h"

#include <algorithm>
#include <cstring>

#include "storage/storage_codes.h"

namespace cfb {

void MemorySource::read(uint64_t offset, void* out, size_t count)
{
    auto* target = static_cast<uint8_t*>(out);
    size_t available = offset < bytes_.size() ? std::min<uint64_t>(count, bytes_.size() - offset) : 0;
    if (available > 0) std::memcpy(target, bytes_.data() + offset, available);
    std::memset(target + available, 0, count - available);
}

void FileSource::readDirect(uint64_t offset, uint8_t* out, size_t count)
{
    size_t available = offset < size_ ? std::min<uint64_t>(count, size_ - offset) : 0;
    if (available > 0) {
        if (file_->_seek(static_cast<int64_t>(offset), ty::SeekBegin) != static_cast<int64_t>(offset) ||
            file_->_read(out, static_cast<int64_t>(available)) != static_cast<int64_t>(available)) {
            std::u16string reason = file_->keeper().hasError() ? file_->keeper().error()->text() : u"the file is shorter than it was";
            throw Failure{STG_E_READFAULT, u"The file can't be read: " + reason};
        }
    }
    std::memset(out + available, 0, count - available);
}

const FileSource::Block& FileSource::block(uint64_t blockOffset)
{
    Block* oldest = &(*blocks_)[0];
    for (Block& candidate : *blocks_) {
        if (candidate.offset == blockOffset) {
            candidate.lastUse = ++useCounter_;
            return candidate;
        }
        if (candidate.lastUse < oldest->lastUse) oldest = &candidate;
    }
    oldest->offset = UINT64_MAX;  // stays invalid if the read throws
    readDirect(blockOffset, oldest->bytes.data(), kBlockSize);
    oldest->offset = blockOffset;
    oldest->lastUse = ++useCounter_;
    return *oldest;
}

void FileSource::read(uint64_t offset, void* out, size_t count)
{
    auto* target = static_cast<uint8_t*>(out);
    // Whole sectors and more go straight to the file; the cache is for small pieces.
    if (count >= kBlockSize) {
        readDirect(offset, target, count);
        return;
    }
    while (count > 0) {
        uint64_t blockOffset = offset - offset % kBlockSize;
        size_t within = static_cast<size_t>(offset - blockOffset);
        size_t piece = std::min(count, kBlockSize - within);
        std::memcpy(target, block(blockOffset).bytes.data() + within, piece);
        target += piece;
        offset += piece;
        count -= piece;
    }
}

}  // namespace cfb
