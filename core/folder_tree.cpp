#include "core/folder_tree.h"

#include "foundation/text.h"

namespace mcl {

std::u16string FolderTree::escapeName(const std::u16string& name)
{
    std::u16string escaped = name;
    if (escaped.empty()) return escaped;
    ty::replaceAll(escaped, u"%", u"%25", 0);  // first, so the later escapes aren't escaped again
    ty::replaceAll(escaped, u"/", u"%2F", 0);
    ty::replaceAll(escaped, uR"(\\)", u"%5C", 0);
    ty::replaceAll(escaped, uR"(\|)", u"%7C", 0);
    return escaped;
}

std::u16string FolderTree::unescapeName(const std::u16string& name)
{
    std::u16string text = name;
    ty::replaceAll(text, u"%2F", u"/", 0);
    ty::replaceAll(text, u"%5C", u"\\", 0);
    ty::replaceAll(text, u"%7C", u"|", 0);
    ty::replaceAll(text, u"%25", u"%", 0);
    return text;
}

std::u16string FolderTree::folderList(const std::u16string& delimiter)
{
    std::vector<std::u16string> names;
    if (collectDir(names) <= 0) return {};
    std::u16string list;
    for (const std::u16string& name : names) {
        if (!list.empty()) list += delimiter;
        list += escapeName(name);
    }
    return list;
}

bool FolderTree::changePath(const std::u16string& path)
{
    if (path.empty()) return false;
    if (path == u"\\") {
        moveToRoot();
        currentPath = u"\\";
        return true;
    }
    if (path == currentPath) return true;
    std::u16string newPath = currentPath;
    std::vector<std::u16string> tokens;
    ty::splitTokens(path, u"\\/", tokens, false);
    if (path.front() == u'\\' || path.front() == u'/') {
        moveToRoot();
        newPath = u"\\";
    }
    for (const std::u16string& token : tokens) {
        if (!changeDir(unescapeName(token))) {
            changePath(currentPath);  // stops at once: the position is not walked back
            return false;
        }
        newPath = ty::joinPath(newPath, token);
    }
    currentPath = newPath;
    return true;
}

void FolderTree::setMoveRecursively(bool value)
{
    moveRecursively = value ? 1 : 0;
    refresh();
}

}  // namespace mcl
