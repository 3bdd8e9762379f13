#pragma once
// Which charset the bytes of an RTF document stand in, font by font, read from the document's
// own text with patterns rather than by parsing it.
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace mcl {

constexpr int64_t kNoFont = -1;

class RtfFontTable {
public:
    // Reads the default charset from the first 100 bytes and the font table from the whole text.
    explicit RtfFontTable(std::string_view document);

    // The selected font's charset, or the document's default when that is empty.
    const std::string& activeCharset() const;
    // An unknown number (kNoFont among them) selects nothing and empties the current charset.
    void selectFont(int64_t font);
    // "Arial" for a number the table does not name.
    std::string fontName(int64_t font) const;

    const std::string& currentCharset() const { return currentCharset_; }
    const std::string& defaultCharset() const { return defaultCharset_; }
    int64_t selectedFont() const { return selectedFont_; }

    // Reads the number of a font word at `text` ("\f" and digits), looking at exactly the next
    // four bytes, so that a number of three or more digits is read as its first two. Returns the
    // bytes the word takes, 0 (font left at kNoFont) when there is no number.
    static size_t parseFontWord(const char* text, size_t remaining, int64_t& font);

private:
    void readDefaultCharset(std::string_view document);
    void readFontTable(std::string_view document);

    std::string currentCharset_;
    std::string defaultCharset_;
    int64_t selectedFont_ = kNoFont;
    std::map<int32_t, std::string> fontCharsets_;
    std::map<int32_t, std::string> fontNames_;
};

}  // namespace mcl
