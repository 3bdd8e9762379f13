#pragma once
// Where each file format's reader comes from. A reader subsystem fills its slot; an empty
// slot means the format can't be read yet, and the session finds no reader for it.
#include <string>

namespace mcl {

class BaseReader;

using ReaderFactory = BaseReader* (*)(const std::u16string& path);

struct ReaderFactories {
    ReaderFactory eml = nullptr;
    ReaderFactory msg = nullptr;
    ReaderFactory tnef = nullptr;
    ReaderFactory pstThroughMapi = nullptr;
    ReaderFactory pstStandalone = nullptr;
    ReaderFactory pstStandaloneLegacy = nullptr;
};

// The process-wide table.
ReaderFactories& readerFactories();

}  // namespace mcl
