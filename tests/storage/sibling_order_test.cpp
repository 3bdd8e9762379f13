// The order of a storage's children: the sibling tree walked in order, which in a sound file is
// the format's name order (shorter first, then by upper-cased code units).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "storage/compound_file_writer.h"
#include "storage/directory_entry.h"
#include "storage/storage.h"
#include "tree_walk.h"

namespace {

std::vector<std::u16string> listRoot(const std::string& bytes)
{
    cfb::Storage root;
    EXPECT_EQ(cfb::openStorageMemory(bytes, root), cfb::S_OK_CODE);
    storage_test::WalkResult walk = storage_test::walkAll(root);
    EXPECT_EQ(walk.code, cfb::S_OK_CODE);
    return walk.listings[u""];
}

TEST(SiblingOrder, ComparesLengthFirstThenUpperCasedCodeUnits)
{
    EXPECT_LT(cfb::compareNames(u"Z", u"aa"), 0);     // shorter first, whatever the letters
    EXPECT_GT(cfb::compareNames(u"abc", u"ab"), 0);
    EXPECT_EQ(cfb::compareNames(u"Subject", u"SUBJECT"), 0);
    EXPECT_LT(cfb::compareNames(u"abc", u"ABD"), 0);
    // '_' (0x5F) sorts after 'Z' (0x5A) but before 'a' (0x61): upper-casing puts letters first.
    EXPECT_LT(cfb::compareNames(u"ZZ", u"_a"), 0);
    EXPECT_LT(cfb::compareNames(u"aa", u"_a"), 0);
    // Beyond ASCII: e acute and E acute are one name; A umlaut (0xC4) sorts after Z.
    EXPECT_EQ(cfb::compareNames(u"\u00E9t\u00E9", u"\u00C9T\u00C9"), 0);
    EXPECT_GT(cfb::compareNames(u"\u00E4", u"z"), 0);
}

TEST(SiblingOrder, EnumerationFollowsTheNameOrder)
{
    cfb::CompoundFileWriter writer(3);
    // Added in an order unlike the result; the expected order is worked out by hand.
    for (const char16_t* name : {u"_a", u"b", u"Ba", u"__substg1.0_0037001F", u"aa", u"A", u"ZZ", u"c",
                                 u"__nameid_version1.0", u"__properties_version1.0", u"ab"})
        writer.root.addStream(name, "x");
    std::vector<std::u16string> expected = {u"A",  u"b",  u"c",  u"aa", u"ab", u"Ba",
                                            u"ZZ", u"_a", u"__nameid_version1.0", u"__substg1.0_0037001F",
                                            u"__properties_version1.0"};
    EXPECT_EQ(listRoot(writer.build()), expected);
}

TEST(SiblingOrder, AnUnsortedTreeIsListedInTreeOrderAndStillFoundByName)
{
    cfb::CompoundFileWriter writer(3);
    writer.sortChildren = false;
    std::vector<std::u16string> names = {u"zeta", u"Alpha", u"mu", u"beta", u"Omega", u"a"};
    for (const auto& name : names) writer.root.addStream(name, std::string(name.begin(), name.end()));
    std::string bytes = writer.build();
    EXPECT_EQ(listRoot(bytes), names);
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(bytes, root), cfb::S_OK_CODE);
    for (const auto& name : names) {
        cfb::Stream stream;
        ASSERT_EQ(root.openStream(name, stream), cfb::S_OK_CODE);
        EXPECT_EQ(stream.size(), name.size());
    }
}

}  // namespace
