#pragma once
// A stream of a compound file, read in place: its sectors are fetched as they are read.
#include <cstdint>
#include <memory>

#include "foundation/stream.h"
#include "storage/compound_file.h"
#include "storage/element_info.h"

namespace cfb {

class Stream : public ty::IOS {
public:
    Stream() = default;
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    bool isOpen() const { return static_cast<bool>(file_); }
    uint64_t size() const { return layout_.size; }

    // The operations of a structured storage stream, with its result codes. `read` gives what
    // is there: fewer bytes than asked at the end, none past it.
    uint32_t read(void* buffer, uint64_t count, uint64_t& done);
    // Origins are ty::SeekOrigin: 0 current, 1 begin, 2 end. A position before the start is
    // refused with STG_E_INVALIDFUNCTION and leaves the position as it was; one past the end
    // is allowed.
    uint32_t seek(int64_t offset, int origin, uint64_t& newPosition);
    uint32_t stat(ElementInfo& out);

    // The same stream for the stream family: failures give -1 and an error in keeper().
    int64_t _read(void* buffer, int64_t count) override;
    int64_t _seek(int64_t offset, int origin) override;
    int64_t _getPosition() override;
    int64_t getSize() override;
    bool isEnd() override { return position_ >= layout_.size; }

private:
    friend class Storage;
    void attach(std::shared_ptr<CompoundFile> file, uint32_t entryId, StreamLayout layout);
    uint32_t fail(uint32_t code, std::u16string text, const char16_t* source);

    std::shared_ptr<CompoundFile> file_;
    uint32_t entryId_ = 0;
    StreamLayout layout_;
    uint64_t position_ = 0;
};

}  // namespace cfb
