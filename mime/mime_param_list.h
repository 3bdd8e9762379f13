#pragma once
// A reader of `name=value` lists with sections, of the kind that parameters of header fields are
// written in: "; charset=utf-8; name=\"a b\"". Entries are separated by the delimiter; "[name]"
// opens a section; ";" at an entry's start makes it a comment; a leading number and ":" give an
// entry its type; "#" and digits give a bare number; quotes are dropped and %XX escapes outside
// quotes are undone. Only what a header field may hold is ever read, and a list lives no longer
// than the reading of one field.
//
// Entries keep positions into the list's copy of the text and are unquoted when asked for, so a
// hostile field of many entries costs time and memory in proportion to its length.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class CMimeParamList {
public:
    static constexpr size_t kMaxName = 1023;        // of an entry's key
    static constexpr size_t kMaxSectionName = 259;  // read of a "[name]"

    explicit CMimeParamList(char delimiter) : delimiter_(delimiter) {}

    // Clears the list and reads the text; entries that can't be read count in errorCount().
    // 0 for a null text or a zero length, otherwise 1.
    int parse(const char* text, size_t length);
    void clear();

    // The value of `key` in `section` ("" is the part before any "[name]"), looked up without
    // regard to case; a later entry of a key replaces an earlier one. Succeeds for an entry of
    // type 0 or 3 that has a value. A value shorter than `capacity` is given whole; a longer one
    // is cut to exactly `capacity` bytes (where the C form leaves it without its NUL).
    bool getValue(std::string_view section, std::string_view key, std::string& output, size_t capacity) const;

    uint32_t errorCount() const { return errorCount_; }

private:
    enum class ValueKind : uint8_t { None, Number, Text };
    struct Span {
        size_t start = 0;
        size_t size = 0;
    };
    struct Entry {
        ptrdiff_t section = -1;  // index into sections_, -1 before any "[name]"
        Span key;
        uint32_t type = 0;
        ValueKind kind = ValueKind::None;
        Span value;  // for a number, its digits start here
    };
    // Sorted positions of the bytes that end one kind of token, so that finding the end of a token
    // does not scan the text again for every entry that starts before it.
    class Stops {
    public:
        void add(size_t position) { positions_.push_back(position); }
        void clear() { positions_.clear(); }
        // The first stop at or after `from`, or `none`.
        size_t next(size_t from, size_t none) const;

    private:
        std::vector<size_t> positions_;
    };

    void indexStops();
    bool parseEntry(size_t from);
    bool sectionIs(const Entry& entry, std::string_view section) const;
    bool keyIs(const Entry& entry, std::string_view key) const;
    std::string unquote(Span span) const;
    uint32_t numberAt(size_t position) const;

    char delimiter_;
    std::string text_;
    std::vector<Span> sections_;
    std::vector<Entry> entries_;
    ptrdiff_t currentSection_ = -1;
    uint32_t errorCount_ = 0;
    Stops keyStops_;      // "=", control bytes, 127
    Stops colons_;        // ":" that may end a type number
    Stops valueStops_;    // the delimiter, control bytes, 127
    Stops sectionStops_;  // "]", control bytes
};
