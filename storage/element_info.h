#pragma once
// What a storage tells about one of its elements, as an enumeration or a stat hands it out.
#include <array>
#include <cstdint>
#include <string>

namespace cfb {

// Element types as the structured storage service numbers them.
enum ElementType : uint32_t { ElementStorage = 1, ElementStream = 2 };

struct ElementInfo {
    std::u16string name;
    uint32_t type = ElementStorage;
    uint64_t size = 0;                  // bytes of a stream; 0 for a storage
    std::array<uint8_t, 16> classId{};  // a storage's class; zero for streams
};

}  // namespace cfb
