#include <gtest/gtest.h>

#include <map>

#include "core/folder_tree.h"
#include "core/reader_container.h"
#include "support/temp_dir.h"
#include "test_reader.h"

namespace {

// A store of folders held in memory: each folder a list of children.
class FakeTree : public mcl::FolderTree {
public:
    FakeTree()
    {
        children[u"\\"] = {u"Inbox", u"a/b", u"100%"};
        children[u"\\Inbox"] = {u"Sub"};
        children[u"\\Inbox\\Sub"] = {};
        children[u"\\a/b"] = {};
    }
    void moveToRoot() override { at = u"\\"; ++moves; }
    bool moveUp() override { return false; }
    bool changeDir(const std::u16string& name) override
    {
        for (auto& child : children[at])
            if (child == name) {
                at = at == u"\\" ? at + name : at + u"\\" + name;
                ++moves;
                return true;
            }
        return false;
    }
    int32_t collectDir(std::vector<std::u16string>& names) override
    {
        names = children[at];
        return static_cast<int32_t>(names.size());
    }
    int32_t countDir() override { return 0; }
    int32_t countDirUnread() override { return 0; }
    int32_t countSubfolders() override { return static_cast<int32_t>(children[at].size()); }
    bool hasSubfolders() override { return !children[at].empty(); }

    std::map<std::u16string, std::vector<std::u16string>> children;
    std::u16string at = u"\\";
    int moves = 0;
};

TEST(FolderTree, EscapesAreReversible)
{
    EXPECT_EQ(mcl::FolderTree::escapeName(u"a/b\\c|d%e"), u"a%2Fb%5Cc%7Cd%25e");
    EXPECT_EQ(mcl::FolderTree::unescapeName(u"a%2Fb%5Cc%7Cd%25e"), u"a/b\\c|d%e");
    EXPECT_EQ(mcl::FolderTree::escapeName(u"%2F"), u"%252F");
    EXPECT_EQ(mcl::FolderTree::unescapeName(u"%252F"), u"%2F");
}

TEST(FolderTree, ListsEscapedNames)
{
    FakeTree tree;
    EXPECT_EQ(tree.folderList(u"|"), u"Inbox|a%2Fb|100%25");
    tree.changePath(u"\\Inbox\\Sub");
    EXPECT_EQ(tree.folderList(u"|"), u"");
}

TEST(FolderTree, AbsoluteRelativeAndEscapedPaths)
{
    FakeTree tree;
    EXPECT_TRUE(tree.changePath(u"\\Inbox"));
    EXPECT_TRUE(tree.changePath(u"Sub"));
    EXPECT_EQ(tree.getCurrentPath(), u"\\Inbox\\Sub");
    EXPECT_TRUE(tree.changePath(u"/a%2Fb"));
    EXPECT_EQ(tree.getCurrentPath(), u"\\a%2Fb");
    EXPECT_EQ(tree.at, u"\\a/b");
    int moves = tree.moves;
    EXPECT_TRUE(tree.changePath(u"\\a%2Fb"));  // the same path moves nothing
    EXPECT_EQ(tree.moves, moves);
    EXPECT_TRUE(tree.changePath(u"\\"));
    EXPECT_EQ(tree.getCurrentPath(), u"\\");
    EXPECT_FALSE(tree.changePath(u""));
}

TEST(FolderTree, FailedWalkLeavesPositionAndTextApart)
{
    FakeTree tree;
    ASSERT_TRUE(tree.changePath(u"\\a%2Fb"));
    EXPECT_FALSE(tree.changePath(u"\\Inbox\\Missing"));
    EXPECT_EQ(tree.at, u"\\Inbox");                  // the deepest folder reached
    EXPECT_EQ(tree.getCurrentPath(), u"\\a%2Fb");   // the text keeps its old value
}

TEST(FolderTree, SettingMoveRecursivelyRefreshes)
{
    struct Counting : FakeTree {
        void refresh() override { ++refreshes; }
        int refreshes = 0;
    } tree;
    EXPECT_TRUE(tree.getMoveRecursively());
    tree.setMoveRecursively(false);
    EXPECT_FALSE(tree.getMoveRecursively());
    EXPECT_EQ(tree.refreshes, 1);
}

TEST(ReaderContainer, NextKeepsAndAdvanceDropsDrainedReaders)
{
    test_support::TempDir dir;
    auto* first = new testing_reader::TestReader(u"A", dir.write("a.eml", "1 0 0037001F a\n===\n1 0 0037001F b\n"));
    auto* second = new testing_reader::TestReader(u"B", dir.write("b.eml", "1 0 0037001F c\n"));
    ASSERT_TRUE(first->init());
    ASSERT_TRUE(second->init());
    mcl::ReaderContainer container;
    container.add(first);
    container.add(second);
    second->release();
    EXPECT_EQ(first->getRefCount(), 2);
    EXPECT_TRUE(container.next());
    EXPECT_FALSE(container.next());
    EXPECT_EQ(container.current(), first);
    EXPECT_TRUE(container.advance());  // first has no more: dropped
    EXPECT_EQ(container.current(), second);
    EXPECT_EQ(first->getRefCount(), 1);
    first->release();
    EXPECT_FALSE(container.advance());
    EXPECT_EQ(container.current(), nullptr);
}

}  // namespace
