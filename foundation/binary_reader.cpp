#include "foundation/binary_reader.h"

namespace ty {

int64_t BinaryReader::readString(std::u16string& out)
{
    int64_t left = stream_->getSize() - stream_->_getPosition();
    if (left < 0) left = 0;
    out.resize(static_cast<size_t>(left / 2));
    int64_t even = left & ~int64_t{1};
    int64_t result = even >= 1 ? stream_->_read(out.data(), even) : 0;
    if (stream_->keeper().hasError()) {
        out.clear();
        keeper_.setError(stream_->keeper().error());
    } else {
        out.resize(static_cast<size_t>(result > 0 ? result / 2 : 0));
    }
    return result;
}

}  // namespace ty
