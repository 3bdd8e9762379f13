#pragma once
// The HTML that an HTML-wrapping RTF body carries, taken out by one forward scan over the RTF
// text. It is not an RTF parser: words are recognised by prefix in a fixed order, and what the
// scan does not know comes out as text.
#include <string>
#include <string_view>

namespace mcl {

// Appends the HTML to `out`. Everything before the first "{\*\htmltag" is dropped, so a
// document without one adds nothing. Never fails: malformed text gives odd output.
void rtfToHtml(std::string_view rtf, std::u16string& out);

}  // namespace mcl
