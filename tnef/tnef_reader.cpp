#include "tnef/tnef_reader.h"

#include "core/types.h"
#include "foundation/log.h"
#include "tnef/tnef_parser.h"

namespace mcl {

namespace {

// The file type number of a TNEF file, which the public FileType enumeration doesn't list.
constexpr uint32_t kFileTypeTNEF = 3;

}  // namespace

TNEFReader::TNEFReader(const std::u16string& path) : BaseReader(u"TNEFReader", path, kFileTypeTNEF) {}

// The session has already found that the file opens; a stream that isn't TNEF loads as an
// empty message rather than failing here.
bool TNEFReader::doInit() { return true; }

bool TNEFReader::doLoad(MailProperties* props, uint32_t* filter)
{
    ty::TraceScope trace("mcl::TNEFReader::doLoad");
    if (filter && *filter == LoadListing) *filter = LoadHeaders;
    if (filter && (*filter & LoadHeaders)) {
        ty::File file;
        if (file.open(getFilePath(), ty::FileRead, ty::OpenExisting)) {
            std::string messageName;
            TNEFParser::parse(messageName, file, props, 0);
        }
        decodeEnabled = 1;
    }
    decodeMultibyteStrings(props);
    return true;
}

bool TNEFReader::doLoadByID(MailProperties*, uint32_t*, const std::u16string&)
{
    setError(u"Not implemented", u"mcl::TNEFReader::doLoadByID", 0, mul::E_FAIL_CODE);
    return false;
}

bool TNEFReader::doNext() { return false; }

bool TNEFReader::doSaveEmbeddedMessage(Attachment*, MailProperties*, const std::u16string&)
{
    ty::TraceScope trace("mcl::TNEFReader::doSaveEmbeddedMessage");
    return true;
}

bool TNEFReader::doSaveMessage(MailProperties*, const std::u16string&)
{
    ty::TraceScope trace("mcl::TNEFReader::doSaveMessage");
    return true;
}

int32_t TNEFReader::doGetItemCount() { return 1; }

BaseReader* createTNEFReader(const std::u16string& path) { return new TNEFReader(path); }

}  // namespace mcl
