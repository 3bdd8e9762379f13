#include "rtf/rtf_group_state.h"

#include "foundation/text.h"

namespace mcl {

RtfGroupState::RtfGroupState(RtfFontTable& fonts) : fonts_(fonts), fontNumbers_{kNoFont} {}

void RtfGroupState::pushGroup()
{
    groups_.emplace_back();
    fontNumbers_.push_back(fontNumbers_.empty() ? kNoFont : fontNumbers_.back());
}

bool RtfGroupState::popGroup()
{
    if (!fontNumbers_.empty()) {
        fontNumbers_.pop_back();
        fonts_.selectFont(fontNumbers_.empty() ? kNoFont : fontNumbers_.back());
    }
    if (!groups_.empty()) {
        setItalic(0);
        setBold(0);
        setSize(kNoSize);
        setFont(int32_t(kNoFont));
        groups_.pop_back();
    }
    return !tags_.empty();
}

bool RtfGroupState::setFlag(int32_t RtfGroupRecord::*field, int32_t value, const char16_t* on, const char16_t* off)
{
    if (groups_.empty() || groups_.back().*field == value) return false;
    tags_ += value != 0 ? on : off;
    groups_.back().*field = value;
    return true;
}

bool RtfGroupState::setBold(int32_t value)
{
    return setFlag(&RtfGroupRecord::bold, value, u"<B>", u"</B>");
}

bool RtfGroupState::setItalic(int32_t value)
{
    return setFlag(&RtfGroupRecord::italic, value, u"<I>", u"</I>");
}

bool RtfGroupState::setSize(int32_t halfPoints)
{
    if (groups_.empty() || groups_.back().size == halfPoints) return false;
    if (groups_.back().size != kNoSize || halfPoints == kNoSize) tags_ += u"</FONT>";
    if (halfPoints != kNoSize)
        tags_ += u"<FONT style=\"font-size:" + ty::widenBytes(std::to_string(halfPoints / 2)) + u".0pt;\"> ";
    groups_.back().size = halfPoints;
    return true;
}

bool RtfGroupState::setFont(int32_t font)
{
    if (groups_.empty() || groups_.back().font == font) return false;
    if (groups_.back().font != kNoFont || font == kNoFont) tags_ += u"</FONT>";
    if (font != kNoFont) tags_ += u"<FONT style=\"font-family:" + ty::widenBytes(fonts_.fontName(font)) + u";\"> ";
    groups_.back().font = font;
    return true;
}

void RtfGroupState::changeFont(int64_t font)
{
    if (!fontNumbers_.empty()) fontNumbers_.back() = font;
    fonts_.selectFont(font);
}

void RtfGroupState::takeTagBuffer(std::u16string& text)
{
    text += tags_;
    tags_.clear();
}

}  // namespace mcl
