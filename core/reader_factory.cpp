#include "core/reader_factory.h"

namespace mcl {

ReaderFactories& readerFactories()
{
    static ReaderFactories factories;
    return factories;
}

}  // namespace mcl
