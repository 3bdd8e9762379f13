#pragma once
// The text of an HTML document's body as a browser shows it (its innerText): what a plain-text
// view of an HTML-only message needs. Parsing is libxml2's forgiving HTML parser.
#include <string>
#include <string_view>

namespace platform {

// Runs of white space fold to one blank outside <pre>; block elements and <br> break lines,
// paragraphs and headings leave a blank line, table cells are separated by tabs; script, style
// and the document head give nothing.
std::u16string htmlToText(std::u16string_view html);

}  // namespace platform
