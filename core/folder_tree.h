#pragma once
// The interface through which a host walks the folders of a store.
#include <cstdint>
#include <string>
#include <vector>

namespace mcl {

class FolderTree {
public:
    virtual ~FolderTree() = default;

    virtual void moveToRoot() = 0;
    virtual bool moveUp() = 0;
    virtual bool changeDir(const std::u16string& name) = 0;
    virtual int32_t collectDir(std::vector<std::u16string>& names) = 0;
    virtual int32_t countDir() = 0;
    virtual int32_t countDirUnread() = 0;
    virtual int32_t countSubfolders() = 0;
    virtual bool hasSubfolders() = 0;
    virtual void refresh() {}

    // Walks to a folder by a path of escaped names, absolute from "\" or "/" or relative to
    // the current folder. A failure partway leaves the store in the deepest folder reached
    // while the current path keeps its old text, until the next absolute change.
    bool changePath(const std::u16string& path);
    // The escaped names of the current folder's children, joined by the delimiter.
    std::u16string folderList(const std::u16string& delimiter);
    const std::u16string& getCurrentPath() const { return currentPath; }
    bool getMoveRecursively() const { return moveRecursively != 0; }
    void setMoveRecursively(bool value);

    // "%" "/" "\" "|" as "%25" "%2F" "%5C" "%7C", so that a name is one path step and one list item.
    static std::u16string escapeName(const std::u16string& name);
    static std::u16string unescapeName(const std::u16string& name);

private:
    std::u16string currentPath = u"\\";
    uint8_t moveRecursively = 1;
};

}  // namespace mcl
