#include "msg/named_property_map.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "msg/msg_storage_names.h"

namespace mcl {

namespace {

constexpr uint32_t kStringKind = 1;
constexpr uint32_t kFirstStoredGuid = 3;
constexpr uint32_t kNamedIdBase = 0x8000;

uint32_t readU32(const uint8_t* bytes)
{
    return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

// The registry form: the first three fields are little-endian, the last eight bytes go in order.
std::u16string guidText(const Guid& guid)
{
    const auto le = [&](size_t at, size_t width) {
        uint32_t value = 0;
        for (size_t i = width; i-- > 0;) value = value << 8 | guid[at + i];
        return value;
    };
    char text[40];
    std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", le(0, 4), le(4, 2),
                  le(6, 2), guid[8], guid[9], guid[10], guid[11], guid[12], guid[13], guid[14], guid[15]);
    return std::u16string(text, text + std::strlen(text));
}

uint32_t guidIndex(const NamedPropertyEntry& entry) { return (entry.indexAndKind >> 1) & 0x7FFF; }
uint32_t propertyId(const NamedPropertyEntry& entry) { return (entry.indexAndKind >> 16) | kNamedIdBase; }

}  // namespace

void NamedPropertyMap::fill(const MailProperties& props, uint32_t mapRowId)
{
    if (nameGuids.empty()) {
        if (const MailProperty* stream = props.findProperty(kNameGuidStreamTag, mapRowId); stream && stream->bytes()) {
            nameGuids.resize(static_cast<size_t>(stream->size() / sizeof(Guid)));
            for (size_t i = 0; i < nameGuids.size(); ++i)
                std::memcpy(nameGuids[i].data(), stream->bytes() + i * sizeof(Guid), sizeof(Guid));
        }
    }
    if (nameEntries.empty()) {
        if (const MailProperty* stream = props.findProperty(kNameEntryStreamTag, mapRowId); stream && stream->bytes()) {
            nameEntries.resize(static_cast<size_t>(stream->size() / 8));
            for (size_t i = 0; i < nameEntries.size(); ++i)
                nameEntries[i] = {readU32(stream->bytes() + i * 8), readU32(stream->bytes() + i * 8 + 4)};
        }
    }
    if (nameStrings.empty()) {
        if (const MailProperty* stream = props.findProperty(kNameStringStreamTag, mapRowId); stream && stream->bytes())
            nameStrings.assign(reinterpret_cast<const char*>(stream->bytes()), static_cast<size_t>(stream->size()));
    }
}

const Guid* NamedPropertyMap::guidOf(const NamedPropertyEntry& entry) const
{
    uint32_t index = guidIndex(entry);
    if (index == 1) return &kPsMapiGuid;
    if (index == 2) return &kPsPublicStringsGuid;
    if (index < kFirstStoredGuid || index - kFirstStoredGuid >= nameGuids.size()) return nullptr;
    return &nameGuids[index - kFirstStoredGuid];
}

uint32_t NamedPropertyMap::idByNumber(const Guid& guid, uint32_t number) const
{
    for (const NamedPropertyEntry& entry : nameEntries) {
        if ((entry.indexAndKind & kStringKind) || entry.identifier != number) continue;
        const Guid* entryGuid = guidOf(entry);
        if (entryGuid && *entryGuid == guid) return propertyId(entry);
    }
    return 0;
}

uint32_t NamedPropertyMap::idByName(const std::u16string& name) const
{
    const auto* strings = reinterpret_cast<const uint8_t*>(nameStrings.data());
    for (const NamedPropertyEntry& entry : nameEntries) {
        if (!(entry.indexAndKind & kStringKind) || entry.identifier >= nameStrings.size()) continue;
        if (nameStrings.size() - entry.identifier < 4) continue;
        uint64_t length = readU32(strings + entry.identifier) & ~1u;
        if (length != name.size() * 2 || length > nameStrings.size() - entry.identifier - 4) continue;
        const uint8_t* text = strings + entry.identifier + 4;
        bool equal = true;
        for (size_t i = 0; equal && i < name.size(); ++i)
            equal = static_cast<char16_t>(text[2 * i] | text[2 * i + 1] << 8) == name[i];
        if (equal) return propertyId(entry);
    }
    return 0;
}

std::u16string NamedPropertyMap::nameOf(uint32_t id) const
{
    for (const NamedPropertyEntry& entry : nameEntries) {
        if (propertyId(entry) != id) continue;
        if (!(entry.indexAndKind & kStringKind)) {
            const Guid* guid = guidOf(entry);
            char number[16];
            std::snprintf(number, sizeof number, ":0x%04X", entry.identifier);
            return (guid ? guidText(*guid) : u"{}") + std::u16string(number, number + std::strlen(number));
        }
        if (entry.identifier >= nameStrings.size() || nameStrings.size() - entry.identifier < 4) return {};
        const auto* strings = reinterpret_cast<const uint8_t*>(nameStrings.data()) + entry.identifier;
        uint64_t length = std::min<uint64_t>(readU32(strings) & ~1u, nameStrings.size() - entry.identifier - 4);
        std::u16string name(static_cast<size_t>(length / 2), u'\0');
        for (size_t i = 0; i < name.size(); ++i)
            name[i] = static_cast<char16_t>(strings[4 + 2 * i] | strings[5 + 2 * i] << 8);
        return name;
    }
    return {};
}

}  // namespace mcl
