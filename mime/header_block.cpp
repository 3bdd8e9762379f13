#include "mime/header_block.h"

#include <cstdint>
#include <string_view>

#include "mime/ascii.h"
#include "mime/part_fields.h"

namespace mime {

namespace {

uint8_t byteAt(const char* data, size_t i)
{
    return static_cast<uint8_t>(data[i]);
}

// Where the value that starts at `start` ends: at the first byte of the line that no longer
// continues it. `closesBlock` tells whether that line is blank. `size` when the data ends first.
size_t findValueEnd(const char* data, size_t size, size_t start, bool& closesBlock)
{
    size_t p = start;
    for (;;) {
        while (p < size && !isLineBreak(data[p])) ++p;
        if (p >= size) return size;
        p += data[p] == '\r' && p + 1 < size && data[p + 1] == '\n' ? 2 : 1;
        if (p >= size) return size;
        if (isLineBreak(data[p])) {
            closesBlock = true;
            return p;
        }
        if (byteAt(data, p) >= 33) return p;
    }
}

}  // namespace

bool readHeaderBlock(const char* data, size_t size, CMimePart& part, size_t& end)
{
    size_t i = 0;
    bool endOfHeaders = false;
    while (!endOfHeaders && i < size) {
        if (data[i] == '\r') ++i;
        if (i < size && data[i] == '\n') ++i;
        while (i < size && !isLineBreak(data[i]) && (byteAt(data, i) <= 32 || byteAt(data, i) >= 128)) ++i;
        if (i >= size) return false;
        if (isLineBreak(data[i])) {
            endOfHeaders = true;
            continue;
        }

        size_t nameStart = i;
        while (i < size && i - nameStart < CMimePart::kMaxHeaderName && data[i] != ':' && isPrintable(data[i])) ++i;
        std::string_view name(data + nameStart, i - nameStart);
        bool colon = i < size && data[i] == ':';
        if (i < size) ++i;
        if (!colon) {
            // No field: the rest of the line goes, but a blank line right behind it stays.
            while (i < size && !isLineBreak(data[i])) ++i;
            if (i < size && ((data[i] == '\n' && data[i - 1] == '\n') || (data[i] == '\r' && data[i - 1] == '\r')))
                --i;
            continue;
        }

        while (i < size && (data[i] == ' ' || data[i] == '\t')) ++i;
        size_t valueStart = i;
        size_t resume = findValueEnd(data, size, valueStart, endOfHeaders);
        if (resume >= size) return false;
        size_t valueEnd = resume;
        while (valueEnd > valueStart && (data[valueEnd - 1] == ' ' || isLineBreak(data[valueEnd - 1]))) --valueEnd;
        std::string_view value(data + valueStart, valueEnd - valueStart);
        // A value of a single character is not kept, though its field is still read below.
        if (value.size() >= 2) part.headers.insert_or_assign(std::string(name), std::string(value));
        readSpecialField(part, name, value);
        i = resume;
    }
    end = i;
    return true;
}

}  // namespace mime
