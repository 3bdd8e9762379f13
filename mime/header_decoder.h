#pragma once
// Header fields of a parsed message part as wide text: encoded words and extended parameters
// undone, by the same patterns and with the same losses as the reader has always had. Text in
// front of an encoded word is lost, only upper-case "Q" and "B" are known, and the two
// characters behind each word are dropped.
#include <cstdint>
#include <string>
#include <string_view>

#include "mime/mime_part.h"

namespace mcl {

// One piece of a parameter while it is put together.
struct HeaderParamPiece {
    static constexpr uint32_t kPlain = 1;     // plain text or encoded words
    static constexpr uint32_t kExtended = 2;  // charset'language'%XX text

    uint32_t index = 0;  // the continuation number
    uint32_t kind = kPlain;
    std::string value;
};

class HeaderDecoder {
public:
    // The charset of header text that names none: "UTF-8" or "UTF-16LE" from a byte order mark,
    // otherwise "CP" and the C locale's code page. The reader sets it on each read of a file.
    std::string defaultCharset;

    // The field's value: decoded as a parameter of its own name, or its bytes widened as they
    // stand. Empty when the part or the field is absent.
    void getHeader(std::u16string& out, std::string_view fieldName, const CMimePart* part, bool decoded) const;

    // A parameter of a field, `paramName` being pattern text, put together from its pieces
    // ("name*0*=", "name*1=", ...) numbered without a gap from 0. A field asked for by its own
    // name gives its whole value when it holds no "name=". Backslash escapes are removed, and
    // a "Content-ID" loses its angle brackets.
    void decodeHeaderParam(std::u16string& out, std::string_view fieldName, std::string_view paramName,
                           const CMimePart* part) const;

    // Encoded words to wide text. Only a word and the text after the last word survive; text
    // that holds no word is converted by `fallbackCharset`, or by defaultCharset when that is
    // empty.
    void decodeRfc2047(std::u16string& out, std::string_view bytes, std::string_view fallbackCharset) const;
};

}  // namespace mcl
