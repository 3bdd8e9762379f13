#pragma once
// The small shared vocabulary for strings and paths.
#include <cstdint>
#include <string>
#include <vector>

namespace ty {

// Splits at the last dot that has a separator somewhere before it; a bare name or a path
// without a dot doesn't split, and then all three outputs stay empty.
bool splitPath(const std::u16string& path, std::u16string& dir, std::u16string& name, std::u16string& ext);
// `dir`, a backslash unless `dir` is empty or ends in one of "\" "/", then `name`.
std::u16string joinPath(const std::u16string& dir, const std::u16string& name);
// Cuts at every delimiter character; a trailing delimiter adds no empty token.
size_t splitTokens(const std::u16string& text, const std::u16string& delimiters, std::vector<std::u16string>& list,
                   bool keepEmpty);
// Replaces every match of the pattern by the template, in place.
std::u16string& replaceAll(std::u16string& text, const std::u16string& pattern, const std::u16string& replacement,
                           uint32_t flags);
// One wide character for each byte, for text that is 7-bit by nature.
std::u16string widenBytes(const std::string& narrow);

}  // namespace ty
