#include "mime/header_codecs.h"

#include <cstdlib>

#include "foundation/code_page.h"
#include "mime/base64.h"
#include "mime/quoted_printable.h"
#include "regex/pattern.h"

namespace mcl {

bool decodeEncodedWord(std::string& out, std::string_view data, char letter)
{
    // One byte more than the data: room for the base-64 codec's partial last byte.
    std::string decoded(data.size() + 1, '\0');
    bool done = false;
    if (letter == 'Q') {
        size_t length = data.size();
        done = decodeQuotedPrintable(data.data(), data.size(), decoded.data(), &length) != 0;
    } else if (letter == 'B') {
        size_t consumed = data.size();
        size_t produced = 0;
        done = CBase64::decode(data.data(), consumed, decoded.data(), produced, nullptr) != 0;
    }
    if (!done) {
        out.clear();
        return false;
    }
    decoded.resize(data.size());
    out = std::move(decoded);
    return true;
}

void decodeRfc2231(std::u16string& out, std::string_view bytes)
{
    out.clear();
    const rx::Pattern extendedValue(R"re((.+)'(.?)'(.+))re");
    const rx::MatchResult match = extendedValue.match(bytes);
    // The groups that came back: up to the last one that took part.
    if (match.lastGroup() != 3) return;
    const std::string charset = match.group(bytes, 1);
    const std::string text = match.group(bytes, 3);  // NUL-terminated for strtol

    std::string decoded(bytes.size(), '\0');
    for (size_t k = 0; k < text.size() / 3; ++k)
        decoded[k] = static_cast<char>(std::strtol(text.c_str() + 3 * k + 1, nullptr, 16));
    ty::convertToWide(out, decoded.data(), decoded.size(), charset.c_str(), true);
}

}  // namespace mcl
