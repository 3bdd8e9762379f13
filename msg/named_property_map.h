#pragma once
// The named property map of a message file: the GUID, entry and string streams of its
// "__nameid_version1.0" storage, and the lookups from a named property to its property id.
#include <cstdint>
#include <string>
#include <vector>

#include "core/base_reader.h"
#include "core/mail_property.h"

namespace mcl {

// GUIDs as the files store them: the bytes of the Windows GUID structure, whose first three
// fields are little-endian. {00020328-0000-0000-C000-000000000046} and {00020329-...}.
inline constexpr Guid kPsMapiGuid = {0x28, 0x03, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                     0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};
inline constexpr Guid kPsPublicStringsGuid = {0x29, 0x03, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                              0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};

struct NamedPropertyEntry {
    uint32_t identifier;    // the number, or the offset of the name in nameStrings
    uint32_t indexAndKind;  // bit 0 string kind, bits 1-15 GUID index, bits 16-31 property index
};

class NamedPropertyMap {
public:
    std::vector<Guid> nameGuids;
    std::vector<NamedPropertyEntry> nameEntries;
    std::string nameStrings;  // u32 byte length, then UTF-16 text, for each name

    // Fills each part that is still empty from its stream below the map's row.
    void fill(const MailProperties& props, uint32_t mapRowId);

    // The property id (0x8000 and up) of a named property, or 0.
    uint32_t idByNumber(const Guid& guid, uint32_t number) const;
    // By the name alone: the GUIDs are not compared, so the first entry of that name wins.
    uint32_t idByName(const std::u16string& name) const;
    // The reverse of both: a string name as it is, a numeric one as "{GUID}:0xNNNN"; empty for an
    // id the map doesn't hold.
    std::u16string nameOf(uint32_t propertyId) const;

private:
    // The GUID an entry refers to, or null for none.
    const Guid* guidOf(const NamedPropertyEntry& entry) const;
};

}  // namespace mcl
