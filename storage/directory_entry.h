#pragma once
// One 128-byte entry of a compound file's directory, and the order of names among siblings.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace cfb {

constexpr size_t kDirectoryEntrySize = 128;
constexpr uint32_t kNoStream = 0xFFFFFFFF;
constexpr uint32_t kMaxRegularStreamId = 0xFFFFFFFA;

// Object types as the directory and the enumeration number them.
enum EntryType : uint8_t { EntryUnused = 0, EntryStorage = 1, EntryStream = 2, EntryRoot = 5 };

struct DirectoryEntry {
    std::u16string name;
    bool nameValid = false;  // a length of at most 64 bytes that ends on a terminator
    uint8_t type = EntryUnused;
    uint32_t left = kNoStream;
    uint32_t right = kNoStream;
    uint32_t child = kNoStream;
    std::array<uint8_t, 16> classId{};
    uint32_t startSector = 0;
    uint64_t size = 0;
};

// Reads an entry from its 128 bytes. A version 3 file keeps only the low 32 bits of the size:
// writers of that version left the high half undefined.
DirectoryEntry parseDirectoryEntry(const uint8_t* bytes, uint16_t majorVersion);

// The order of siblings in a storage: the shorter name first, then code unit by code unit
// after simple upper-case mapping. Negative, zero or positive.
int compareNames(std::u16string_view a, std::u16string_view b);

}  // namespace cfb
