// The readers built into the library, one line for each file format that can be read.
#include "core/reader_factory.h"

namespace mcl {

void registerBuiltinReaders(ReaderFactories& factories)
{
    (void)factories;
}

}  // namespace mcl
