#pragma once
// The public enumerations of the object model, with the values hosts see.
#include <cstdint>

enum BodyType : int32_t {
    BodyNotLoaded = -2,
    BodyNone = -1,
    BodyPlainText = 0,
    BodyRTF = 1,
    BodyHTML = 2,
    BodyAny = 255,
};

enum FileType : uint32_t { FilePST = 0, FileMSG = 1, FileEML = 2 };

enum AttachmentType : uint32_t {
    AttachNone = 0,
    AttachByValue = 1,
    AttachEmbeddedByValue = 2,
    AttachEmbeddedMsg = 3,
    AttachOLE = 4,
};

enum AddressType : uint32_t { AddressUnknown = 0, AddressExchange = 1, AddressSMTP = 2 };

namespace mcl {

// Sections a reader's load is asked for.
enum LoadFilter : uint32_t {
    LoadHeaders = 1,
    LoadBody = 2,
    LoadAttachments = 4,
    LoadListing = 8,
    LoadAllProperties = 128,
    LoadDirect = 256,
};

constexpr uint32_t kLoadEverything = LoadHeaders | LoadBody | LoadAttachments | LoadAllProperties;  // 135

// Value types of a property tag (its low 16 bits).
enum PropType : uint16_t {
    PT_SHORT = 2,
    PT_LONG = 3,
    PT_BOOLEAN = 11,
    PT_OBJECT = 13,
    PT_STRING8 = 30,
    PT_UNICODE = 31,
    PT_SYSTIME = 64,
    PT_BINARY = 258,
};

constexpr uint16_t propType(uint32_t tag) { return static_cast<uint16_t>(tag & 0xFFFF); }
constexpr uint16_t propId(uint32_t tag) { return static_cast<uint16_t>(tag >> 16); }

// Rows with nothing in them; their details lie below.
constexpr uint32_t kRecipientRow = 0x0C000000;
constexpr uint32_t kAttachmentRow = 0x37000000;

}  // namespace mcl
