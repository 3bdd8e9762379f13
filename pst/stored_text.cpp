#include "pst/stored_text.h"

#include <cstring>

#include "foundation/code_page.h"
#include "pst/little_endian.h"

namespace PST {

namespace {

constexpr uint32_t kNarrowText = 30;

}  // namespace

std::u16string storedText(const BlockItem* item)
{
    if (!item || item->value.empty()) return {};
    const std::string& value = item->value;
    if (item->type == kNarrowText) {
        // The file names no code page for its narrow text; the system's is the best guess.
        size_t length = strnlen(value.data(), value.size());
        return ty::bytesToWide(value.data(), length, 0, true);
    }
    std::u16string text;
    const size_t units = value.size() >= 2 ? (value.size() - 2) / 2 : 0;
    text.reserve(units);
    for (size_t i = 0; i < units; ++i)
        text += static_cast<char16_t>(loadU16(reinterpret_cast<const uint8_t*>(value.data()) + 2 * i));
    return text;
}

}  // namespace PST
