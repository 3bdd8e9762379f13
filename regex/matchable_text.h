#pragma once
// Wide text as the matcher sees it. Wide patterns run in UTF mode; each unpaired surrogate (mail is
// hostile) is shown to the matcher as U+FFFD, one unit for one, so it matches `.` and never stops a
// match, and every offset still refers to the caller's text.
#include <cstddef>
#include <string_view>

namespace rx {

// The text itself, or a cleaned copy (valid until the next call in this thread) when it holds an
// unpaired surrogate or `start` cuts a pair in two. Never null.
const char16_t* matchableText(std::u16string_view text, size_t start);

// Narrow text is bytes: nothing to clean.
inline const char* matchableText(std::string_view text, size_t)
{
    return text.data() ? text.data() : "";
}

}  // namespace rx
