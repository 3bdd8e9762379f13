#pragma once
// The storage and stream names of a message stored as a compound file, the tags they stand
// for, and the header sizes of the fixed-size property list.
#include <cstdint>

namespace mcl {

// Found by the whole name.
inline constexpr char16_t kFixedListStreamName[] = u"__properties_version1.0";
// Found by a part of the name, in this order; any other name is a property's "__substg1.0_TTTTTTTT".
inline constexpr char16_t kNamedPropertyStorageMark[] = u"nameid_version";
inline constexpr char16_t kRecipientStorageMark[] = u"recip_version";
inline constexpr char16_t kAttachmentStorageMark[] = u"attach_version";

inline constexpr uint32_t kNamedPropertyStorageTag = 0x00010000;
inline constexpr uint32_t kNameGuidStreamTag = 0x00020102;
inline constexpr uint32_t kNameEntryStreamTag = 0x00030102;
inline constexpr uint32_t kNameStringStreamTag = 0x00040102;
inline constexpr uint32_t kEmbeddedMessageTag = 0x3701000D;  // PR_ATTACH_DATA_OBJ
inline constexpr uint32_t kFixedListTag = 0xF0130102;

// Bytes before the first entry of a fixed-size property list.
inline constexpr uint32_t kRootListHeaderSize = 32;
inline constexpr uint32_t kEmbeddedListHeaderSize = 24;
inline constexpr uint32_t kNestedListHeaderSize = 8;
inline constexpr uint32_t kFixedListEntrySize = 16;

}  // namespace mcl
