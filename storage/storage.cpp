#include "storage/storage.h"

#include <cerrno>
#include <filesystem>
#include <new>

#include "foundation/utf.h"

namespace cfb {

namespace {

constexpr uint32_t kErrorKind = 3;  // "E"

uint32_t codeForOpenError(uint32_t systemCode)
{
    switch (systemCode) {
    case ENOENT: return STG_E_FILENOTFOUND;
    case ENOTDIR:
    case ENAMETOOLONG: return STG_E_PATHNOTFOUND;
    case EACCES:
    case EPERM:
    case EISDIR: return STG_E_ACCESSDENIED;
    case EMFILE:
    case ENFILE: return STG_E_TOOMANYOPENFILES;
    case ENOMEM: return STG_E_INSUFFICIENTMEMORY;
    default: return STG_E_READFAULT;
    }
}

ElementInfo infoOf(const DirectoryEntry& entry)
{
    ElementInfo info;
    info.name = entry.name;
    info.type = entry.type == EntryStream ? ElementStream : ElementStorage;
    info.size = entry.type == EntryStream ? entry.size : 0;
    info.classId = entry.classId;
    return info;
}

// Runs an operation that may throw a Failure or run out of memory, and gives its code.
template <class Operation>
uint32_t guarded(Operation&& operation, Failure& failure)
{
    try {
        operation();
        return S_OK_CODE;
    } catch (const Failure& caught) {
        failure = caught;
    } catch (const std::bad_alloc&) {
        failure = {STG_E_INSUFFICIENTMEMORY, u"Not enough memory to read the compound file"};
    }
    return failure.code;
}

}  // namespace

uint32_t ElementEnumerator::next(ElementInfo& out)
{
    if (!file_ || next_ >= children_->size()) return S_FALSE_CODE;
    out = infoOf(file_->directory().entry((*children_)[next_++]));
    return S_OK_CODE;
}

uint32_t Storage::fail(uint32_t code, std::u16string text, const char16_t* source)
{
    keeper_.setError(std::move(text), source, kErrorKind, code);
    return code;
}

uint32_t Storage::openRoot(const std::u16string& source,
                           const std::function<std::unique_ptr<ByteSource>()>& makeSource)
{
    file_.reset();
    entryId_ = 0;
    keeper_.clearError();
    Failure failure;
    std::shared_ptr<CompoundFile> file;
    uint32_t code = guarded([&] { file = std::make_shared<CompoundFile>(makeSource()); }, failure);
    if (failed(code)) return fail(code, failure.text, source.c_str());
    file_ = std::move(file);
    return S_OK_CODE;
}

uint32_t openStorageFile(const std::u16string& path, Storage& root)
{
    return root.openRoot(u"cfb::openStorageFile", [&]() -> std::unique_ptr<ByteSource> {
        // A folder opens for reading here, unlike on Windows; it is refused as Windows refuses it.
        std::error_code ignored;
        if (std::filesystem::is_directory(ty::wideToUtf8(path), ignored))
            throw Failure{STG_E_ACCESSDENIED, u"The path names a folder"};
        auto file = std::make_unique<ty::File>();
        if (!file->open(path, ty::FileRead, ty::OpenExisting)) {
            const ty::Ref<ty::Error>& error = file->keeper().error();
            throw Failure{codeForOpenError(error->code()), error->text()};
        }
        int64_t size = file->getSize();
        if (size < 0) throw Failure{STG_E_READFAULT, file->keeper().error()->text()};
        return std::make_unique<FileSource>(std::move(file), static_cast<uint64_t>(size));
    });
}

uint32_t openStorageMemory(std::string bytes, Storage& root)
{
    return root.openRoot(u"cfb::openStorageMemory",
                         [&]() -> std::unique_ptr<ByteSource> { return std::make_unique<MemorySource>(std::move(bytes)); });
}

uint32_t Storage::enumElements(ElementEnumerator& out)
{
    keeper_.clearError();
    out = ElementEnumerator();
    if (!file_) return fail(STG_E_INVALIDHANDLE, u"The storage is not open", u"cfb::Storage::enumElements");
    Failure failure;
    uint32_t code = guarded([&] { out.children_ = &file_->directory().children(entryId_); }, failure);
    if (failed(code)) return fail(code, failure.text, u"cfb::Storage::enumElements");
    out.file_ = file_;
    return S_OK_CODE;
}

uint32_t Storage::findChild(const std::u16string& name, uint8_t type, uint32_t& id, const char16_t* source)
{
    if (!file_) return fail(STG_E_INVALIDHANDLE, u"The storage is not open", source);
    Failure failure;
    uint32_t code = guarded([&] { id = file_->directory().find(entryId_, name); }, failure);
    if (failed(code)) return fail(code, failure.text, source);
    if (id == kNoStream || file_->directory().entry(id).type != type)
        return fail(STG_E_FILENOTFOUND,
                    (type == EntryStream ? u"No stream named \"" : u"No storage named \"") + name + u"\"", source);
    return S_OK_CODE;
}

uint32_t Storage::openStorage(const std::u16string& name, Storage& out)
{
    keeper_.clearError();
    uint32_t id = kNoStream;
    uint32_t code = findChild(name, EntryStorage, id, u"cfb::Storage::openStorage");
    if (failed(code)) return code;
    out.file_ = file_;
    out.entryId_ = id;
    out.keeper_.clearError();
    return S_OK_CODE;
}

uint32_t Storage::openStream(const std::u16string& name, Stream& out)
{
    keeper_.clearError();
    uint32_t id = kNoStream;
    uint32_t code = findChild(name, EntryStream, id, u"cfb::Storage::openStream");
    if (failed(code)) return code;
    StreamLayout layout;
    Failure failure;
    code = guarded([&] { layout = file_->layoutOf(id); }, failure);
    if (failed(code)) return fail(code, u"Stream \"" + name + u"\": " + failure.text, u"cfb::Storage::openStream");
    out.attach(file_, id, std::move(layout));
    return S_OK_CODE;
}

uint32_t Storage::stat(ElementInfo& out)
{
    keeper_.clearError();
    if (!file_) return fail(STG_E_INVALIDHANDLE, u"The storage is not open", u"cfb::Storage::stat");
    out = infoOf(file_->directory().entry(entryId_));
    return S_OK_CODE;
}

}  // namespace cfb
