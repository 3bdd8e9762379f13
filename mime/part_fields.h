#pragma once
// The header fields that the parser reads for itself into a part's own fields.
#include <string_view>

#include "mime/mime_part.h"

namespace mime {

// Reads "Content-Type", "Content-Transfer-Encoding", "Content-Disposition" and "Content-ID"
// (names without regard to case) into `part`; other fields are left alone. `value` is the field's
// value without the blanks around it.
void readSpecialField(CMimePart& part, std::string_view name, std::string_view value);

}  // namespace mime
