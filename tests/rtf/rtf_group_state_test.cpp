// The tags that formatting changes become, group by group, and the font stack beside the groups.
#include <gtest/gtest.h>

#include <string>

#include "rtf/rtf_group_state.h"

namespace {

using mcl::RtfFontTable;
using mcl::RtfGroupState;

const char* const kDocument =
    "{\\rtf1{\\fonttbl{\\f1\\fmodern\\fcharset128 Courier New;}{\\f2\\fswiss\\fcharset204 Arial;}}}";

struct GroupState : ::testing::Test {
    RtfFontTable fonts{kDocument};
    RtfGroupState state{fonts};
    std::u16string taken()
    {
        std::u16string text;
        state.takeTagBuffer(text);
        return text;
    }
};

TEST_F(GroupState, SizeTagsInHalfPoints)
{
    state.pushGroup();
    EXPECT_TRUE(state.setSize(24));
    EXPECT_EQ(taken(), u"<FONT style=\"font-size:12.0pt;\"> ");
    EXPECT_TRUE(state.setSize(21));
    EXPECT_EQ(taken(), u"</FONT><FONT style=\"font-size:10.0pt;\"> ");
    EXPECT_FALSE(state.setSize(21));
    EXPECT_TRUE(state.setSize(mcl::kNoSize));
    EXPECT_EQ(taken(), u"</FONT>");
}

TEST_F(GroupState, FontTagsNameTheFont)
{
    state.pushGroup();
    EXPECT_TRUE(state.setFont(1));
    EXPECT_EQ(taken(), u"<FONT style=\"font-family:Courier New;\"> ");
    EXPECT_TRUE(state.setFont(7));
    EXPECT_EQ(taken(), u"</FONT><FONT style=\"font-family:Arial;\"> ");
}

TEST_F(GroupState, PopClosesInOrder)
{
    state.pushGroup();
    state.setBold(1);
    state.setSize(24);
    state.setItalic(1);
    taken();
    EXPECT_TRUE(state.popGroup());
    EXPECT_EQ(taken(), u"</I></B></FONT>");
    EXPECT_FALSE(state.popGroup());
}

TEST_F(GroupState, FontStackFollowsTheGroups)
{
    state.pushGroup();
    state.changeFont(1);
    EXPECT_EQ(fonts.currentCharset(), "CP932");
    state.pushGroup();  // inherits font 1
    state.changeFont(2);
    EXPECT_EQ(fonts.currentCharset(), "CP1251");
    state.popGroup();
    EXPECT_EQ(fonts.currentCharset(), "CP932");
    state.popGroup();  // back to the initial entry, no font
    EXPECT_EQ(fonts.currentCharset(), "");
    state.popGroup();  // the stack is now empty: none is selected
    EXPECT_EQ(fonts.selectedFont(), mcl::kNoFont);
    state.changeFont(2);  // nothing to set, but the charset is still selected
    EXPECT_EQ(fonts.currentCharset(), "CP1251");
}

}  // namespace
