#include "foundation/text.h"

#include "regex/pattern.h"

namespace ty {

bool splitPath(const std::u16string& path, std::u16string& dir, std::u16string& name, std::u16string& ext)
{
    static const rx::WPattern pathPattern(uR"((.*[\\/])(.*)(?:\.)(.*))", 0);
    rx::MatchResult match = pathPattern.matchExact(path);
    if (!match.matched()) return false;
    dir = match.group(path, 1);
    name = match.group(path, 2);
    ext = match.group(path, 3);
    return true;
}

std::u16string joinPath(const std::u16string& dir, const std::u16string& name)
{
    if (dir.empty()) return name;
    if (dir.back() == u'\\' || dir.back() == u'/') return dir + name;
    return dir + u'\\' + name;
}

size_t splitTokens(const std::u16string& text, const std::u16string& delimiters, std::vector<std::u16string>& list,
                   bool keepEmpty)
{
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (delimiters.find(text[i]) == std::u16string::npos) continue;
        if (keepEmpty || i > start) list.push_back(text.substr(start, i - start));
        start = i + 1;
    }
    if (start < text.size()) list.push_back(text.substr(start));
    return list.size();
}

std::u16string& replaceAll(std::u16string& text, const std::u16string& pattern, const std::u16string& replacement,
                           uint32_t flags)
{
    rx::WPattern compiled(pattern, flags);
    text = compiled.replace(text, replacement, -1, -1);
    return text;
}

std::u16string widenBytes(const std::string& narrow)
{
    return std::u16string(reinterpret_cast<const unsigned char*>(narrow.data()),
                          reinterpret_cast<const unsigned char*>(narrow.data()) + narrow.size());
}

}  // namespace ty
