#include "core/session.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>

#include "core/base_reader.h"
#include "core/context.h"
#include "core/file_type.h"
#include "core/mail_item.h"
#include "core/reader_container.h"
#include "core/reader_factory.h"
#include "foundation/log.h"

namespace mcl {

namespace {

// The open test: the file must open for reading. A folder opens on Linux but is no file.
int openForReading(const std::u16string& path)
{
    int fd = ::open(ty::wideToUtf8(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return errno;
    struct stat info {};
    int error = fstat(fd, &info) != 0 ? errno : S_ISDIR(info.st_mode) ? EISDIR : 0;
    ::close(fd);
    return error;
}

}  // namespace

Session::Session() : BaseObject(u"Session")
{
    Context* context = Context::instance();
    // A provider counts as loadable when the MAPI route is built in.
    if (context && context->getUseMapiIfPossible() && readerFactories().pstThroughMapi) mapiAvailable = 1;
}

Session::~Session()
{
    delete container;
}

ReaderContainer& Session::queue()
{
    if (!container) container = new ReaderContainer;
    return *container;
}

template <class Call>
MailItem* Session::guarded(const char* source, Call&& call)
{
    try {
        return call();
    } catch (const std::exception& e) {
        setError(u"Unknown exception: " + ty::utf8ToWide(e.what()), ty::utf8ToWide(source), 0, mul::E_FAIL_CODE);
    } catch (...) {
        setError(u"Unknown exception", ty::utf8ToWide(source), 0, mul::E_FAIL_CODE);
    }
    return nullptr;
}

BaseReader* Session::createReader(const std::u16string& fileName, bool ignoreExt)
{
    ty::TraceScope trace("mcl::Session::createReader");
    clearError();
    std::u16string type = detectFileType(fileName, ignoreExt);
    trace.debug("mimeType = ", type);
    const ReaderFactories& factories = readerFactories();
    ReaderFactory factory = nullptr;
    if (type == kTypeEml) {
        factory = factories.eml;
    } else if (type == kTypeMsg) {
        factory = factories.msg;
    } else if (type == kTypeTnef) {
        factory = factories.tnef;
    } else if (type == kTypePst) {
        Context* context = Context::instance();
        if (context && context->getUseMapiIfPossible() && mapiAvailable)
            factory = factories.pstThroughMapi;
        else if (context && context->getContextVersion() == 3)
            factory = factories.pstStandalone;
        else
            factory = factories.pstStandaloneLegacy;
    }
    return factory ? factory(fileName) : nullptr;
}

BaseReader* Session::createReaderEx(const std::u16string& fileName, bool ignoreExt)
{
    ty::TraceScope trace("mcl::Session::createReaderEx");
    if (int error = openForReading(fileName)) {
        setSystemError(error, u"mcl::Session::createReaderEx", 0);
        return nullptr;
    }
    BaseReader* reader = createReader(fileName, ignoreExt);
    if (!reader) {
        setError(u"Can't determine file type", u"mcl::Session::createReaderEx", 0, mul::E_FAIL_CODE);
        return nullptr;
    }
    if (reader->init()) return reader;
    if (reader->hasError())
        copyError(*reader);
    else
        setError(u"Can't initialize mail reader: " + reader->getClassName(), u"mcl::Session::createReaderEx", 0,
                 mul::E_FAIL_CODE);
    reader->release();
    return nullptr;
}

MailItem* Session::mailItemFromReader(BaseReader* reader, uint32_t filter)
{
    return guarded("mcl::Session::mailItemFromReader", [&]() -> MailItem* {
        auto* item = new MailItem(reader, 1);
        reader->release();  // the item's reference is now the reader's life
        if (reader->load(item->getHeaderProperties(), &filter)) return item;
        copyError(*reader);
        item->release();
        return nullptr;
    });
}

MailItem* Session::readSingleFile(const char* traceName, const std::u16string& fileName, bool ignoreExt,
                                  bool headerMode)
{
    ty::TraceScope trace(traceName);
    trace.debug("fileName = ", fileName, ", ignoreExt = ", ignoreExt);
    clearError();
    BaseReader* reader = createReaderEx(fileName, ignoreExt);
    if (hasError()) {
        if (reader) reader->release();
        return nullptr;
    }
    if (reader) {
        if (headerMode) reader->setHeaderMode(1);
        return mailItemFromReader(reader, headerMode ? LoadListing : LoadHeaders);
    }
    if (!headerMode)
        setError(u"Can't create reader for file", u"mcl::Session::readFile", 0, mul::E_FAIL_CODE);
    return nullptr;
}

MailItem* Session::readFile(const std::u16string& fileName, bool ignoreExt)
{
    return readSingleFile("mcl::Session::readFile", fileName, ignoreExt, false);
}

MailItem* Session::readHeaderFromFile(const std::u16string& fileName, bool ignoreExt)
{
    return readSingleFile("mcl::Session::readHeaderFromFile", fileName, ignoreExt, true);
}

bool Session::addFile(const std::u16string& fileName, bool ignoreExt)
{
    ty::TraceScope trace("mcl::Session::addFile");
    trace.debug("fileName = ", fileName, ", ignoreExt = ", ignoreExt);
    clearError();
    ReaderContainer& readers = queue();
    if (BaseReader* reader = createReaderEx(fileName, ignoreExt)) {
        readers.add(reader);
        reader->release();
        count += reader->getCount();  // a reader that answers -1 lowers the sum
    }
    return !hasError();
}

MailItem* Session::loadFromCurrent(uint32_t filter)
{
    BaseReader* current = queue().current();
    auto* item = new MailItem(current, 1);
    if (current->load(item->getHeaderProperties(), &filter)) return item;
    copyError(*current);
    item->release();
    return nullptr;
}

MailItem* Session::read()
{
    ty::TraceScope trace("mcl::Session::read");
    clearError();
    return guarded("mcl::Session::read", [&]() -> MailItem* {
        if (!queue().current()) return nullptr;
        MailItem* item = loadFromCurrent(LoadHeaders);
        queue().advance();
        --count;
        return item;
    });
}

MailItem* Session::readHeader()
{
    ty::TraceScope trace("mcl::Session::readHeader");
    clearError();
    if (headersDone) return nullptr;
    return guarded("mcl::Session::readHeader", [&]() -> MailItem* {
        BaseReader* current = queue().current();
        if (!current) return nullptr;
        uint32_t oldMode = current->setHeaderMode(1);
        MailItem* item = loadFromCurrent(LoadListing);
        if (!queue().next()) headersDone = 1;
        current->setHeaderMode(oldMode);
        if (count > 0) --count;
        return item;
    });
}

MailItem* Session::readByID(const std::u16string& id)
{
    ty::TraceScope trace("mcl::Session::readByID");
    clearError();
    return guarded("mcl::Session::readByID", [&]() -> MailItem* {
        BaseReader* current = queue().current();
        if (!current) return nullptr;
        auto* item = new MailItem(current, 1);
        uint32_t filter = LoadHeaders;
        if (current->loadByID(item->getHeaderProperties(), &filter, id)) return item;
        copyError(*current);
        item->release();
        return nullptr;
    });
}

void Session::clear()
{
    if (container) container->clear();
    clearError();
    count = 0;
    headersDone = 0;
}

FolderTree* Session::getFolderTree()
{
    BaseReader* current = container ? container->current() : nullptr;
    if (!current) return nullptr;
    if (!current->getCachedFolderTree()) current->setCachedFolderTree(current->folderTree());
    return current->getCachedFolderTree();
}

}  // namespace mcl
