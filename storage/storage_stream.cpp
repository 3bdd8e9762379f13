#include "storage/storage_stream.h"

namespace cfb {

namespace {

constexpr uint32_t kErrorKind = 3;  // "E"

}  // namespace

void Stream::attach(std::shared_ptr<CompoundFile> file, uint32_t entryId, StreamLayout layout)
{
    keeper().clearError();
    file_ = std::move(file);
    entryId_ = entryId;
    layout_ = std::move(layout);
    position_ = 0;
}

uint32_t Stream::fail(uint32_t code, std::u16string text, const char16_t* source)
{
    keeper().setError(std::move(text), source, kErrorKind, code);
    return code;
}

uint32_t Stream::read(void* buffer, uint64_t count, uint64_t& done)
{
    keeper().clearError();
    done = 0;
    if (!file_) return fail(STG_E_INVALIDHANDLE, u"The stream is not open", u"cfb::Stream::read");
    try {
        done = file_->read(layout_, position_, buffer, count);
    } catch (const Failure& failure) {
        return fail(failure.code, failure.text, u"cfb::Stream::read");
    }
    position_ += done;
    return S_OK_CODE;
}

uint32_t Stream::seek(int64_t offset, int origin, uint64_t& newPosition)
{
    keeper().clearError();
    newPosition = position_;
    if (!file_) return fail(STG_E_INVALIDHANDLE, u"The stream is not open", u"cfb::Stream::seek");
    int64_t base;
    switch (origin) {
    case ty::SeekBegin: base = 0; break;
    case ty::SeekCurrent: base = static_cast<int64_t>(position_); break;
    case ty::SeekEnd: base = static_cast<int64_t>(layout_.size); break;
    default: return fail(STG_E_INVALIDFUNCTION, u"Unknown seek origin", u"cfb::Stream::seek");
    }
    int64_t target;
    if (__builtin_add_overflow(base, offset, &target) || target < 0)
        return fail(STG_E_INVALIDFUNCTION, u"A seek before the start of the stream", u"cfb::Stream::seek");
    position_ = newPosition = static_cast<uint64_t>(target);
    return S_OK_CODE;
}

uint32_t Stream::stat(ElementInfo& out)
{
    keeper().clearError();
    if (!file_) return fail(STG_E_INVALIDHANDLE, u"The stream is not open", u"cfb::Stream::stat");
    const DirectoryEntry& entry = file_->directory().entry(entryId_);
    out = ElementInfo{entry.name, ElementStream, layout_.size, {}};
    return S_OK_CODE;
}

int64_t Stream::_read(void* buffer, int64_t count)
{
    uint64_t done = 0;
    if (failed(read(buffer, count > 0 ? static_cast<uint64_t>(count) : 0, done))) return -1;
    return static_cast<int64_t>(done);
}

int64_t Stream::_seek(int64_t offset, int origin)
{
    uint64_t position = 0;
    if (failed(seek(offset, origin, position))) return -1;
    return static_cast<int64_t>(position);
}

int64_t Stream::_getPosition()
{
    return file_ ? static_cast<int64_t>(position_) : -1;
}

int64_t Stream::getSize()
{
    return file_ ? static_cast<int64_t>(layout_.size) : -1;
}

}  // namespace cfb
