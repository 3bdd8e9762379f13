#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace rx {

// Where a pattern matched, in code units. It does not hold the text: give the text again to take a
// group's text, so a result can't outlive what it points into.
class MatchResult {
public:
    bool matched() const { return groups_ > 0; }
    explicit operator bool() const { return matched(); }
    // Groups of the pattern, group 0 (the whole match) included; 0 when nothing matched.
    int groups() const { return groups_; }
    bool took(int group) const { return group >= 0 && group < groups_ && at(group)[0] >= 0; }
    // -1 for a group that took no part or does not exist.
    std::ptrdiff_t start(int group) const { return took(group) ? at(group)[0] : -1; }
    std::ptrdiff_t end(int group) const { return took(group) ? at(group)[1] : -1; }
    // The highest-numbered group that took part: 0 when only the whole match did, -1 on no match.
    int lastGroup() const;
    // A group's text; empty when the group took no part.
    std::string_view view(std::string_view text, int group) const { return cut(text, group); }
    std::u16string_view view(std::u16string_view text, int group) const { return cut(text, group); }
    std::string group(std::string_view text, int group) const { return std::string(cut(text, group)); }
    std::u16string group(std::u16string_view text, int group) const { return std::u16string(cut(text, group)); }

    // Filled by the pattern: room for `groups` pairs of (start, end).
    std::ptrdiff_t* resize(int groups);

private:
    static constexpr int kInline = 16;  // the largest pattern in use has 11 groups
    const std::ptrdiff_t* at(int group) const { return (groups_ > kInline ? heap_.data() : inline_) + 2 * group; }
    template <class View>
    View cut(View text, int group) const
    {
        if (!took(group) || size_t(end(group)) > text.size())
            return View();
        return text.substr(size_t(start(group)), size_t(end(group) - start(group)));
    }

    int groups_ = 0;
    std::ptrdiff_t inline_[2 * kInline] = {};
    std::vector<std::ptrdiff_t> heap_;
};

}  // namespace rx
