#include "regex/pattern.h"

#include <algorithm>

#include "regex/matchable_text.h"
#include "regex/pattern_cache.h"
#include "regex/pcre2_api.h"

namespace rx {

namespace {

// This thread's match data, grown to what the largest pattern so far needs and then kept: PCRE2 keeps
// its backtracking frames in it too, so a match costs no allocation.
template <class CharT>
typename pcre2::Api<CharT>::Data* matchData(uint32_t pairs = 0)
{
    using Api = pcre2::Api<CharT>;
    struct Holder {
        typename Api::Data* data = nullptr;
        uint32_t pairs = 0;
        ~Holder() { Api::freeData(data); }
    };
    thread_local Holder held;
    if (pairs > held.pairs) {
        Api::freeData(held.data);
        held.pairs = std::max(pairs, 16u);
        if (!(held.data = Api::newData(held.pairs, nullptr)))
            held.pairs = 0;
    }
    return held.data;
}

template <class CharT>
const PCRE2_SIZE* offsets()
{
    return pcre2::Api<CharT>::ovector(matchData<CharT>());
}

std::shared_ptr<const Compiled> refusedRightToLeft()
{
    static const auto refused = [] {
        auto compiled = std::make_shared<Compiled>();
        compiled->error = "right-to-left matching (flag 16) is not supported";
        return std::shared_ptr<const Compiled>(std::move(compiled));
    }();
    return refused;
}

uint32_t compileOptions(unsigned flags)
{
    return (flags & SingleLine ? PCRE2_DOTALL : 0) | (flags & MultiLine ? PCRE2_MULTILINE : 0) |
           (flags & IgnoreCase ? PCRE2_CASELESS : 0);
}

}  // namespace

template <class CharT>
BasicPattern<CharT>::BasicPattern(View pattern, unsigned flags)
    : compiled_(flags & RightToLeft ? refusedRightToLeft() : compiledPattern(pattern, compileOptions(flags))),
      flags_(flags)
{
}

template <class CharT>
bool BasicPattern<CharT>::valid() const
{
    return compiled_->code != nullptr;
}

template <class CharT>
const std::string& BasicPattern<CharT>::error() const
{
    return compiled_->error;
}

template <class CharT>
std::ptrdiff_t BasicPattern<CharT>::errorOffset() const
{
    return compiled_->errorOffset;
}

template <class CharT>
int BasicPattern<CharT>::captureCount() const
{
    return compiled_->captures;
}

// Every failure of the matcher (a limit reached, memory) counts as no match.
template <class CharT>
int BasicPattern<CharT>::run(const CharT* subject, size_t length, size_t start, uint32_t options) const
{
    using Api = pcre2::Api<CharT>;
    const auto* code = static_cast<const typename Api::Code*>(compiled_->code);
    auto* data = matchData<CharT>(uint32_t(compiled_->captures) + 1);
    if (!data)
        return PCRE2_ERROR_NOMEMORY;
    int rc = Api::match(code, subject, length, start, options, data);
    if (rc == PCRE2_ERROR_JIT_STACKLIMIT)  // the interpreter keeps its frames on the heap instead
        rc = Api::match(code, subject, length, start, options | PCRE2_NO_JIT, data);
    return rc;
}

template <class CharT>
MatchResult BasicPattern<CharT>::collect(int rc) const
{
    MatchResult result;
    if (rc <= 0)
        return result;
    const PCRE2_SIZE* ov = offsets<CharT>();
    int groups = compiled_->captures + 1;
    std::ptrdiff_t* out = result.resize(groups);
    for (int g = 0; g < groups; ++g) {
        bool took = g < rc && ov[2 * g] != PCRE2_UNSET;
        out[2 * g] = took ? std::ptrdiff_t(ov[2 * g]) : -1;
        out[2 * g + 1] = took ? std::ptrdiff_t(ov[2 * g + 1]) : -1;
    }
    return result;
}

template <class CharT>
MatchResult BasicPattern<CharT>::match(View text, size_t length, std::ptrdiff_t start) const
{
    if (!valid())
        return {};
    text = text.substr(0, std::min(length, text.size()));
    bool resume = start < 0 && (flags_ & Global);
    size_t from = start >= 0 ? size_t(start) : resume ? next_ : 0;
    uint32_t options = resume && lastEmpty_ ? PCRE2_NOTEMPTY_ATSTART : 0;
    MatchResult result =
        collect(from <= text.size() ? run(matchableText(text, from), text.size(), from, options) : 0);
    if (flags_ & Global) {
        next_ = result ? size_t(result.end(0)) : 0;
        lastEmpty_ = result && result.start(0) == result.end(0);
    }
    return result;
}

// Anchored at both ends at match time; the pattern itself is not edited.
template <class CharT>
MatchResult BasicPattern<CharT>::matchExact(View text) const
{
    if (!valid())
        return {};
    return collect(run(matchableText(text, 0), text.size(), 0, PCRE2_ANCHORED | PCRE2_ENDANCHORED));
}

template <class CharT>
auto BasicPattern<CharT>::replace(View text, View replacement, std::ptrdiff_t start, std::ptrdiff_t count) const
    -> String
{
    size_t from = start < 0 ? 0 : std::min(size_t(start), text.size());
    const CharT* subject = valid() && count != 0 ? matchableText(text, from) : nullptr;
    int rc = subject ? run(subject, text.size(), from, 0) : 0;
    if (rc <= 0)
        return String(text);
    String out;
    out.reserve(text.size() + replacement.size());
    size_t copied = 0;
    for (std::ptrdiff_t done = 1;; ++done) {
        const PCRE2_SIZE* ov = offsets<CharT>();
        out.append(text.substr(copied, ov[0] - copied));
        expand(out, text, replacement, rc);
        copied = from = ov[1];
        uint32_t options = ov[0] == ov[1] ? PCRE2_NOTEMPTY_ATSTART : 0;
        if (done == count || (rc = run(subject, text.size(), from, options)) <= 0)
            break;
    }
    out.append(text.substr(copied));
    return out;
}

// The group that ${name} names, by number or by name; -1 for none.
template <class CharT>
int BasicPattern<CharT>::groupByName(View name) const
{
    using Api = pcre2::Api<CharT>;
    using Unit = typename Api::Unit;
    if (name.empty())
        return -1;
    if (std::all_of(name.begin(), name.end(), [](CharT c) { return c >= '0' && c <= '9'; })) {
        int number = 0;
        for (CharT c : name)
            if ((number = number * 10 + (c - '0')) > compiled_->captures)
                return -1;
        return number;
    }
    const auto* code = static_cast<const typename Api::Code*>(compiled_->code);
    uint32_t names = 0, entrySize = 0;
    const Unit* table = nullptr;
    Api::info(code, PCRE2_INFO_NAMECOUNT, &names);
    Api::info(code, PCRE2_INFO_NAMEENTRYSIZE, &entrySize);
    Api::info(code, PCRE2_INFO_NAMETABLE, &table);
    for (uint32_t i = 0; i < names; ++i) {
        // An entry: the group number (two bytes in the 8-bit library, one unit in the 16-bit), the name, NUL.
        const Unit* entry = table + size_t(i) * entrySize;
        const Unit* own = entry + (sizeof(CharT) == 1 ? 2 : 1);
        size_t k = 0;
        while (k < name.size() && own[k] && own[k] == Unit(name[k]))
            ++k;
        if (k == name.size() && !own[k])
            return sizeof(CharT) == 1 ? (int(entry[0]) << 8 | int(entry[1])) : int(entry[0]);
    }
    return -1;
}

// Appends the template with its tokens filled in from the match just made (rc as the matcher gave it).
template <class CharT>
void BasicPattern<CharT>::expand(String& out, View text, View t, int rc) const
{
    static constexpr CharT braceEnds[] = {'}', '\n', 0};  // `.*?` in the token's pattern stops at LF
    const PCRE2_SIZE* ov = offsets<CharT>();
    auto group = [&](int g) {
        return g >= 0 && g < rc && ov[2 * g] != PCRE2_UNSET ? text.substr(ov[2 * g], ov[2 * g + 1] - ov[2 * g])
                                                            : View();
    };
    for (size_t i = 0; i < t.size();) {
        size_t dollar = t.find(CharT('$'), i);
        if (dollar == View::npos || dollar + 1 == t.size()) {
            out.append(t.substr(i));
            return;
        }
        out.append(t.substr(i, dollar - i));
        CharT c = t[dollar + 1];
        size_t used = 2;
        if (c == '$')
            out.push_back(c);
        else if (c == '&')
            out.append(group(0));
        else if (c == '`')
            out.append(text.substr(0, ov[0]));
        else if (c == '\'')
            out.append(text.substr(ov[1]));
        else if (c == '_')
            out.append(text);
        else if (c == '+')
            out.append(group(rc - 1));  // the matcher's count makes rc - 1 the highest group that took part
        else if (c >= '0' && c <= '9')
            out.append(c - '0' <= compiled_->captures ? group(c - '0') : t.substr(dollar, 2));
        else if (size_t close = c == '{' ? t.find_first_of(braceEnds, dollar + 2) : View::npos;
                 close != View::npos && t[close] == '}') {
            used = close + 1 - dollar;
            int g = groupByName(t.substr(dollar + 2, close - dollar - 2));
            out.append(g < 0 ? t.substr(dollar, used) : group(g));
        } else {
            out.push_back(CharT('$'));
            used = 1;
        }
        i = dollar + used;
    }
}

template class BasicPattern<char>;
template class BasicPattern<char16_t>;

}  // namespace rx
