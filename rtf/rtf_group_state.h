#pragma once
// The group nesting that the RTF-to-HTML scan keeps: per group the formatting that became HTML
// tags, a stack of font numbers beside it, and the tags waiting to be emitted.
#include <cstdint>
#include <string>
#include <vector>

#include "rtf/rtf_font_table.h"

namespace mcl {

constexpr int32_t kNoSize = -1;

// What a group has turned on; a new group starts from these values, nothing is inherited.
struct RtfGroupRecord {
    int32_t font = int32_t(kNoFont);
    int32_t size = kNoSize;
    int32_t bold = 0;
    int32_t italic = 0;
};

class RtfGroupState {
public:
    // Starts with one font entry, kNoFont, and no group.
    explicit RtfGroupState(RtfFontTable& fonts);

    // At "{": a fresh record, and the font on top is pushed again.
    void pushGroup();
    // At "}": drops the font on top and selects the one below, then closes what the group
    // opened. Returns whether tags are waiting.
    bool popGroup();

    // Each works on the innermost group, writes the tags of a change and says whether there was
    // one; without a group they do nothing.
    bool setBold(int32_t value);
    bool setItalic(int32_t value);
    // In half-points; kNoSize closes the size.
    bool setSize(int32_t halfPoints);
    bool setFont(int32_t font);

    // A font word: the number goes on top of the font stack and its charset is selected. With
    // more groups closed than opened there is no top, and the charset is selected all the same.
    void changeFont(int64_t font);

    const std::u16string& tagBuffer() const { return tags_; }
    // Moves the waiting tags to the end of `text`.
    void takeTagBuffer(std::u16string& text);

private:
    bool setFlag(int32_t RtfGroupRecord::*field, int32_t value, const char16_t* on, const char16_t* off);

    RtfFontTable& fonts_;
    std::vector<RtfGroupRecord> groups_;
    std::vector<int64_t> fontNumbers_;
    std::u16string tags_;
};

}  // namespace mcl
