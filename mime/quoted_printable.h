#pragma once
// Quoted-printable decoding (RFC 2045 section 6.7), for bodies and for "Q" encoded words.
#include <cstddef>

// Decodes `size` bytes of `source` into `output`. `*length` is the room of `output` on the way in
// and the decoded length on the way out. "=" and two hex digits of either case give their byte;
// "=" before a line break is a soft break that also swallows every CR and LF after it; any other
// "=" stays. "_" stays "_". The output is cut where the room runs out and NUL-terminated when room
// is left. Returns 0 for a null argument or a zero size or room, otherwise 1.
int decodeQuotedPrintable(const char* source, size_t size, char* output, size_t* length);
