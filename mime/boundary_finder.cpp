#include "mime/boundary_finder.h"

#include <algorithm>
#include <cstring>

#include "mime/ascii.h"

namespace mime {

size_t BoundaryFinder::find(std::string_view boundary, size_t from)
{
    auto memo = std::find_if(memos_.begin(), memos_.end(), [&](const Memo& m) { return m.boundary == boundary; });
    if (memo != memos_.end() && memo->from <= from && (memo->found == npos || from <= memo->found))
        return memo->found;
    size_t found = scan(boundary, from);
    if (memo == memos_.end())
        memos_.push_back({std::string(boundary), from, found});
    else
        memo->from = from, memo->found = found;
    return found;
}

// Knuth-Morris-Pratt over case-folded bytes, so that no text makes the search slower than
// linear, with a jump by memchr to the next exact first byte whenever no partial match is open:
// every match starts at one, and the jump is what makes the usual search fast.
size_t BoundaryFinder::scan(std::string_view boundary, size_t from) const
{
    const size_t m = boundary.size();
    if (m == 0 || size_ < m + 2) return npos;
    const size_t lastStart = size_ - m - 2;
    const size_t end = lastStart + m;  // bytes read stay below it

    std::string pattern(m, '\0');
    std::transform(boundary.begin(), boundary.end(), pattern.begin(), asciiLower);
    std::vector<size_t> fallback(m, 0);  // longest proper border of pattern[0, q]
    for (size_t q = 1, k = 0; q < m; ++q) {
        while (k > 0 && pattern[q] != pattern[k]) k = fallback[k - 1];
        if (pattern[q] == pattern[k]) ++k;
        fallback[q] = k;
    }

    size_t s = from;
    size_t q = 0;
    for (;;) {
        if (q == 0) {
            if (s > lastStart) return npos;
            const void* hit = std::memchr(data_ + s, boundary[0], lastStart + 1 - s);
            if (!hit) return npos;
            s = size_t(static_cast<const char*>(hit) - data_) + 1;
            q = 1;
        } else {
            if (s >= end) return npos;
            char c = asciiLower(data_[s++]);
            while (q > 0 && pattern[q] != c) q = fallback[q - 1];
            if (pattern[q] == c) ++q;
        }
        if (q == m) {
            size_t start = s - m;
            if (start > lastStart) return npos;
            if (data_[start] == boundary[0]) return start;
            q = fallback[q - 1];
        }
    }
}

}  // namespace mime
