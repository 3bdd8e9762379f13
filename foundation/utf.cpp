#include "foundation/utf.h"

#include <unicode/ustring.h>

namespace ty {

std::u16string utf8ToWide(std::string_view utf8)
{
    std::u16string out(utf8.size(), u'\0');  // UTF-16 never needs more units than UTF-8 bytes
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(out.data(), static_cast<int32_t>(out.size()), &length, utf8.data(),
                         static_cast<int32_t>(utf8.size()), 0xFFFD, nullptr, &status);
    if (U_FAILURE(status)) return {};
    out.resize(static_cast<size_t>(length));
    return out;
}

std::string wideToUtf8(std::u16string_view wide)
{
    std::string out(wide.size() * 3, '\0');
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(out.data(), static_cast<int32_t>(out.size()), &length, wide.data(),
                       static_cast<int32_t>(wide.size()), 0xFFFD, nullptr, &status);
    if (U_FAILURE(status)) return {};
    out.resize(static_cast<size_t>(length));
    return out;
}

}  // namespace ty
