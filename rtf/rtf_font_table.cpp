#include "rtf/rtf_font_table.h"

#include <charconv>
#include <cstdint>

#include "regex/pattern.h"

namespace mcl {
namespace {

constexpr size_t kDefaultCharsetWindow = 100;

// Tested as substrings, in this order; the first hit names the charset. 130 and 136 both give
// CP950 and 134 gives CP936, as the stored bodies were always read.
constexpr std::string_view kCharsetWords[][2] = {
    {"fcharset0", "CP1252"},   {"fcharset128", "CP932"},  {"fcharset129", "CP949"},
    {"fcharset130", "CP950"},  {"fcharset134", "CP936"},  {"fcharset136", "CP950"},
    {"fcharset161", "CP1253"}, {"fcharset162", "CP1254"}, {"fcharset163", "CP1258"},
    {"fcharset177", "CP1255"}, {"fcharset178", "CP1256"}, {"fcharset186", "CP1257"},
    {"fcharset204", "CP1251"}, {"fcharset222", "CP874"},  {"fcharset238", "CP1250"},
};

std::string charsetForWord(std::string_view word)
{
    for (const auto& [text, charset] : kCharsetWords)
        if (word.find(text) != std::string_view::npos) return std::string(charset);
    return {};
}

template <class Map>
auto findFont(const Map& map, int64_t font)
{
    return font >= INT32_MIN && font <= INT32_MAX ? map.find(int32_t(font)) : map.end();
}

// A number too long for 32 bits is left out: no font word can name it anyway.
bool readFontNumber(std::string_view digits, int32_t& number)
{
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc() && end == digits.data() + digits.size();
}

}  // namespace

RtfFontTable::RtfFontTable(std::string_view document)
{
    readDefaultCharset(document);
    readFontTable(document);
}

void RtfFontTable::readDefaultCharset(std::string_view document)
{
    std::string_view head = document.substr(0, kDefaultCharsetWindow);
    rx::Pattern codePage(R"(\\ansicpg([\d]+))");
    rx::MatchResult match = codePage.match(head);
    defaultCharset_ = match ? "CP" + match.group(head, 1) : std::string("CP1252");
}

// The greedy capture runs to the last ";}}" of the whole document, so entries after the font
// table can be read too; the charset pattern wants exactly one word between the number and
// "\fcharset", so a font with a pitch word there falls back to the default charset.
void RtfFontTable::readFontTable(std::string_view document)
{
    rx::Pattern table(R"(\{\\fonttbl(.+;\})\})", rx::SingleLine);
    rx::MatchResult tableMatch = table.match(document);
    if (!tableMatch) return;
    std::string_view entries = tableMatch.view(document, 1);

    rx::Pattern charsetEntry(R"(\\f([\d]+)\\([\w]+)\\(fcharset[\d]+)?\s([\w\s])+;)", rx::SingleLine);
    for (ptrdiff_t start = 0;;) {
        rx::MatchResult match = charsetEntry.match(entries, rx::npos, start);
        if (!match) break;
        int32_t font = 0;
        if (readFontNumber(match.view(entries, 1), font)) fontCharsets_[font] = charsetForWord(match.view(entries, 3));
        start = match.end(4);
    }

    rx::Pattern nameEntry(R"(\\f([\d]+)([\\\w\d]+)\s([\w\s]+);)");
    for (ptrdiff_t start = 0;;) {
        rx::MatchResult match = nameEntry.match(entries, rx::npos, start);
        if (!match) break;
        int32_t font = 0;
        if (readFontNumber(match.view(entries, 1), font)) fontNames_[font] = match.group(entries, 3);
        start = match.end(3);
    }
}

const std::string& RtfFontTable::activeCharset() const
{
    return currentCharset_.empty() ? defaultCharset_ : currentCharset_;
}

void RtfFontTable::selectFont(int64_t font)
{
    auto entry = findFont(fontCharsets_, font);
    if (entry == fontCharsets_.end()) {
        currentCharset_.clear();
        selectedFont_ = kNoFont;
        return;
    }
    currentCharset_ = entry->second;
    selectedFont_ = font;
}

std::string RtfFontTable::fontName(int64_t font) const
{
    auto entry = findFont(fontNames_, font);
    return entry == fontNames_.end() ? std::string("Arial") : entry->second;
}

size_t RtfFontTable::parseFontWord(const char* text, size_t remaining, int64_t& font)
{
    font = kNoFont;
    if (remaining < 4) return 0;
    std::string_view word(text, 4);
    rx::Pattern fontWord(R"(\\f([\d]+))");
    rx::MatchResult match = fontWord.match(word);
    if (!match) return 0;
    std::string_view digits = match.view(word, 1);
    font = 0;
    for (char digit : digits) font = font * 10 + (digit - '0');
    return digits.size() + 2;
}

}  // namespace mcl
