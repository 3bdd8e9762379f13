#include "rtf/rtf_to_html.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstdint>
#include <cstring>

#include "foundation/code_page.h"
#include "rtf/rtf_font_table.h"
#include "rtf/rtf_group_state.h"

namespace mcl {
namespace {

// ASCII only: bytes of other charsets are never part of a control word.
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// No validation: a byte that is no hexadecimal digit keeps its own value.
unsigned hexValue(unsigned char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'Z') return c - 55;
    if (c >= 'a' && c <= 'z') return c - 87;
    return c;
}

// Decoding one byte at a time through the code page layer is slow and always gives the same
// answer, so the answers for the charset in use are kept.
class SingleByteDecoder {
public:
    const std::u16string& decode(const std::string& charset, unsigned char byte)
    {
        if (charset != charset_) {
            charset_ = charset;
            known_.reset();
        }
        if (!known_[byte]) {
            char single = char(byte);
            ty::convertToWide(decoded_[byte], &single, 1, charset_.c_str(), true);
            known_[byte] = true;
        }
        return decoded_[byte];
    }

private:
    std::string charset_;
    std::bitset<256> known_;
    std::array<std::u16string, 256> decoded_;
};

class HtmlScan {
public:
    HtmlScan(std::string_view rtf, std::u16string& out)
        : text_(rtf), cursor_(rtf.data()), end_(rtf.data() + rtf.size()), out_(out), fonts_(rtf), state_(fonts_)
    {
    }

    void run()
    {
        prescan();
        while (cursor_ < end_) step();
        out_ += pending_;
    }

private:
    using Action = void (HtmlScan::*)();
    struct Row {
        std::string_view text;
        Action action;
    };
    // The words in the order they are tried; the first whose text begins at the cursor wins, so
    // "\par" takes "\pararsid" and "\b" every word beginning so.
    static const Row kRows[];

    bool at(std::string_view word) const
    {
        return size_t(end_ - cursor_) >= word.size() && std::memcmp(cursor_, word.data(), word.size()) == 0;
    }
    void advance(size_t count) { cursor_ += std::min(count, size_t(end_ - cursor_)); }
    void skipDigits() { while (cursor_ < end_ && isDigit(*cursor_)) ++cursor_; }
    void skipBlank() { if (cursor_ < end_ && *cursor_ == ' ') ++cursor_; }
    void skipWordCharacters() { while (cursor_ < end_ && (isLetter(*cursor_) || isDigit(*cursor_))) ++cursor_; }
    // Decimal digits at the cursor, kept to 32 bits as the group record holds them.
    bool readNumber(uint32_t& value)
    {
        const char* start = cursor_;
        value = 0;
        for (; cursor_ < end_ && isDigit(*cursor_); ++cursor_) value = value * 10 + uint32_t(*cursor_ - '0');
        return cursor_ != start;
    }

    void decodeRun(const char* bytes, size_t count)
    {
        std::u16string text;
        ty::convertToWide(text, bytes, count, fonts_.activeCharset().c_str(), true);
        pending_ += text;
    }
    void decodeByte(char byte) { pending_ += singleBytes_.decode(fonts_.activeCharset(), uint8_t(byte)); }
    void flushPending()
    {
        out_ += pending_;
        pending_.clear();
    }
    void openGroup() { state_.pushGroup(); }
    void closeGroup()
    {
        if (state_.popGroup()) state_.takeTagBuffer(pending_);
    }

    // Everything before the first tag is the RTF around the HTML; only its groups are followed.
    void prescan()
    {
        size_t tag = text_.find("{\\*\\htmltag");
        const char* stop = tag == std::string_view::npos ? end_ : text_.data() + tag;
        for (; cursor_ < stop; ++cursor_) {
            if (*cursor_ == '{') state_.pushGroup();
            else if (*cursor_ == '}') state_.popGroup();
        }
    }

    void step();

