#pragma once
// Names of MAPI property tags, for hosts and for diagnostics: the PropTags enumeration and
// lookups between a name and its tag.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "core/prop_tags_gen.h"

namespace mcl {

// The tag of a published name such as "PR_SUBJECT_W" or "ptagXref"; the match is exact.
std::optional<uint32_t> propTagByName(std::string_view name);

// A name for a tag, or empty if no name carries it. When several names share the tag,
// a PR_ name wins over a ptag name; a wide-text tag (type 0x1F or 0x101F) prefers the _W
// form, any other tag the bare form without _A, _W, _T or _O; ties go to the first by name.
std::string_view propTagName(uint32_t tag);

// How many names the enumeration holds.
std::size_t propTagNameCount();

} // namespace mcl
