#pragma once
// Compressed RTF, the container in which message stores keep an RTF body: a 16-byte header
// followed by either an LZ-style token stream ("LZFu") or the bytes as they stand ("MELA").
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace mcl {

constexpr uint32_t kCompressedRtfMagic = 0x75465A4C;    // "LZFu"
constexpr uint32_t kUncompressedRtfMagic = 0x414C454D;  // "MELA"
constexpr size_t kCompressedRtfHeaderSize = 16;

// The 207 bytes that every token stream starts its dictionary with.
std::string_view compressedRtfDictionary();
// What a damaged token stream decodes to: a small RTF document that says so.
std::string_view corruptRtfDocument();

// Undoes the compression. Too short an input, a compressed size that disagrees with the input's
// length or an unknown magic give an empty result; damaged tokens give corruptRtfDocument().
// Otherwise the result has exactly the raw size of the header, with zeros where no token wrote.
// Running out of input where a control byte or a reference is due, or stored content longer than
// the raw size, throws std::out_of_range: such input is not a body at all.
std::string decompressRtf(std::string compressed);

}  // namespace mcl