    void htmlTag()
    {
        advance(10);
        skipDigits();
        skipBlank();
    }
    // The closing brace is stepped over without a pop, so the group's record stays.
    void skipMhtmlTag()
    {
        size_t depth = 1;
        for (; cursor_ < end_; ++cursor_) {
            if (*cursor_ == '{') ++depth;
            else if (*cursor_ == '}' && --depth == 0) break;
        }
        if (cursor_ < end_) ++cursor_;
    }
    void paragraphDefaults()
    {
        advance(5);
        skipBlank();
    }
    void paragraph()
    {
        pending_ += u"\r\n";
        advance(4);
        skipBlank();
    }
    void lineBreak()
    {
        pending_ += u"\r\n";
        advance(5);
        skipBlank();
    }
    void tab()
    {
        pending_ += u"    ";
        advance(4);
        skipBlank();
    }
    void leftIndent()
    {
        advance(3);
        skipDigits();
        skipBlank();
    }
    void firstIndent()
    {
        advance(4);
        skipDigits();
        skipBlank();
    }
    // A run of escapes is decoded in one piece, so that a double-byte character stays whole.
    void hexRun()
    {
        std::string bytes;
        while (end_ - cursor_ >= 4 && cursor_[0] == '\\' && cursor_[1] == '\'') {
            bytes += char(hexValue(uint8_t(cursor_[2])) << 4 | hexValue(uint8_t(cursor_[3])));
            cursor_ += 4;
        }
        if (bytes.empty()) {  // an escape cut off by the end of the text holds no whole byte
            cursor_ = end_;
            return;
        }
        decodeRun(bytes.data(), bytes.size());
    }
    // Seven bytes for all three words, one more than "\rtlch" and "\ltrch" are long.
    void dropToGroupEnd()
    {
        advance(7);
        while (cursor_ < end_ && *cursor_ != '}') ++cursor_;
    }
    // RTF that only stands in for HTML: groups and fonts are followed, nothing is emitted.
    void suppressedRun()
    {
        advance(8);
        while (end_ - cursor_ > 9 && !at("\\htmlrtf0")) {
            if (*cursor_ == '{') {
                openGroup();
                ++cursor_;
            } else if (*cursor_ == '}') {
                closeGroup();
                ++cursor_;
            } else if (at("\\f")) {
                fontWord();
            } else {
                ++cursor_;
            }
        }
        if (cursor_ < end_) advance(9);
        skipBlank();
    }
    void lineEnd() { ++cursor_; }
    void escapedCharacter()
    {
        ++cursor_;
        decodeByte(*cursor_);
        ++cursor_;
    }
    void language()
    {
        advance(5);
        skipDigits();
        skipBlank();
    }
    void plain()
    {
        advance(6);
        skipBlank();
    }
    void protect()
    {
        advance(8);
        skipBlank();
    }
    void fontSize()
    {
        advance(3);
        uint32_t halfPoints = 0;
        if (readNumber(halfPoints) && state_.setSize(int32_t(halfPoints))) state_.takeTagBuffer(pending_);
    }
    // Without a number only "\f" is passed, and the rest of the word comes out as text.
    void fontWord()
    {
        int64_t font = kNoFont;
        size_t length = RtfFontTable::parseFontWord(cursor_, size_t(end_ - cursor_), font);
        if (length == 0) {
            advance(2);
            return;
        }
        flushPending();
        state_.changeFont(font);
        cursor_ += length;
    }
    // "\b0" turns off, "\b" alone turns on, any other digit or letter changes nothing.
    void flagWord(bool (RtfGroupState::*set)(int32_t))
    {
        advance(2);
        bool changed = false;
        if (cursor_ < end_) {
            if (isDigit(*cursor_)) {
                if (*cursor_ == '0') changed = (state_.*set)(0);
            } else if (!isLetter(*cursor_)) {
                changed = (state_.*set)(1);
            }
        }
        skipWordCharacters();
        if (changed) state_.takeTagBuffer(pending_);
    }
    void bold() { flagWord(&RtfGroupState::setBold); }
    void italic() { flagWord(&RtfGroupState::setItalic); }
    // Exactly one byte after the number is skipped, whatever "\uc" said, and a blank after it;
    // a negative number has no digits here and comes out as text.
    void unicodeCharacter()
    {
        advance(2);
        uint32_t value = 0;
        if (!readNumber(value)) return;
        advance(1);
        skipBlank();
        flushPending();
        out_ += char16_t(value & 0xFFFF);
    }
    // Unknown words are passed over; the byte after them is content, even a brace.
    void otherByte()
    {
        while (cursor_ < end_ && *cursor_ == '\\') {
            ++cursor_;
            skipWordCharacters();
            skipBlank();
        }
        if (cursor_ == end_) return;
        decodeByte(*cursor_);
        ++cursor_;
    }

    std::string_view text_;
    const char* cursor_;
    const char* end_;
    std::u16string& out_;
    std::u16string pending_;
    RtfFontTable fonts_;
    RtfGroupState state_;
    SingleByteDecoder singleBytes_;
};

const HtmlScan::Row HtmlScan::kRows[] = {
    {"\\*\\htmltag", &HtmlScan::htmlTag},
    {"\\*\\mhtmltag", &HtmlScan::skipMhtmlTag},
    {"\\pard", &HtmlScan::paragraphDefaults},
    {"\\par", &HtmlScan::paragraph},
    {"\\line", &HtmlScan::lineBreak},
    {"\\tab", &HtmlScan::tab},
    {"\\li", &HtmlScan::leftIndent},
    {"\\fi-", &HtmlScan::firstIndent},
    {"\\'", &HtmlScan::hexRun},
    {"\\pntext", &HtmlScan::dropToGroupEnd},
    {"\\rtlch", &HtmlScan::dropToGroupEnd},
    {"\\ltrch", &HtmlScan::dropToGroupEnd},
    {"\\htmlrtf", &HtmlScan::suppressedRun},
    {"\r", &HtmlScan::lineEnd},
    {"\n", &HtmlScan::lineEnd},
    {"\\{", &HtmlScan::escapedCharacter},
    {"\\}", &HtmlScan::escapedCharacter},
    {"\\\\", &HtmlScan::escapedCharacter},
    {"\\lang", &HtmlScan::language},
    {"\\plain", &HtmlScan::plain},
    {"\\protect", &HtmlScan::protect},
    {"\\fs", &HtmlScan::fontSize},
    {"\\f", &HtmlScan::fontWord},
    {"\\b", &HtmlScan::bold},
    {"\\i", &HtmlScan::italic},
    {"\\u", &HtmlScan::unicodeCharacter},
};

void HtmlScan::step()
{
    char c = *cursor_;
    if (c == '{') {
        openGroup();
        ++cursor_;
        return;
    }
    if (c == '}') {
        closeGroup();
        ++cursor_;
        return;
    }
    if (c == '\\' || c == '\r' || c == '\n') {
        for (const Row& row : kRows) {
            if (at(row.text)) {
                (this->*row.action)();
                return;
            }
        }
    }
    otherByte();
}

}  // namespace

void rtfToHtml(std::string_view rtf, std::u16string& out)
{
    HtmlScan(rtf, out).run();
}

}  // namespace mcl
