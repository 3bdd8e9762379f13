#include "pst/standalone_reader_legacy.h"

#include <vector>

namespace mcl {

BaseReader* createPSTStandaloneReaderLegacy(const std::u16string& path) { return new PSTStandaloneReaderLegacy(path); }

PSTStandaloneReaderLegacy::PSTStandaloneReaderLegacy(const std::u16string& path)
    : PSTStandaloneReader(u"PSTStandaloneReaderLegacy", path)
{
}

PST::Folder* PSTStandaloneReaderLegacy::moveNextFolder(PST::Folder* folder, bool skip)
{
    // The tree of folders is finite and free of cycles (each folder takes one place), so the
    // walk ends.
    while (folder) {
        if (!skip && folder->getMessageCount() > 0) return folder;
        skip = false;
        if (folder->hasSubfolders()) {
            folder = folder->firstChild();
            continue;
        }
        while (folder && !folder->next()) folder = folder->parent();
        if (folder) folder = folder->next();
    }
    return nullptr;
}

void PSTStandaloneReaderLegacy::resetPosition()
{
    currentFolder = moveNextFolder(rootFolder, false);
    PSTStandaloneReader::resetPosition();
}

bool PSTStandaloneReaderLegacy::doLoad(MailProperties* props, uint32_t* filter)
{
    if (!currentFolder) return false;
    return loadMessage(props, *filter);
}

bool PSTStandaloneReaderLegacy::doLoadByID(MailProperties* props, uint32_t* filter, const std::u16string& id)
{
    return loadByEntryText(props, *filter, id, false);
}

bool PSTStandaloneReaderLegacy::doNext()
{
    if (!currentFolder || currentFolder->getMessageCount() < 1) return false;
    if (++position < currentFolder->getMessageCount()) {
        currentMessage = currentFolder->getMessageNode(position);
    } else {
        currentFolder = moveNextFolder(currentFolder, true);
        if (!currentFolder) {
            resetPosition();
            return false;
        }
        position = 0;
        currentMessage = currentFolder->getMessageNode(0);
    }
    return currentMessage != nullptr;
}

int32_t PSTStandaloneReaderLegacy::doGetItemCount()
{
    int64_t total = 0;
    std::vector<PST::Folder*> pending;
    if (rootFolder) pending.push_back(rootFolder);
    while (!pending.empty()) {
        PST::Folder* folder = pending.back();
        pending.pop_back();
        total += folder->getMessageCount();
        if (!folder->hasSubfolders()) continue;
        for (PST::Folder* child = folder->firstChild(); child; child = child->next()) pending.push_back(child);
    }
    return static_cast<int32_t>(total);
}

}  // namespace mcl
