#include "mime/quoted_printable.h"

#include "mime/ascii.h"

using mime::hexValue;
using mime::isLineBreak;
using mime::kNotHex;

int decodeQuotedPrintable(const char* source, size_t size, char* output, size_t* length)
{
    if (!source || !output || !length || size == 0 || *length == 0) return 0;
    const size_t capacity = *length;
    size_t written = 0;
    size_t i = 0;
    // The room bounds every branch: an escape never outruns its input, but a caller's room may
    // be smaller than the input.
    while (i < size && written < capacity) {
        if (source[i] != '=') {
            output[written++] = source[i++];
            continue;
        }
        if (i + 2 < size && hexValue(source[i + 1]) != kNotHex && hexValue(source[i + 2]) != kNotHex) {
            output[written++] = static_cast<char>(hexValue(source[i + 1]) << 4 | hexValue(source[i + 2]));
            i += 3;
        } else if (i + 1 < size && isLineBreak(source[i + 1])) {
            for (++i; i < size && isLineBreak(source[i]); ++i) {}
        } else {
            output[written++] = '=';
            ++i;
        }
    }
    if (written < capacity) output[written] = '\0';
    *length = written;
    return 1;
}
