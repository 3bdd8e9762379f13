#pragma once
// The byte codecs of header values: the data of an encoded word (RFC 2047) and an extended
// parameter value (RFC 2231). Both keep the length of their input, so the decoded bytes come
// with zero bytes behind them.
#include <string>
#include <string_view>

namespace mcl {

// Decodes the data of an encoded word by its letter, "Q" (quoted-printable, "_" left as it is)
// or "B" (base-64); any other letter, a small "q" or "b" too, fails. `out` keeps the data's
// length: the decoded bytes and zero bytes up to it. False, with `out` empty, for an unknown
// letter or for data the quoted-printable codec refuses (none at all).
bool decodeEncodedWord(std::string& out, std::string_view data, char letter);

// Decodes charset'language'text. The text is read as nothing but "%XX" escapes: byte k is the
// hexadecimal number that starts at 3k + 1, read on over any further hex digits and cut to 8
// bits, so plain characters between escapes garble what follows them. The bytes, padded with
// zeros to the length of the whole input, are converted by the charset. Empty `out` when the
// text has no charset'language' form (a language tag of more than one character included).
void decodeRfc2231(std::u16string& out, std::string_view bytes);

}  // namespace mcl
