#pragma once
// What kind of mail file a path holds, by its extension or by its first bytes.
#include <string>

namespace mcl {

inline constexpr char16_t kTypeEml[] = u"application/eml";
inline constexpr char16_t kTypeMsg[] = u"application/msg";
inline constexpr char16_t kTypePst[] = u"application/pst";
inline constexpr char16_t kTypeTnef[] = u"application/ms-tnef";
inline constexpr char16_t kTypeUnknown[] = u"application/unknown";

// With `ignoreExtension` the content decides, falling back to the extension when fewer than
// four bytes can be read.
std::u16string detectFileType(const std::u16string& path, bool ignoreExtension);

}  // namespace mcl
