#include <algorithm>
#include <array>
#include <new>
#include <string_view>

#include "mime/base64.h"
#include "mime/mime.h"
#include "mime/quoted_printable.h"

namespace {

// The bytes a base-64 body may hold: the alphabet, "=", line breaks, tabs and blanks.
constexpr std::array<bool, 256> makeBase64TextTable()
{
    std::array<bool, 256> table{};
    for (char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=\r\n\t "))
        table[static_cast<uint8_t>(c)] = true;
    return table;
}

constexpr std::array<bool, 256> kBase64Text = makeBase64TextTable();

bool isBase64Text(std::string_view text)
{
    // In blocks without an early exit, which the compiler turns into straight table lookups.
    constexpr size_t kBlock = 256;
    for (size_t at = 0; at < text.size(); at += kBlock) {
        size_t end = std::min(text.size(), at + kBlock);
        bool all = true;
        for (size_t i = at; i < end; ++i) all &= kBase64Text[static_cast<uint8_t>(text[i])];
        if (!all) return false;
    }
    return true;
}

}  // namespace

int CMime::decodeBody(CMimePart& part)
{
    if ((part.flags & CMimePart::kDecoded) || part.body.empty()) return 1;
    try {
        if ((part.encoding & CMimePart::kQuotedPrintable) && !(part.encoding & CMimePart::kBase64)) {
            std::string decoded(part.body.size() + 1, '\0');
            size_t length = decoded.size();
            if (decodeQuotedPrintable(part.body.data(), part.body.size(), decoded.data(), &length)) {
                decoded.resize(length);
                part.body = std::move(decoded);
                part.flags |= CMimePart::kDecoded;
            }
            return 1;
        }
        if (part.encoding & CMimePart::kBase64) {
            std::string_view content = part.content();
            if (isBase64Text(content)) {
                // The offset may still lie beyond a body that ends inside its header block.
                size_t prefix = part.body.size() - content.size();
                size_t rounded = (content.size() / 4 + 1) * 4;
                std::string body(prefix + rounded * 6 / 8, '\0');
                body.replace(0, prefix, part.body, 0, prefix);
                size_t inLength = content.size();
                size_t outLength = 0;
                CBase64::decode(content.data(), inLength, body.data() + prefix, outLength, nullptr);
                body.resize(prefix + outLength);
                part.body = std::move(body);
            }
            part.flags |= CMimePart::kDecoded;
        }
        return 1;
    } catch (const std::bad_alloc&) {
        // A body too large to copy stays as it is, for either encoding.
        return 0;
    }
}
