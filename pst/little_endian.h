#pragma once
// Little-endian numbers taken from byte arrays, whatever the machine's own order.
#include <cstddef>
#include <cstdint>

namespace PST {

template <class T>
T loadLittleEndian(const uint8_t* bytes)
{
    T value = 0;
    for (size_t i = sizeof(T); i-- > 0;) value = static_cast<T>(value << 8 | bytes[i]);
    return value;
}

inline uint16_t loadU16(const uint8_t* bytes) { return loadLittleEndian<uint16_t>(bytes); }
inline uint32_t loadU32(const uint8_t* bytes) { return loadLittleEndian<uint32_t>(bytes); }
inline uint64_t loadU64(const uint8_t* bytes) { return loadLittleEndian<uint64_t>(bytes); }

}  // namespace PST
