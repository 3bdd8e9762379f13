#include "regex/match_result.h"

namespace rx {

std::ptrdiff_t* MatchResult::resize(int groups)
{
    groups_ = groups;
    if (groups <= kInline)
        return inline_;
    heap_.resize(size_t(2 * groups));
    return heap_.data();
}

int MatchResult::lastGroup() const
{
    int group = groups_ - 1;
    while (group >= 0 && !took(group))
        --group;
    return group;
}

}  // namespace rx
