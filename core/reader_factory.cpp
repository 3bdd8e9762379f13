#include "core/reader_factory.h"

namespace mcl {

// Defined beside the readers' list, so that linking the table links every reader with it.
void registerBuiltinReaders(ReaderFactories& factories);

ReaderFactories& readerFactories()
{
    static ReaderFactories factories = [] {
        ReaderFactories builtin;
        registerBuiltinReaders(builtin);
        return builtin;
    }();
    return factories;
}

}  // namespace mcl
