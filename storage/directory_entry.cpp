#include "storage/directory_entry.h"

#include <unicode/uchar.h>

#include <cstring>

namespace cfb {

namespace {

constexpr size_t kNameBytes = 64;

uint16_t readU16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }
uint32_t readU32(const uint8_t* p) { return readU16(p) | static_cast<uint32_t>(readU16(p + 2)) << 16; }

// Names are nearly always ASCII, and looking them up compares many of them.
UChar32 upper(char16_t c)
{
    if (c < 0x80) return c >= u'a' && c <= u'z' ? c - 0x20 : c;
    return u_toupper(c);
}

}  // namespace

DirectoryEntry parseDirectoryEntry(const uint8_t* bytes, uint16_t majorVersion)
{
    DirectoryEntry entry;
    uint16_t nameLength = readU16(bytes + 0x40);
    // The length counts the terminator, in bytes; anything else can't be trusted as a name.
    if (nameLength >= 2 && nameLength <= kNameBytes && nameLength % 2 == 0 &&
        readU16(bytes + nameLength - 2) == 0) {
        entry.nameValid = true;
        for (size_t i = 0; i + 2 < nameLength; i += 2) entry.name.push_back(static_cast<char16_t>(readU16(bytes + i)));
    }
    entry.type = bytes[0x42];
    entry.left = readU32(bytes + 0x44);
    entry.right = readU32(bytes + 0x48);
    entry.child = readU32(bytes + 0x4C);
    std::memcpy(entry.classId.data(), bytes + 0x50, entry.classId.size());
    entry.startSector = readU32(bytes + 0x74);
    uint64_t high = readU32(bytes + 0x7C);
    entry.size = readU32(bytes + 0x78) | (majorVersion == 3 ? 0 : high << 32);
    return entry;
}

int compareNames(std::u16string_view a, std::u16string_view b)
{
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    for (size_t i = 0; i < a.size(); ++i) {
        // Code units one by one, as the writers of the format do: a surrogate maps to itself.
        UChar32 x = upper(a[i]);
        UChar32 y = upper(b[i]);
        if (x != y) return x < y ? -1 : 1;
    }
    return 0;
}

}  // namespace cfb
