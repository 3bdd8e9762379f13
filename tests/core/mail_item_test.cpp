#include <gtest/gtest.h>

#include "core/context.h"
#include "core/mail_item.h"
#include "support/temp_dir.h"
#include "test_reader.h"

namespace {

using testing_reader::TestReader;

// An item on a test reader over the given text, loaded with filter 1 as the session does.
class ItemTest : public ::testing::Test {
protected:
    mcl::MailItem* open(const std::string& text)
    {
        reader = new TestReader(u"EML", dir.write("m.eml", text));
        EXPECT_TRUE(reader->init());
        item = new mcl::MailItem(reader, 1);
        reader->release();
        uint32_t filter = 1;
        EXPECT_TRUE(reader->load(item->getHeaderProperties(), &filter));
        return item;
    }
    void TearDown() override
    {
        if (item) item->release();
    }

    test_support::TempDir dir;
    TestReader* reader = nullptr;
    mcl::MailItem* item = nullptr;
};

TEST_F(ItemTest, SenderAndOnBehalfOf)
{
    open("1 0 0042001F Ann Lee\n"
         "1 0 0065001F <ann@x.org>\n"
         "1 0 0064001F SMTP\n"
         "1 0 3FFA001F Assistant\n");
    EXPECT_EQ(item->getSenderName(), u"Ann Lee");
    EXPECT_EQ(item->getSenderAddress(), u"ann@x.org");
    EXPECT_EQ(item->getSenderAddressType(), AddressSMTP);
    EXPECT_EQ(item->getFrom(), u"Assistant on behalf of Ann Lee <ann@x.org>");
}

TEST_F(ItemTest, SameCreatorNameOrNoSenderHasNoOnBehalf)
{
    open("1 0 0C1A001F Ann\n1 0 3FF8001F Ann\n");
    EXPECT_EQ(item->getFrom(), u"Ann");
    item->release();
    open("1 0 3FF8001F Someone\n");
    EXPECT_EQ(item->getFrom(), u"");
}

TEST_F(ItemTest, UnsentDraftHasNoTimes)
{
    mcl::Context context;
    context.setDateFormat(u"yyyy'-'MM'-'dd");
    context.setTimeFormat(u"HH':'mm");
    open("1 0 00390040 2024-03-01 10:20:30\n1 0 0E060040 2024-03-02 11:00:00\n");
    EXPECT_EQ(item->getSubmitTime(), u"2024-03-01 10:20");
    EXPECT_EQ(item->getDeliveryTime(), u"2024-03-02 11:00");
    item->release();
    open("1 0 00390040 2024-03-01 10:20:30\n1 0 0E070003 9\n");
    EXPECT_EQ(item->getSubmitTime(), u"");
}

TEST_F(ItemTest, FixedListMarkerRowHoldsTimesEntryAndNid)
{
    mcl::Context context;
    context.setDateFormat(u"yyyy");
    context.setTimeFormat(u"HH");
    open("1 0 row M F0130102\n"
         "1 M 00390040 2020-06-01 08:00:00\n"
         "1 M 0FFF0102 A1B2\n"
         "1 M F1200102 0100000000000000\n");
    EXPECT_EQ(item->getSubmitTime(), u"2020 08");
    EXPECT_EQ(item->getEntryID(), u"A1B2");
    EXPECT_EQ(item->getNid(), 1u);
    item->release();
    open("1 0 F1200102 01000000\n");
    EXPECT_EQ(item->getNid(), 0u);  // not 8 bytes
}

TEST_F(ItemTest, SimpleGetters)
{
    open("1 0 0070001F Topic only\n1 0 0E080003 1234\n1 0 0E070003 16\n1 0 F012001F /\n");
    EXPECT_EQ(item->getSubject(), u"Topic only");
    EXPECT_EQ(item->getSize(), 1234u);
    EXPECT_TRUE(item->hasAttachments());
    EXPECT_EQ(item->getPath(), u"/");
    EXPECT_EQ(reader->filtersSeen.size(), 1u);  // none of these loads
}

TEST_F(ItemTest, PresentationKindBySubstringInOrder)
{
    const std::pair<const char*, uint32_t> cases[] = {
        {"IPM.Note", 0},          {"IPM.Task", 1},           {"IPM.TaskRequest", 1},
        {"IPM.Appointment.X", 3}, {"IPM.Contact", 2},        {"IPM.Activity", 4},
        {"IPM.DistList", 5},      {"REPORT.IPM.Note.NDR", 6}, {"X.IPM.Task.IPM.Contact", 1},
    };
    for (const auto& [messageClass, kind] : cases) {
        open(std::string("1 0 001A001F ") + messageClass + "\n");
        EXPECT_EQ(item->presentationKind(), kind) << messageClass;
        item->release();
        item = nullptr;
    }
}

TEST_F(ItemTest, LazyLoadsAskOnlyForMissingSections)
{
    open("1 0 0037001F S\n2 0 1000001F Body\n4 0 row A 37000000\n4 A 3707001F a.txt\n128 0 00FF0003 1\n");
    ASSERT_NE(item->getAttachments(), nullptr);
    EXPECT_NE(item->getProperties(), nullptr);
    EXPECT_EQ(reader->filtersSeen, (std::vector<uint32_t>{1, 4, 130}));
    EXPECT_EQ(item->getLoaded(), 135u);
    EXPECT_NE(item->getProperties(), nullptr);
    EXPECT_EQ(reader->filtersSeen.size(), 3u);
}

TEST_F(ItemTest, SaveLoadsTheMissingBasicSectionsAndKeepsOnlyThose)
{
    open("1 0 0037001F S\n");
    ASSERT_NE(item->getAttachments(), nullptr);  // loaded = 5
    EXPECT_TRUE(item->save(u"/out/m.eml"));
    EXPECT_EQ(reader->lastSavedPath, u"/out/m.eml");
    EXPECT_EQ(reader->filtersSeen.back(), 2u);
    EXPECT_EQ(item->getLoaded(), 2u);  // the bits just fetched, not their union
}

TEST_F(ItemTest, AttachmentsFromRows)
{
    open("4 0 row A 37000000\n"
         "4 A 3001001F Picture\n"
         "4 A 3712001F image1@x\n"
         "4 A 37010102 FFD8FF\n"
         "4 A 37050003 1\n"
         "4 0 row E 37000000\n"
         "4 0 row B 37000000\n"
         "4 B 370E001F Multipart/Signed\n"
         "4 B 37010102 00\n"
         "4 0 row M 37000000\n"
         "4 M 37050003 5\n"
         "4 0 row O 37000000\n"
         "4 O row D 3701000D\n"
         "4 D 001A001F IPM.Note\n");
    mcl::Attachments* list = item->getAttachments();
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->count(), 4u);  // the empty row is left out
    mcl::Attachment* picture = list->getAttachment(0);
    EXPECT_EQ(picture->getType(), AttachEmbeddedByValue);
    EXPECT_EQ(picture->getCid(), u"image1@x");
    EXPECT_EQ(picture->getSize(), 0u);  // sizes only for by-value and OLE
    EXPECT_EQ(picture->getFileName(false), u"Picture");
    EXPECT_EQ(picture->getFileName(true), u"");
    mcl::Attachment* signedPart = list->getAttachment(1);
    EXPECT_EQ(signedPart->getType(), AttachByValue);
    EXPECT_EQ(signedPart->getFileName(true), u"SignedMessage.eml");
    EXPECT_EQ(signedPart->getSize(), 1u);
    EXPECT_EQ(list->getAttachment(2)->getType(), AttachEmbeddedMsg);
    EXPECT_EQ(list->getAttachment(2)->getName(false), u"noname");
    EXPECT_EQ(list->getAttachment(2)->getFileName(false), u"noname_attachment");
    EXPECT_EQ(list->getAttachment(3)->getType(), AttachEmbeddedMsg);  // object with a message class below
    EXPECT_EQ(list->getAttachment(4), nullptr);
    EXPECT_EQ(list->getError()->text, u"Out of range");
    EXPECT_EQ(list->getError()->source, u"mcl::Attachments::getAttachment");
}

TEST_F(ItemTest, SavingAttachments)
{
    open("4 0 row A 37000000\n4 A 37010102 414243\n4 0 row B 37000000\n4 B 3001001F Empty\n"
         "4 0 row M 37000000\n4 M 37050003 5\n");
    mcl::Attachments* list = item->getAttachments();
    ASSERT_EQ(list->count(), 3u);
    std::u16string path = dir.write("out.bin", "older and longer content");
    EXPECT_TRUE(list->getAttachment(0)->save(path));
    EXPECT_EQ(dir.read("out.bin"), "ABC");  // replaced
    EXPECT_TRUE(list->getAttachment(1)->saveBin(dir.wide("empty.bin")));
    EXPECT_EQ(dir.read("empty.bin"), "");
    EXPECT_FALSE(list->getAttachment(0)->saveBin(dir.wide("no/such/dir")));
    EXPECT_EQ(list->getAttachment(0)->getError()->source, u"mcl::Attachment::saveBin");
    EXPECT_TRUE(list->getAttachment(2)->save(u"/x/embedded.msg"));  // handed to the reader
    EXPECT_EQ(reader->lastSavedPath, u"/x/embedded.msg");
}

}  // namespace
