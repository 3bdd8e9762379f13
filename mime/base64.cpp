#include "mime/base64.h"

#include <array>

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr size_t kLineLength = 76;
constexpr uint8_t kPadding = 254;
constexpr uint8_t kSkipped = 255;

// The sextet of each byte; "@" reads as 0, a slip of the table that decoded data depends on.
// Bytes with the top bit set belong to no alphabet and are skipped like any other stray byte.
constexpr std::array<uint8_t, 256> makeDecodeTable()
{
    std::array<uint8_t, 256> table{};
    for (auto& value : table) value = kSkipped;
    for (uint8_t i = 0; i < 64; ++i) table[static_cast<uint8_t>(kAlphabet[i])] = i;
    table['='] = kPadding;
    table['@'] = 0;
    return table;
}

constexpr std::array<uint8_t, 256> kDecodeTable = makeDecodeTable();

}  // namespace

size_t CBase64::encodedLength(size_t size)
{
    size_t n = size * 8 / 6;
    if (size % 3 == 1) n += 2;
    if (size % 3 == 2) n += 1;
    return n + (n / kLineLength) * 2;
}

size_t CBase64::encode(char* output, size_t capacity, const char* source, size_t size)
{
    const auto* in = reinterpret_cast<const uint8_t*>(source);
    size_t written = 0;
    size_t column = 0;
    // False once the output is full.
    auto put = [&](uint32_t sextet) {
        if (written == capacity) return false;
        output[written++] = kAlphabet[sextet & 63];
        if (++column == kLineLength) {
            column = 0;
            if (capacity - written > 2) output[written++] = '\n';
        }
        return true;
    };

    size_t i = 0;
    for (; i + 3 <= size; i += 3) {
        uint32_t group = uint32_t(in[i]) << 16 | uint32_t(in[i + 1]) << 8 | in[i + 2];
        if (!put(group >> 18) || !put(group >> 12) || !put(group >> 6) || !put(group)) return written;
    }
    size_t rest = size - i;
    if (rest > 0) {
        uint32_t group = uint32_t(in[i]) << 16 | (rest == 2 ? uint32_t(in[i + 1]) << 8 : 0);
        if (!put(group >> 18) || !put(group >> 12)) return written;
        if (rest == 2 && !put(group >> 6)) return written;
        for (size_t pad = rest == 1 ? 2 : 1; pad > 0 && written < capacity; --pad) output[written++] = '=';
    }
    if (written < capacity) output[written] = '\0';
    return written;
}

int CBase64::decode(const char* source, size_t& length, char* output, size_t& outLength,
                    uint32_t* stoppedAtPadding)
{
    const auto* in = reinterpret_cast<const uint8_t*>(source);
    auto* out = reinterpret_cast<uint8_t*>(output);
    const size_t size = source && output ? length : 0;
    if (stoppedAtPadding) *stoppedAtPadding = 0;
    size_t consumed = 0;  // as published after the last full group
    size_t published = 0;
    size_t produced = 0;
    unsigned sextets = 0;
    for (size_t i = 0; i < size;) {
        // A whole group of four alphabet bytes at once: the common case of a body's lines.
        if ((sextets & 3) == 0 && i + 4 <= size) {
            uint32_t a = kDecodeTable[in[i]], b = kDecodeTable[in[i + 1]], c = kDecodeTable[in[i + 2]],
                     d = kDecodeTable[in[i + 3]];
            if ((a | b | c | d) < 64) {
                uint32_t group = a << 18 | b << 12 | c << 6 | d;
                out[produced] = uint8_t(group >> 16);
                out[produced + 1] = uint8_t(group >> 8);
                out[produced + 2] = uint8_t(group);
                produced += 3;
                i += 4;
                consumed = i;
                published = produced;
                continue;
            }
        }
        uint8_t value = kDecodeTable[in[i++]];
        if (value == kSkipped) continue;
        if (value == kPadding) {
            consumed = i;
            published = produced;
            if (stoppedAtPadding) *stoppedAtPadding = 1;
            break;
        }
        switch (sextets++ & 3) {
        case 0: out[produced] = uint8_t(value << 2); break;
        case 1:
            out[produced++] |= uint8_t(value >> 4);
            out[produced] = uint8_t(value << 4);
            break;
        case 2:
            out[produced++] |= uint8_t(value >> 2);
            out[produced] = uint8_t(value << 6);
            break;
        case 3:
            out[produced++] |= value;
            consumed = i;
            published = produced;
            break;
        }
    }
    length = consumed;
    outLength = published;
    return 1;
}
