#pragma once
// The search for boundary text in a message, over the whole of one parse.
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace mime {

class BoundaryFinder {
public:
    static constexpr size_t npos = std::string_view::npos;

    BoundaryFinder(const char* data, size_t size) : data_(data), size_(size) {}

    // The first position at or after `from` where `boundary` stands: its first byte exactly, the
    // rest without regard to case, and only where the position plus its length plus 1 lies
    // inside the data. Anywhere in a line, with or without "--" before it. npos if none.
    size_t find(std::string_view boundary, size_t from);

private:
    // What the last search for one text found. The passes of a parse only move forward, so a
    // later search from a position not beyond that answer has the same answer, and a text that
    // wasn't found isn't looked for again: the message is scanned once per boundary text.
    struct Memo {
        std::string boundary;
        size_t from;
        size_t found;
    };

    size_t scan(std::string_view boundary, size_t from) const;

    const char* data_;
    size_t size_;
    std::vector<Memo> memos_;
};

}  // namespace mime
