#pragma once
// One attribute of a TNEF stream as the parser reads it: level, id halves and the data block.
#include <cstdint>

#include "foundation/stream.h"

namespace mcl {

enum TNEFLevel : uint8_t { TNEFMessageLevel = 1, TNEFAttachmentLevel = 2 };

struct TNEFObject {
    uint8_t level = 0;
    uint16_t attributeType = 0;  // the high half of the attribute id
    uint16_t attribute = 0;      // the low half
    ty::Buffer data;             // owns the attribute's bytes, read from position 0
    uint32_t length = 0;
};

}  // namespace mcl
