#include "mime/mime_param_list.h"

#include <algorithm>

#include "mime/ascii.h"

namespace {

using mime::hexValue;
using mime::isPrintable;

bool isHex(char c)
{
    return hexValue(c) != mime::kNotHex;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isControl(char c)
{
    return static_cast<uint8_t>(c) < 32;
}

bool isPrintableOrBlank(char c)
{
    return static_cast<uint8_t>(c) >= 32 && static_cast<uint8_t>(c) <= 126;
}

// Gives the bytes of a quoted text one by one: every '"' dropped and, outside quotes, "%XX" as
// the byte it spells and "%%" as "%".
class Unquoter {
public:
    explicit Unquoter(std::string_view raw) : raw_(raw) {}

    bool next(char& out)
    {
        while (i_ < raw_.size() && raw_[i_] == '"') {
            quoted_ = !quoted_;
            ++i_;
        }
        if (i_ >= raw_.size()) return false;
        char c = raw_[i_];
        if (c == '%' && !quoted_) {
            if (i_ + 2 < raw_.size() && isHex(raw_[i_ + 1]) && isHex(raw_[i_ + 2])) {
                out = static_cast<char>(hexValue(raw_[i_ + 1]) << 4 | hexValue(raw_[i_ + 2]));
                i_ += 3;
                return true;
            }
            if (i_ + 1 < raw_.size() && raw_[i_ + 1] == '%') {
                out = '%';
                i_ += 2;
                return true;
            }
        }
        out = c;
        ++i_;
        return true;
    }

private:
    std::string_view raw_;
    size_t i_ = 0;
    bool quoted_ = false;
};

}  // namespace

size_t CMimeParamList::Stops::next(size_t from, size_t none) const
{
    auto it = std::lower_bound(positions_.begin(), positions_.end(), from);
    return it == positions_.end() ? none : *it;
}

void CMimeParamList::clear()
{
    text_.clear();
    sections_.clear();
    entries_.clear();
    currentSection_ = -1;
    errorCount_ = 0;
    keyStops_.clear();
    colons_.clear();
    valueStops_.clear();
    sectionStops_.clear();
}

// A control byte is one below 32: bytes of 128 and above are text here, so that a raw 8-bit file
// name stays whole.
void CMimeParamList::indexStops()
{
    for (size_t i = 0; i < text_.size(); ++i) {
        char c = text_[i];
        bool control = isControl(c) || c == 127;
        if (c == '=' || control) keyStops_.add(i);
        if (c == ':') colons_.add(i);
        if (c == delimiter_ || control) valueStops_.add(i);
        if (c == ']' || isControl(c)) sectionStops_.add(i);
    }
}

int CMimeParamList::parse(const char* text, size_t length)
{
    if (!text || length == 0) return 0;
    clear();
    text_.assign(text, length);
    indexStops();
    size_t pos = 0;
    while (pos < length) {
        if (!parseEntry(pos)) ++errorCount_;
        while (pos < length && text_[pos] != delimiter_ && isPrintableOrBlank(text_[pos])) ++pos;
        while (pos < length && (text_[pos] == delimiter_ || !isPrintable(text_[pos]))) ++pos;
    }
    return 1;
}

bool CMimeParamList::parseEntry(size_t from)
{
    const size_t n = text_.size();
    size_t i = from;
    // Read as signed, bytes of 128 and above are as good as blanks here.
    while (i < n && (static_cast<signed char>(text_[i]) <= 32 || text_[i] == 127)) ++i;
    if (i >= n) return false;
    if (text_[i] == ';') return true;
    if (text_[i] == '[') {
        size_t start = i + 1;
        size_t end = std::min(sectionStops_.next(start, n), start + kMaxSectionName);
        currentSection_ = static_cast<ptrdiff_t>(sections_.size());
        sections_.push_back({start, end - start});
        return true;
    }

    Entry entry;
    entry.section = currentSection_;
    size_t keyStart = i;
    // The colon after a type number counts only within what would otherwise be the key.
    if (isDigit(text_[i]) && colons_.next(i, n) < keyStops_.next(i, n)) {
        entry.type = numberAt(i);
        keyStart = colons_.next(i, n) + 1;
    }
    size_t keyEnd = std::min(keyStops_.next(keyStart, n), keyStart + kMaxName);
    entry.key = {keyStart, keyEnd - keyStart};

    size_t v = keyEnd;
    if (v < n && text_[v] == '=') {
        ++v;
        if (v < n && text_[v] == '#') {
            entry.kind = ValueKind::Number;
            entry.value = {v + 1, 0};
        } else {
            if (v < n && text_[v] == '>') ++v;
            size_t end = valueStops_.next(v, n);
            if (end > v) {
                entry.kind = ValueKind::Text;
                entry.value = {v, end - v};
            }
        }
    }
    entries_.push_back(entry);
    return true;
}

bool CMimeParamList::sectionIs(const Entry& entry, std::string_view section) const
{
    if (entry.section < 0) return section.empty();
    const Span& name = sections_[size_t(entry.section)];
    return mime::equalsIgnoreCase(std::string_view(text_).substr(name.start, name.size), section);
}

bool CMimeParamList::keyIs(const Entry& entry, std::string_view key) const
{
    Unquoter bytes(std::string_view(text_).substr(entry.key.start, entry.key.size));
    char c;
    for (char wanted : key)
        if (!bytes.next(c) || mime::asciiLower(c) != mime::asciiLower(wanted)) return false;
    return !bytes.next(c);
}

std::string CMimeParamList::unquote(Span span) const
{
    std::string out;
    out.reserve(span.size);
    Unquoter bytes(std::string_view(text_).substr(span.start, span.size));
    for (char c; bytes.next(c);) out += c;
    return out;
}

uint32_t CMimeParamList::numberAt(size_t position) const
{
    uint32_t number = 0;
    for (size_t d = position; d < text_.size() && isDigit(text_[d]); ++d)
        number = number * 10 + uint32_t(text_[d] - '0');
    return number;
}

bool CMimeParamList::getValue(std::string_view section, std::string_view key, std::string& output,
                              size_t capacity) const
{
    auto entry = std::find_if(entries_.rbegin(), entries_.rend(),
                              [&](const Entry& e) { return sectionIs(e, section) && keyIs(e, key); });
    if (entry == entries_.rend() || (entry->type != 0 && entry->type != 3)) return false;
    switch (entry->kind) {
    case ValueKind::None: return false;
    case ValueKind::Number:
        // A bare number is held in place of text: it has no characters to give.
        if (numberAt(entry->value.start) == 0) return false;
        output.clear();
        return true;
    case ValueKind::Text: break;
    }
    std::string value = unquote(entry->value);
    // Text that unquotes to nothing is held as no value at all.
    if (value.empty()) return false;
    if (value.size() >= capacity) value.resize(capacity);
    output = std::move(value);
    return true;
}
