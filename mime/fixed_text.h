#pragma once
// Text of a record field that has a fixed room: it holds at most N bytes and, like the character
// array it stands for, ends at its first NUL.
#include <cstddef>
#include <string>
#include <string_view>

namespace mime {

template <size_t N>
class FixedText {
public:
    FixedText& operator=(std::string_view text)
    {
        size_t end = text.find('\0');
        text_.assign(text.substr(0, end < N ? end : N));
        return *this;
    }

    operator std::string_view() const { return text_; }
    bool empty() const { return text_.empty(); }

private:
    std::string text_;
};

}  // namespace mime
