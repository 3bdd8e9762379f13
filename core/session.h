#pragma once
// Takes a path, works out what kind of file it is, makes the matching reader and turns what
// the reader reads into items. Items returned belong to the caller (release them).
#include <cstdint>
#include <string>

#include "foundation/base_object.h"

namespace mcl {

class BaseReader;
class FolderTree;
class MailItem;
class ReaderContainer;

class Session : public BaseObject {
public:
    Session();
    ~Session() override;

    // Queues a reader for the file; true if no error is recorded afterwards.
    bool addFile(const std::u16string& fileName, bool ignoreExt);
    // The next message of the first queued reader.
    MailItem* read();
    // The same in header mode; null once the reader has run out, until clear or resetHeaders.
    MailItem* readHeader();
    MailItem* readByID(const std::u16string& id);
    MailItem* readFile(const std::u16string& fileName, bool ignoreExt);
    MailItem* readHeaderFromFile(const std::u16string& fileName, bool ignoreExt);
    // Detection and construction only.
    BaseReader* createReader(const std::u16string& fileName, bool ignoreExt);
    // Open test, detection, construction and init.
    BaseReader* createReaderEx(const std::u16string& fileName, bool ignoreExt);
    // Takes the reader over: it lives as long as the item.
    MailItem* mailItemFromReader(BaseReader* reader, uint32_t filter);
    void clear();

    int32_t getCount() const { return count; }
    FolderTree* getFolderTree();
    void resetHeaders() { headersDone = 0; }

private:
    template <class Call>
    MailItem* guarded(const char* source, Call&& call);
    ReaderContainer& queue();
    MailItem* loadFromCurrent(uint32_t filter);
    MailItem* readSingleFile(const char* traceName, const std::u16string& fileName, bool ignoreExt, bool headerMode);

    ReaderContainer* container = nullptr;
    int32_t count = 0;
    uint8_t mapiAvailable = 0;
    uint8_t headersDone = 0;
};

}  // namespace mcl
