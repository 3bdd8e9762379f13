#pragma once
// Base-64 (RFC 2045 section 6.8) as mail bodies and encoded words use it.
#include <cstddef>
#include <cstdint>

class CBase64 {
public:
    // The room that encode() is sized by: the characters of the data (the padding of a short last
    // group not counted in full) and two bytes for each line of 76.
    static size_t encodedLength(size_t size);

    // Writes the alphabet characters, a single LF after every 76 of them while more than 2 bytes
    // of room remain, then the "=" padding; stops where `capacity` is reached. A NUL follows when
    // there is room, and is not counted. Returns the bytes written.
    static size_t encode(char* output, size_t capacity, const char* source, size_t size);

    // Decodes `length` bytes of `source`. Bytes outside the alphabet are skipped; "=" ends the
    // decoding. `output` needs room for length * 3 / 4 + 1 bytes. Each byte is written as soon as
    // its bits arrive, but the counts are published only after each full group of four and at the
    // "=": `length` becomes the bytes consumed and `outLength` the bytes produced, so an unpadded
    // short group at the end is written yet not counted. `stoppedAtPadding`, if given, tells
    // whether a "=" ended the decoding. Returns 1.
    static int decode(const char* source, size_t& length, char* output, size_t& outLength,
                      uint32_t* stoppedAtPadding);
};
