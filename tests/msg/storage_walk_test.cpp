// The walk of a message file built by hand: which sections each filter takes, where fixed-size
// lists begin, the values as they are stored, and a tree of properties that mirrors the storages.
#include <gtest/gtest.h>

#include <cstring>

#include "foundation/win_time.h"
#include "msg_fixture.h"

namespace {

using msg_test::below;
using msg_test::fixedList;
using msg_test::le;
using msg_test::Loaded;
using msg_test::utf16;

constexpr uint32_t kSubject = 0x0037001F;
constexpr uint32_t kFlags = 0x0E070003;
constexpr uint32_t kIcon = 0x10800003;
constexpr uint32_t kSubmitTime = 0x00390040;

// Entries that a header of the wrong size would read: ids 0x6666 at byte 8 and 0x7777 at 24.
const std::string kBogusHeader =
    std::string(8, '\0') + le(3, 2) + le(0x6666, 2) + std::string(12, '\0') + le(3, 2) + le(0x7777, 2);

// Root, recipient, two attachments; the first holds a message with a recipient and an
// attachment of its own; the second an empty object storage and an empty data stream.
std::string sampleMessage()
{
    cfb::CompoundFileWriter writer;
    cfb::CfbNode& root = writer.root;
    root.addStream(u"__properties_version1.0",
                   fixedList(32,
                             {{3, 0x0E07, 0x11},
                              {0x40, 0x0039, 133486382456780000},  // 2024-01-02 03:04:05.678 UTC
                              {0x40, 0x3007, 0x8000000000000000},  // beyond what FILETIME converts
                              {3, 0x1080, 7},
                              {0x1F, 0x0037, 0},
                              {0, 0, 0xDDCCBBAA00260003}},  // tag 0: its value is read as the next entry
                             kBogusHeader) +
                       le(9, 8));
    root.addStream(u"__substg1.0_0037001F", utf16(u"Hello\r\n") + std::string(2, '\0'));
    root.addStream(u"__substg1.0_1000001E", std::string("Body\r\n\0", 7));
    root.addStream(u"__substg1.0_0E1D001F", "");
    root.addStorage(u"__nameid_version1.0").addStream(u"__substg1.0_00020102", std::string(16, 'g'));
    cfb::CfbNode& recipient = root.addStorage(u"__recip_version1.0_#00000000");
    recipient.addStream(u"__properties_version1.0", fixedList(8, {{3, 0x0C15, 1}}));
    recipient.addStream(u"__substg1.0_3001001F", utf16(u"Ann"));
    cfb::CfbNode& embedded = root.addStorage(u"__attach_version1.0_#00000000").addStorage(u"__substg1.0_3701000D");
    embedded.addStream(u"__properties_version1.0", fixedList(24, {{3, 0x0E07, 0x22}}, kBogusHeader));
    embedded.addStream(u"__substg1.0_0037001F", utf16(u"Inner"));
    embedded.addStorage(u"__recip_version1.0_#00000000").addStream(u"__substg1.0_3001001F", utf16(u"Bob"));
    embedded.addStorage(u"__attach_version1.0_#00000000").addStream(u"__substg1.0_37010102", "deep bytes");
    cfb::CfbNode& second = root.addStorage(u"__attach_version1.0_#00000001");
    second.addStorage(u"__substg1.0_3701000D");
    second.addStream(u"__substg1.0_37010102", "");
    return writer.build();
}

mcl::MailProperty* only(const mcl::MailProperties& props, uint32_t tag, uint32_t parent, size_t index = 0)
{
    std::vector<mcl::MailProperty*> found = below(props, tag, parent);
    return index < found.size() ? found[index] : nullptr;
}

TEST(MsgWalk, EachFilterTakesItsSections)
{
    struct Case {
        uint32_t filter;
        bool subject, icon, recipient, attachment, nameMap;
    };
    for (const Case& c : {Case{1, true, true, true, false, true}, Case{2, true, true, false, false, true},
                          Case{4, false, false, false, true, false}, Case{8, true, false, true, false, false},
                          Case{135, true, true, true, true, true}}) {
        SCOPED_TRACE(c.filter);
        Loaded loaded(sampleMessage(), c.filter);
        ASSERT_TRUE(loaded.ok);
        const mcl::MailProperties& props = loaded.props;
        EXPECT_EQ(only(props, kSubject, 0) != nullptr, c.subject);
        EXPECT_EQ(only(props, kSubmitTime, 0) != nullptr, c.subject);  // header fields, in the list of filter 8
        EXPECT_EQ(only(props, kFlags, 0) != nullptr, c.subject);
        EXPECT_EQ(only(props, kIcon, 0) != nullptr, c.icon);
        EXPECT_EQ(only(props, 0x00010000, 0) != nullptr, c.nameMap);
        mcl::MailProperty* recipient = only(props, mcl::kRecipientRow, 0);
        ASSERT_EQ(recipient != nullptr, c.recipient);
        if (recipient) {  // a recipient, once taken, comes whole
            EXPECT_EQ(props.getString(0x3001001F, recipient->id()), u"Ann");
            EXPECT_NE(only(props, 0x0C150003, recipient->id()), nullptr);
        }
        mcl::MailProperty* attachment = only(props, mcl::kAttachmentRow, 0);
        ASSERT_EQ(attachment != nullptr, c.attachment);
        if (attachment) {  // and so does an attachment, attached message included
            mcl::MailProperty* inner = only(props, 0x3701000D, attachment->id());
            ASSERT_NE(inner, nullptr);
            EXPECT_EQ(props.getString(kSubject, inner->id()), u"Inner");
            EXPECT_NE(only(props, mcl::kRecipientRow, inner->id()), nullptr);
        }
    }
}

TEST(MsgWalk, FixedListsBeginAfterTheirHeadersAndHoldTheirValues)
{
    Loaded loaded(sampleMessage(), 135);
    const mcl::MailProperties& props = loaded.props;
    EXPECT_EQ(only(props, kFlags, 0)->valueU32(), 0x11u);
    EXPECT_EQ(only(props, kIcon, 0)->name(), u"10800003");
    EXPECT_EQ(only(props, 0x0C150003, only(props, mcl::kRecipientRow, 0)->id())->valueU32(), 1u);
    mcl::MailProperty* inner = only(props, 0x3701000D, only(props, mcl::kAttachmentRow, 0)->id());
    EXPECT_EQ(only(props, kFlags, inner->id())->valueU32(), 0x22u);
    for (size_t i = 0; i < props.count(); ++i) {
        EXPECT_NE(mcl::propId(props.at(i)->tag()), 0x6666);
        EXPECT_NE(mcl::propId(props.at(i)->tag()), 0x7777);
    }
    // The entry after one of tag 0 is read from that entry's value bytes, and takes the next
    // entry's first bytes for its value.
    ASSERT_NE(only(props, 0x00260003, 0), nullptr);
    EXPECT_EQ(only(props, 0x00260003, 0)->valueU32(), 9u);

    ty::SystemTime time;
    ASSERT_EQ(only(props, kSubmitTime, 0)->size(), 16u);
    std::memcpy(&time, only(props, kSubmitTime, 0)->bytes(), sizeof time);
    EXPECT_EQ(time, (ty::SystemTime{2024, 1, 2, 2, 3, 4, 5, 678}));  // a Tuesday
    EXPECT_EQ(msg_test::bytesOf(only(props, 0x30070040, 0)), std::string(16, '\0'));
}

TEST(MsgWalk, StringStreamsHaveTheirTrailingLineEndsBlanked)
{
    Loaded loaded(sampleMessage(), 1);
    EXPECT_EQ(msg_test::bytesOf(only(loaded.props, kSubject, 0)), utf16(u"Hello") + std::string(6, '\0'));
    EXPECT_EQ(loaded.props.getString(0x1000001F), u"Body");  // narrow, blanked, then widened
}

TEST(MsgWalk, StoragesAlwaysLeaveARowAndEmptyStreamsNothing)
{
    Loaded loaded(sampleMessage(), 135);
    const mcl::MailProperties& props = loaded.props;
    EXPECT_EQ(props.findProperty(0x0E1D001F), nullptr);
    mcl::MailProperty* second = only(props, mcl::kAttachmentRow, 0, 1);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->name(), u"__attach_version1.0_#00000001");
    EXPECT_EQ(msg_test::bytesOf(second), utf16(u"__attach_version1.0_#00000001"));
    mcl::MailProperty* object = only(props, 0x3701000D, second->id());
    ASSERT_NE(object, nullptr);
    EXPECT_TRUE(below(props, 0, object->id()).empty());
    EXPECT_EQ(only(props, 0x37010102, second->id()), nullptr);
    // Three levels down: the attached message's own attachment.
    mcl::MailProperty* inner = only(props, 0x3701000D, only(props, mcl::kAttachmentRow, 0)->id());
    mcl::MailProperty* deep = only(props, mcl::kAttachmentRow, inner->id());
    ASSERT_NE(deep, nullptr);
    EXPECT_EQ(msg_test::bytesOf(only(props, 0x37010102, deep->id())), "deep bytes");
}

TEST(MsgWalk, TheTagIsTheTextAfterTheLastUnderscore)
{
    for (auto [name, tag] : {std::pair{u"__substg1.0_0037001F", u"0037001F"}, {u"a_b_c", u"c"},
                             {u"__substg1.0_101F001F-00000001", u"101F001F-00000001"}, {u"trailing_", u""},
                             {u"none", u""}})
        EXPECT_EQ(mcl::MSGReader::getPropTag(name), tag);
}

}  // namespace
