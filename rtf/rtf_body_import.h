#pragma once
// How a stored compressed-RTF body reaches an item's properties: as RTF, or, for RTF that
// wraps HTML, as the HTML it carries.
#include <cstdint>
#include <string>

#include "core/mail_property.h"
#include "foundation/stream.h"

namespace mcl {

constexpr uint32_t kRtfInSyncTag = 0x0E1F000B;  // PidTagRtfInSync
constexpr uint32_t kRtfBodyTag = 0xF1000102;    // the body as plain RTF bytes
constexpr uint32_t kHtmlFromRtfTag = 0xF101001F;  // the HTML taken out of an RTF body

// The whole stream, from where it stands, decompressed; empty when it cannot be read or is no
// compressed RTF. An empty stream, or damage that decompressRtf rejects, throws
// std::out_of_range. The caller keeps the stream (the readers seek it back afterwards).
std::string readRtfBodyStream(ty::IOS& stream);

// Stores the body under parentId with the given name: HTML-wrapping RTF as its HTML
// (kHtmlFromRtfTag), any other RTF as it stands (kRtfBodyTag, with PidTagRtfInSync set to 1
// unless the table has one). A stream that yields nothing stores nothing.
void importRtfBody(ty::IOS& stream, uint32_t parentId, const std::u16string& name, MailProperties& properties);

}  // namespace mcl
