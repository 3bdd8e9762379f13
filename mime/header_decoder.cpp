#include "mime/header_decoder.h"

#include <charconv>
#include <limits>
#include <map>
#include <vector>

#include "foundation/code_page.h"
#include "foundation/text.h"
#include "mime/header_codecs.h"
#include "regex/pattern.h"

namespace mcl {
namespace {

// Digits of a continuation number; one too large for 32 bits saturates and so is never joined.
uint32_t readIndex(std::string_view digits)
{
    uint32_t index = 0;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), index).ec == std::errc::result_out_of_range)
        index = std::numeric_limits<uint32_t>::max();
    return index;
}

// A plain value (which never holds ";") loses one pair of enclosing quotes, one pair of
// enclosing angle brackets, and all of itself if it then begins with `""` or `<>`.
std::string cleanPlainValue(std::string_view value)
{
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
    if (value.size() >= 2 && value.front() == '<' && value.back() == '>') value = value.substr(1, value.size() - 2);
    if (value.starts_with("\"\"") || value.starts_with("<>")) return {};
    return std::string(value);
}

std::vector<HeaderParamPiece> collectPieces(std::string_view value, std::string_view fieldName,
                                            std::string_view paramName)
{
    std::vector<HeaderParamPiece> pieces;
    const rx::Pattern parameter("(" + std::string(paramName) + R"re()(\*\d+)?(\*)?=([^\n\r;]*))re");
    std::string_view rest = value;
    for (;;) {
        const rx::MatchResult match = parameter.match(rest);
        // The groups that came back: up to the last one that took part.
        if (match.lastGroup() != 4) {
            if (fieldName == paramName) pieces.push_back({0, HeaderParamPiece::kPlain, std::string(value)});
            break;
        }
        if (!match.view(rest, 4).empty()) {
            HeaderParamPiece piece;
            if (match.took(2)) piece.index = readIndex(match.view(rest, 2).substr(1));
            if (match.took(3)) {
                piece.kind = HeaderParamPiece::kExtended;
                piece.value = match.group(rest, 4);
            } else {
                piece.value = cleanPlainValue(match.view(rest, 4));
            }
            pieces.push_back(std::move(piece));
        }
        const size_t end = size_t(match.end(0));
        if (end >= rest.size()) break;
        // The two characters after a value are taken for "; " and skipped.
        rest = rest.substr(std::min(end + 2, rest.size()));
    }
    return pieces;
}

}  // namespace

void HeaderDecoder::getHeader(std::u16string& out, std::string_view fieldName, const CMimePart* part,
                              bool decoded) const
{
    if (decoded) {
        decodeHeaderParam(out, fieldName, fieldName, part);
        return;
    }
    out.clear();
    if (!part) return;
    const auto field = part->headers.find(fieldName);
    if (field != part->headers.end()) out = ty::widenBytes(field->second);
}

void HeaderDecoder::decodeHeaderParam(std::u16string& out, std::string_view fieldName, std::string_view paramName,
                                      const CMimePart* part) const
{
    out.clear();
    if (!part) return;
    const auto field = part->headers.find(fieldName);
    if (field == part->headers.end()) return;

    const std::vector<HeaderParamPiece> pieces = collectPieces(field->second, fieldName, paramName);
    // The first piece of each number counts.
    std::map<uint32_t, const HeaderParamPiece*> byIndex;
    for (const HeaderParamPiece& piece : pieces) byIndex.emplace(piece.index, &piece);

    std::string charset;  // of the last extended piece that named one
    for (uint32_t n = 0; n < pieces.size(); ++n) {
        const auto found = byIndex.find(n);
        if (found == byIndex.end()) break;
        const HeaderParamPiece& piece = *found->second;
        std::u16string text;
        if (piece.kind == HeaderParamPiece::kExtended) {
            const size_t quote = piece.value.find('\'');
            if (quote == std::string::npos || quote == 0) {
                decodeRfc2231(text, charset + "''" + piece.value);
            } else {
                charset = piece.value.substr(0, quote);
                decodeRfc2231(text, piece.value);
            }
        } else {
            decodeRfc2047(text, piece.value, part->charset);
        }
        out += text;
    }

    if (paramName == "Content-ID" && out.size() >= 2 && out.front() == u'<' && out.back() == u'>')
        out = out.substr(1, out.size() - 2);
    out = rx::WPattern(uR"re(\\(.))re").replace(out, u"$1");
}

void HeaderDecoder::decodeRfc2047(std::u16string& out, std::string_view bytes, std::string_view fallbackCharset) const
{
    out.clear();
    const rx::Pattern encodedWord(R"re((?:\=\?)([^?]*)(?:\?)(.)(?:\?)([^?]*)(?:\?\=))re");
    std::string_view rest = bytes;
    for (;;) {
        const rx::MatchResult match = encodedWord.match(rest);
        std::u16string text;
        if (match.lastGroup() != 3) {
            const std::string charset(fallbackCharset.empty() ? defaultCharset : fallbackCharset);
            ty::convertToWide(text, rest.data(), rest.size(), charset.c_str(), true);
            out += text;
            return;
        }
        // The text before the word is dropped.
        std::string decoded;
        if (decodeEncodedWord(decoded, match.view(rest, 3), match.view(rest, 2).front())) {
            // Our wide strings hold NUL, so each word goes in at its full byte length, the zero
            // bytes behind the decoded text included; a reader that stops at NUL sees the first word only.
            ty::convertToWide(text, decoded.data(), decoded.size(), match.group(rest, 1).c_str(), false);
            out += text;
        }
        // The two characters after a word are taken for the break between words and skipped.
        rest = rest.substr(std::min(size_t(match.end(0)) + 2, rest.size()));
    }
}

}  // namespace mcl
