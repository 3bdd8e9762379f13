#include "pst/positioned_read.h"

#include <limits>

namespace PST {

int64_t readAtPosition(ty::IOS& source, uint64_t offset, void* out, int64_t count)
{
    if (offset > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) return 0;
    auto position = static_cast<int64_t>(offset);
    if (source._seek(position, ty::SeekBegin) != position) return 0;
    int64_t done = source._read(out, count);
    return done < 0 ? 0 : done;
}

}  // namespace PST
