#pragma once
// Reading a stretch of a stream at an absolute offset, where an offset the stream can't seek to
// reads nothing instead of reading wherever the stream happened to stand.
#include <cstdint>

#include "foundation/stream.h"

namespace PST {

// Returns the bytes read: fewer than `count` at the end of the stream, 0 if the offset can't
// be reached.
int64_t readAtPosition(ty::IOS& source, uint64_t offset, void* out, int64_t count);

}  // namespace PST
