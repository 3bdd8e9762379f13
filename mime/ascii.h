#pragma once
// ASCII classes of the bytes of mail headers, and case folding. Bytes above 127 compare as they
// are: header names and MIME tokens are ASCII, and folding anything else would need a charset.
#include <array>
#include <cstdint>
#include <string_view>

namespace mime {

constexpr char asciiLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool isLineBreak(char c)
{
    return c == '\r' || c == '\n';
}

// 33 to 126: neither blank nor control nor 8-bit.
constexpr bool isPrintable(char c)
{
    return static_cast<uint8_t>(c) >= 33 && static_cast<uint8_t>(c) <= 126;
}

inline constexpr uint8_t kNotHex = 255;

// The value of a hexadecimal digit of either case, kNotHex for any other byte.
inline constexpr std::array<uint8_t, 256> kHexValue = [] {
    std::array<uint8_t, 256> table{};
    for (auto& value : table) value = kNotHex;
    for (int i = 0; i < 10; ++i) table['0' + i] = uint8_t(i);
    for (int i = 0; i < 6; ++i) table['a' + i] = table['A' + i] = uint8_t(10 + i);
    return table;
}();

constexpr uint8_t hexValue(char c)
{
    return kHexValue[static_cast<uint8_t>(c)];
}

inline bool equalsIgnoreCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (asciiLower(a[i]) != asciiLower(b[i])) return false;
    return true;
}

// Media types and header tokens compare without regard to case.
inline bool startsWithIgnoreCase(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() && equalsIgnoreCase(text.substr(0, prefix.size()), prefix);
}

// Orders as the C library's strcasecmp does: both sides folded to lower case, then by byte value.
struct LessIgnoreCase {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const
    {
        size_t common = a.size() < b.size() ? a.size() : b.size();
        for (size_t i = 0; i < common; ++i) {
            unsigned char x = static_cast<unsigned char>(asciiLower(a[i]));
            unsigned char y = static_cast<unsigned char>(asciiLower(b[i]));
            if (x != y) return x < y;
        }
        return a.size() < b.size();
    }
};

}  // namespace mime
