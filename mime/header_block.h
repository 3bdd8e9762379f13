#pragma once
// The header block at the start of an entity: fields into a part, up to the blank line.
#include <cstddef>

#include "mime/mime_part.h"

namespace mime {

// Reads the fields at the start of `data` into `part` and sets `end` where the reading stopped:
// at the line break of the blank line that closes the block, or at the end of the data. Lines
// that are no field are skipped. False when the data ends inside a field's value: the part is
// lost.
bool readHeaderBlock(const char* data, size_t size, CMimePart& part, size_t& end);

}  // namespace mime
