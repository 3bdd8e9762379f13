#include <algorithm>
#include <cstring>
#include <string_view>

#include "mime/base64.h"
#include "mime/mime.h"

namespace {

// Counts every byte it is given and copies what fits into the buffer, if there is one.
class Output {
public:
    Output(char* buffer, size_t capacity) : buffer_(buffer), capacity_(buffer ? capacity : 0) {}

    bool measuring() const { return buffer_ == nullptr; }
    size_t count() const { return count_; }
    size_t room() const { return count_ < capacity_ ? capacity_ - count_ : 0; }
    char* cursor() const { return buffer_ + count_; }

    void put(std::string_view bytes)
    {
        if (room() > 0) std::memcpy(cursor(), bytes.data(), std::min(bytes.size(), room()));
        count_ += bytes.size();
    }
    void skip(size_t size) { count_ += size; }

private:
    char* buffer_;
    size_t capacity_;
    size_t count_ = 0;
};

void putBody(Output& out, const CMimePart& part)
{
    const bool decoded = part.flags & CMimePart::kDecoded;
    if (decoded && (part.encoding & CMimePart::kBase64)) {
        if (out.measuring() || out.room() == 0)
            out.skip(CBase64::encodedLength(part.body.size()) + 4);
        else
            out.skip(CBase64::encode(out.cursor(), out.room(), part.body.data(), part.body.size()));
    } else if (decoded && (part.encoding & CMimePart::kQuotedPrintable)) {
        // Not encoded again: the body is lost from the copy.
    } else {
        out.put(part.body);
    }
}

}  // namespace

size_t CMime::serialize(char* buffer, size_t capacity) const
{
    if (!first_ || !root_) return 0;
    Output out(buffer, capacity);
    for (const CMimePart* part = first_; part; part = part->next) {
        for (const auto& [name, value] : part->headers) {
            out.put(name);
            out.put(": ");
            out.put(value);
            out.put("\r\n");
        }
        out.put("\r\n");
        if (!part->body.empty()) putBody(out, *part);
        if (part->next) {
            out.put("\r\n\r\n--");
            out.put(root_->boundary);
            out.put("\r\n");
        }
    }
    // The closing NUL is written when there is room, and counted only by the measuring pass.
    if (out.measuring())
        out.skip(1);
    else if (out.room() > 0)
        *out.cursor() = '\0';
    return out.count();
}
