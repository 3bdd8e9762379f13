#pragma once
// Reading compound files (OLE structured storage) by the operations of the Windows service:
// open the root storage of a file or of a memory block, list a storage's elements, open a
// child storage or stream by name, stat, read and seek.
//
// Whether a file is a compound file at all is ty::isCompoundFile (foundation), which reads the
// header only and applies the header test this reader starts with.
//
// Every operation returns a result code (storage/storage_codes.h) and, on failure, keeps a
// ty::Error with the same code and a text in the object's keeper():
//   STG_E_FILENOTFOUND, STG_E_PATHNOTFOUND, STG_E_ACCESSDENIED   the file can't be opened,
//                                                                or a child of that name is missing
//   STG_E_FILEALREADYEXISTS   the file has no compound file signature
//   STG_E_INVALIDHEADER       the signature, but a header of a kind this reader doesn't take
//                             (the same test as ty::hasCompoundFileHeader)
//   STG_E_TOOMANYOPENFILES    the system has no file handle to spare
//   STG_E_DOCFILECORRUPT      damage below the header: chains that loop, end early or leave the
//                             file, sizes larger than their chains, broken directory links or names,
//                             storages nested more than 256 deep
//   STG_E_READFAULT           the file system refused a read
//   STG_E_INVALIDHANDLE       the storage or stream is not open
//   STG_E_INSUFFICIENTMEMORY  memory ran out
// Damage is found where it lies: a file whose attachment storage is broken opens, and only
// listing that storage fails; a stream whose chain is broken fails when it is opened.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/error.h"
#include "storage/compound_file.h"
#include "storage/element_info.h"
#include "storage/storage_stream.h"

namespace cfb {

// Hands out a storage's elements one at a time, in the order of the storage's sibling tree:
// shorter names first, then by upper-cased code units.
class ElementEnumerator {
public:
    // S_OK_CODE with the next element, S_FALSE_CODE when all were given.
    uint32_t next(ElementInfo& out);
    void reset() { next_ = 0; }
    size_t count() const { return children_ ? children_->size() : 0; }

private:
    friend class Storage;
    std::shared_ptr<CompoundFile> file_;
    const std::vector<uint32_t>* children_ = nullptr;  // held by the file's directory
    size_t next_ = 0;
};

class Storage {
public:
    bool isOpen() const { return static_cast<bool>(file_); }

    uint32_t enumElements(ElementEnumerator& out);
    uint32_t openStorage(const std::u16string& name, Storage& out);
    uint32_t openStream(const std::u16string& name, Stream& out);
    uint32_t stat(ElementInfo& out);

    ty::ErrorKeeper& keeper() { return keeper_; }

private:
    friend uint32_t openStorageFile(const std::u16string& path, Storage& root);
    friend uint32_t openStorageMemory(std::string bytes, Storage& root);
    uint32_t openRoot(const std::u16string& source, const std::function<std::unique_ptr<ByteSource>()>& makeSource);
    uint32_t fail(uint32_t code, std::u16string text, const char16_t* source);
    uint32_t findChild(const std::u16string& name, uint8_t type, uint32_t& id, const char16_t* source);

    std::shared_ptr<CompoundFile> file_;
    uint32_t entryId_ = 0;
    ty::ErrorKeeper keeper_;
};

// Opens the root storage of a file (a UTF-8 path on disk), reading sectors as they are needed.
uint32_t openStorageFile(const std::u16string& path, Storage& root);
// Opens the root storage of a block of bytes, such as an attachment's; the storage keeps them.
uint32_t openStorageMemory(std::string bytes, Storage& root);

}  // namespace cfb
