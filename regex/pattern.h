#pragma once
// Patterns over narrow and wide text, on PCRE2, with Perl's syntax and backtracking.
//
// Narrow text is bytes: no UTF mode, since charsets are decoded elsewhere and mail bytes are often not
// UTF-8. Wide text is UTF-16 in UTF mode: a surrogate pair is one character and case folding is
// Unicode; unpaired surrogates are harmless (see matchable_text.h). \w \d \s \b stay ASCII in both
// widths (no UCP), so a pattern behaves the same on narrow and wide text. Only LF ends a line.
//
// Compiled code comes from the cache (pattern_cache.h) and is shared; match data belongs to the calling
// thread and is reused, so one `static const` pattern may serve every thread. The one state an object
// carries is the Global position: don't share a Global pattern between threads.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "regex/match_result.h"

namespace rx {

enum Flags : unsigned {
    SingleLine = 1,   // dot matches line ends too
    MultiLine = 2,    // ^ and $ at each line
    Global = 4,       // match() without a start goes on from the end of the last match
    IgnoreCase = 8,
    RightToLeft = 16  // refused, for PCRE2 has no such mode: the object is invalid, with an error text
};

inline constexpr std::size_t npos = std::size_t(-1);

struct Compiled;

template <class CharT>
class BasicPattern {
public:
    using View = std::basic_string_view<CharT>;
    using String = std::basic_string<CharT>;

    BasicPattern(View pattern, unsigned flags = 0);

    bool valid() const;
    // For a pattern that did not compile: PCRE2's message and the offset in the pattern (else "" and -1).
    const std::string& error() const;
    std::ptrdiff_t errorOffset() const;
    unsigned flags() const { return flags_; }
    int captureCount() const;

    // A search through text[0, length). A negative start means the beginning, or with Global the end of
    // the last match (back to 0 after a failed search). With Global, an empty match is not found twice
    // at one place: the next search wants a non-empty match there, or any match further on.
    MatchResult match(View text, std::size_t length = npos, std::ptrdiff_t start = -1) const;
    // The whole text must match. Leaves the Global position alone.
    MatchResult matchExact(View text) const;
    // Where the next Global search starts.
    std::size_t position() const { return next_; }
    void reset() const { next_ = 0, lastEmpty_ = false; }

    // New text with the matches from `start` (negative: 0) on replaced, at most `count` (negative: all).
    // The template's tokens are what `\$(?:[$&`'+_\d]|\{.*?\})` finds: $$ $& $` $' $_ $+, `$` and ONE
    // digit (so "$12" is group 1, then "2"; ${12} is group 12), ${name} and ${number}. A group number
    // beyond the pattern's groups, or an unknown name, leaves the token as literal text, as .NET does.
    // An invalid pattern gives the text unchanged.
    String replace(View text, View replacement, std::ptrdiff_t start = -1, std::ptrdiff_t count = -1) const;

private:
    // > 0 on a match, as pcre2_match counts; the offsets are then in this thread's match data.
    int run(const CharT* subject, std::size_t length, std::size_t start, uint32_t options) const;
    MatchResult collect(int rc) const;
    void expand(String& out, View text, View replacement, int rc) const;
    int groupByName(View name) const;

    std::shared_ptr<const Compiled> compiled_;
    unsigned flags_ = 0;
    mutable std::size_t next_ = 0;
    mutable bool lastEmpty_ = false;
};

using Pattern = BasicPattern<char>;
using WPattern = BasicPattern<char16_t>;

extern template class BasicPattern<char>;
extern template class BasicPattern<char16_t>;

}  // namespace rx
