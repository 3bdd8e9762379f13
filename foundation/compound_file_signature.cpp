#include "foundation/compound_file_signature.h"

#include <cstring>

#include "foundation/stream.h"

namespace ty {

namespace {

uint16_t readU16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }
uint32_t readU32(const uint8_t* p) { return readU16(p) | static_cast<uint32_t>(readU16(p + 2)) << 16; }

}  // namespace

CompoundHeaderFault checkCompoundFileHeader(const uint8_t* bytes, size_t size)
{
    static const uint8_t signature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
    if (!bytes || size < kCompoundFileHeaderSize) return CompoundHeaderFault::TooShort;
    if (std::memcmp(bytes, signature, sizeof signature) != 0) return CompoundHeaderFault::BadSignature;
    if (readU16(bytes + 0x1C) != 0xFFFE) return CompoundHeaderFault::BadByteOrder;
    uint16_t majorVersion = readU16(bytes + 0x1A);
    uint16_t sectorShift = readU16(bytes + 0x1E);
    if (!(majorVersion == 3 && sectorShift == 9) && !(majorVersion == 4 && sectorShift == 12))
        return CompoundHeaderFault::BadVersion;
    if (readU16(bytes + 0x20) != 6) return CompoundHeaderFault::BadMiniSectorShift;
    if (readU32(bytes + 0x38) != 4096) return CompoundHeaderFault::BadMiniStreamCutoff;
    return CompoundHeaderFault::None;
}

bool hasCompoundFileHeader(const uint8_t* bytes, size_t size)
{
    return checkCompoundFileHeader(bytes, size) == CompoundHeaderFault::None;
}

bool isCompoundFile(const std::u16string& path)
{
    File file;
    if (!file.open(path, FileRead, OpenExisting)) return false;
    uint8_t header[kCompoundFileHeaderSize];
    return file._read(header, sizeof header) == static_cast<int64_t>(sizeof header) &&
           hasCompoundFileHeader(header, sizeof header);
}

}  // namespace ty
