#include "regex/matchable_text.h"

#include <algorithm>
#include <string>

namespace rx {

namespace {

bool isHigh(char16_t c) { return (c & 0xFC00) == 0xD800; }
bool isLow(char16_t c) { return (c & 0xFC00) == 0xDC00; }

// Index of the first unpaired surrogate in s[from, n), or n. Blocks without any surrogate are passed
// by a test the compiler can vectorise.
size_t firstUnpaired(const char16_t* s, size_t from, size_t n)
{
    for (size_t i = from; i < n;) {
        size_t block = std::min(n, i + 64);
        bool any = false;
        for (size_t k = i; k < block; ++k)
            any |= (s[k] & 0xF800) == 0xD800;
        if (!any) {
            i = block;
            continue;
        }
        while (i < block) {
            if ((s[i] & 0xF800) != 0xD800)
                ++i;
            else if (isHigh(s[i]) && i + 1 < n && isLow(s[i + 1]))
                i += 2;
            else
                return i;
        }
    }
    return n;
}

// The last text checked in this thread, by address and length, and its cleaned copy if it needed one.
struct LastChecked {
    const char16_t* text = nullptr;
    size_t length = 0;
    bool cleaned = false;
    std::u16string copy;
};

}  // namespace

// A search that starts inside the text last checked trusts that check, so walking a long text match by
// match costs one check rather than one for each match. Should the text have changed in place since,
// the matcher's invalid-UTF mode still keeps every read in bounds; only the answers may be stale.
const char16_t* matchableText(std::u16string_view text, size_t start)
{
    thread_local LastChecked last;
    const char16_t* s = text.data() ? text.data() : u"";
    size_t n = text.size();
    bool split = start > 0 && start < n && isHigh(s[start - 1]) && isLow(s[start]);
    if (start == 0 || split || s != last.text || n != last.length) {
        size_t lone = firstUnpaired(s, 0, n);
        last.text = s;
        last.length = n;
        last.cleaned = lone < n || split;
        if (last.cleaned) {
            last.copy.assign(s, n);
            for (; lone < n; lone = firstUnpaired(s, lone + 1, n))
                last.copy[lone] = 0xFFFD;
            if (split) {
                last.copy[start - 1] = last.copy[start] = 0xFFFD;
                last.text = nullptr;  // this copy is for this start only
            }
        }
    }
    return last.cleaned ? last.copy.data() : s;
}

}  // namespace rx
