#pragma once
// Tells a compound file (OLE structured storage) from anything else by its header. The
// compound file reader runs the same header test, so a file accepted here opens there unless
// its inner structures are damaged.
#include <cstddef>
#include <cstdint>
#include <string>

namespace ty {

constexpr size_t kCompoundFileHeaderSize = 512;

// What is wrong with a header, in the order the fields are tested.
enum class CompoundHeaderFault {
    None,
    TooShort,              // fewer than 512 bytes
    BadSignature,          // not D0 CF 11 E0 A1 B1 1A E1
    BadByteOrder,          // not 0xFFFE
    BadVersion,            // neither version 3 with 512-byte sectors nor version 4 with 4096-byte ones
    BadMiniSectorShift,    // mini sectors other than 64 bytes
    BadMiniStreamCutoff,   // a cutoff other than 4096
};

CompoundHeaderFault checkCompoundFileHeader(const uint8_t* bytes, size_t size);
// The signature D0 CF 11 E0 A1 B1 1A E1 at offset 0 and a header whose version, byte order,
// sector sizes and mini stream cutoff are those of a version 3 or 4 file.
bool hasCompoundFileHeader(const uint8_t* bytes, size_t size);
// The same test on the first 512 bytes of a file; false when they can't be read.
bool isCompoundFile(const std::u16string& path);

}  // namespace ty
