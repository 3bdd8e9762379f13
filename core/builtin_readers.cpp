// The readers built into the library, one line for each file format that can be read.
#include "core/reader_factory.h"
#include "mime/eml_reader.h"
#include "msg/msg_reader.h"
#include "pst/standalone_reader.h"
#include "pst/standalone_reader_legacy.h"
#include "tnef/tnef_reader.h"

namespace mcl {

void registerBuiltinReaders(ReaderFactories& factories)
{
    factories.eml = createEmlReader;
    factories.tnef = createTNEFReader;
    factories.msg = createMSGReader;
    factories.pstStandalone = createPSTStandaloneReader;
    factories.pstStandaloneLegacy = createPSTStandaloneReaderLegacy;
}

}  // namespace mcl
