#pragma once
// UTF-8 <-> UTF-16 for the Linux side of the system: file names, traces and
// system messages are UTF-8 here, where the Windows design had wide text.
#include <string>
#include <string_view>

namespace ty {

// Invalid sequences become U+FFFD.
std::u16string utf8ToWide(std::string_view utf8);
// Unpaired surrogates become U+FFFD.
std::string wideToUtf8(std::u16string_view wide);

}  // namespace ty
