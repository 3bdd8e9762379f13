#pragma once
// The check that every leaf record of an index page passes before it is kept.
#include <cstddef>
#include <cstdint>

namespace PST {

inline bool checkLeafKey(uint64_t key, uint64_t start, uint64_t end, uint64_t& previous, size_t position)
{
    if (key >= end || key < previous) return false;
    previous = key;
    return !(position == 0 && start != 0 && key != start);
}

}  // namespace PST
