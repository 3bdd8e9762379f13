#include <gtest/gtest.h>

#include <filesystem>

#include "core/mail_item.h"
#include "core/session.h"
#include "mime/eml_reader.h"
#include "support/temp_dir.h"

namespace {

std::u16string corpus(const std::string& name)
{
    return ty::utf8ToWide(std::string(PARCELET_CORPUS_DIR) + "/eml/" + name);
}

std::u16string sample() { return ty::utf8ToWide(std::string(PARCELET_SOURCE_DIR) + "/samples/welcome.eml"); }

// An item read through the session, released at the end of the test.
class EmlTest : public ::testing::Test {
protected:
    mcl::MailItem* read(const std::u16string& path)
    {
        if (item) item->release();
        item = session.readFile(path, false);
        return item;
    }
    mcl::MailItem* readText(const std::string& text, const std::string& name = "m.eml")
    {
        return read(dir.write(name, text));
    }
    void TearDown() override
    {
        if (item) item->release();
    }

    mcl::Session session;
    mcl::MailItem* item = nullptr;
    test_support::TempDir dir;
};

TEST(TagForType, BodiesAttachmentsAndTheRest)
{
    EXPECT_EQ(mcl::tagForType("text/plain"), 0x1000001Fu);
    EXPECT_EQ(mcl::tagForType("Text/HTML"), 0x1013001Fu);
    EXPECT_EQ(mcl::tagForType("text/rtf"), 0x10090102u);
    EXPECT_EQ(mcl::tagForType("text/calendar"), 0x1000001Fu);
    EXPECT_EQ(mcl::tagForType("message/rfc822"), 0x37000000u);
    EXPECT_EQ(mcl::tagForType("x-foo/bar"), 0xF001001Fu);
    EXPECT_EQ(mcl::tagForType("multipart/mixed"), 0xF001001Fu);
}

TEST_F(EmlTest, TheBundledSample)
{
    ASSERT_NE(read(sample()), nullptr) << ty::wideToUtf8(session.getError()->getDescription());
    EXPECT_EQ(item->getFileType(), FileEML);
    EXPECT_EQ(item->getSubject(), u"Welcome to Parcelet \u2014 a sample message");
    EXPECT_EQ(item->getFrom(), u"Zoe Parcel <zoe@example.org>");
    EXPECT_EQ(item->getTo()->toString(u';'), u"Ann Reader <ann@example.org>; Lee, Bob <bob@example.org>");
    EXPECT_EQ(item->getCC()->toString(u';'), u"team@example.org");
    EXPECT_TRUE(item->hasAttachments());
    mcl::Attachments* list = item->getAttachments();
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->count(), 2u);
    EXPECT_EQ(list->getAttachment(0)->getFileName(false), u"parcel.png");
    EXPECT_EQ(list->getAttachment(0)->getType(), AttachEmbeddedByValue);
    EXPECT_EQ(list->getAttachment(0)->getCid(), u"parcel@example.org");
    EXPECT_EQ(list->getAttachment(1)->getFileName(false), u"notes.txt");
    EXPECT_EQ(list->getAttachment(1)->getSize(), 78u);
    std::u16string html = item->getBodyText(BodyHTML);
    EXPECT_NE(html.find(u"src=\"t_file_at0.png\""), std::u16string::npos);
    EXPECT_NE(item->getBodyText(BodyPlainText).find(u"Caf\u00E9 cr\u00E8me"), std::u16string::npos);
}

}  // namespace

namespace {

TEST_F(EmlTest, EveryCorpusMessageLoadsWhole)
{
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(std::string(PARCELET_CORPUS_DIR) + "/eml")) {
        SCOPED_TRACE(entry.path().filename().string());
        ASSERT_NE(read(ty::utf8ToWide(entry.path().string())), nullptr);
        EXPECT_NE(item->getProperties(), nullptr);
        ASSERT_NE(item->getAttachments(), nullptr);
        item->getBodyText(BodyPlainText);
        item->getFrom();
        item->getTo();
        ++files;
    }
    EXPECT_EQ(files, 37);
}

struct CorpusCase {
    const char* file;
    const char16_t* subject;
    const char16_t* senderAddress;
    size_t recipients;
    std::vector<std::pair<std::u16string, uint64_t>> attachments;  // file name, size (0 unless by value)
};

TEST_F(EmlTest, CorpusFacts)
{
    const CorpusCase cases[] = {
        {"mail__basic_email.eml", u"Testing 123", u"test@lindsaar.net", 1, {}},
        {"tika__testRFC822_multipart_attachments.eml", u"EML 1", u"Bugs.Bunny@acme.com", 1,
         {{u"Test TxtA.txt", 33}, {u"Test TxtB.txt", 33}}},
        {"msgreader-sicos__TestWithAttachments.eml", u"FW: Test with attachments", u"keesvanspelde@hotmail.com", 1,
         {{u"hamster.jpg", 186412}, {u"elmo.jpg", 65743}, {u"xietje.jpg", 1805083}}},
        {"mail__raw_email_with_nested_attachment.eml", u"Testing attachments", u"jamis@37signals.com", 1,
         {{u"truncated.png", 1902}, {u"smime.p7s", 939}}},
        {"tika__testEML_embedded_xhtml_and_img.eml", u"This is the subject", u"sender@test.com", 1,
         {{u"testimage.jpeg", 4699}}},
        // "nsb (Nathaniel Borenstein)" has no domain: a name without an address. The unencoded part
        // keeps the line break before its boundary.
        {"mimekit__startrek.eml", u"Star Trek Party!", u"", 20,
         {{u"noname_attachment", 22964}, {u"noname_attachment", 18971}, {u"noname_attachment", 13619},
          {u"noname_attachment", 8847}, {u"noname_attachment", 34894}}},
        // message/* parts are attachments named by their own subject, or "Unknown".
        {"mimekit__disposition-notification.eml", u"Disposition notification", u"Joe_Recipient@example.com", 1,
         {{u"Unknown.eml", 265}, {u"First draft of report.eml", 346}}},
        {"mail__japanese_shift_jis.eml", u"test", u"xxxxxxx@docomo.ne.jp", 1, {}},
        {"mimekit__issue358.eml", u"R: R: R: I: FR-selca LA selcaE", u"jang.abcdef@xyzlinux12345678.it", 1, {}},
        {"mail__encoding_madness.eml",
         u"eBay Bid - 2008 Ford Super Duty F-350 DRW King Ranch Crew Cab 4x4 (156) - Stock# XXXX",
         u"no-reply@crm.el-example.org", 1, {}},
        {"msgreader-sicos__TestWithInlineHavingContentDisposition.eml", u"Sujet %%%%%%%%%%%%%%%%%%%%%%%%%%%%%%",
         u"Peter.Mueller@domain.ch", 2, {{u"Outlook-facebook.png", 0}, {u"attachment.txt", 18}}},
        // The sender's name is an encoded word: the address behind it is still found.
        // Its message/rfc822 parts hold "Attachment Content", no message: named "Unknown.eml".
        {"msgreader-sicos__TestWithAttachmentsAndInlines.eml", u"Object - subject", u"Peter.Mueller@domain.ch", 2,
         {{u"Outlook-facebook.png", 0}, {u"attachment1f.txt", 18}, {u"attachment2f.txt", 18},
          {u"attachment4f.txt", 18}, {u"Unknown.eml", 18}, {u"Unknown.eml", 18}}},
    };
    for (const CorpusCase& c : cases) {
        SCOPED_TRACE(c.file);
        ASSERT_NE(read(corpus(c.file)), nullptr);
        EXPECT_EQ(item->getSubject(), c.subject);
        EXPECT_EQ(item->getSenderAddress(), c.senderAddress);
        EXPECT_EQ(item->getTo()->count() + item->getCC()->count() + item->getBCC()->count(), c.recipients);
        mcl::Attachments* list = item->getAttachments();
        ASSERT_NE(list, nullptr);
        ASSERT_EQ(list->count(), c.attachments.size());
        for (size_t i = 0; i < c.attachments.size(); ++i) {
            EXPECT_EQ(list->getAttachment(i)->getFileName(false), c.attachments[i].first) << i;
            EXPECT_EQ(list->getAttachment(i)->getSize(), c.attachments[i].second) << i;
        }
    }
}

}  // namespace

namespace {

TEST_F(EmlTest, WinmailDatTakesTheMessagesPlace)
{
    ASSERT_NE(read(corpus("mimekit__ukr.eml")), nullptr);
    mcl::Attachments* list = item->getAttachments();
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->count(), 0u);  // the TNEF stream holds no attachment, and isn't one itself
    mcl::MailProperties* props = item->getHeaderProperties();
    EXPECT_EQ(props->getString(0x001A001F, 0), u"IPM.Microsoft Mail.Note");
    EXPECT_NE(item->getBodyText(BodyHTML).find(u"<html>"), std::u16string::npos);
    EXPECT_EQ(item->getSubject(), u"rr test 7");
}

TEST_F(EmlTest, FailuresKeepTheirWords)
{
    EXPECT_EQ(readText(""), nullptr);
    EXPECT_EQ(session.getError()->text, u"Unable to read zero length file");
    EXPECT_EQ(session.getError()->source, u"mcl::EMLReader::addProperties");
    ASSERT_NE(readText("Subject: x\r\n\r\nbody"), nullptr);
    uint32_t filter = 1;
    EXPECT_FALSE(item->getReader()->loadByID(item->getHeaderProperties(), &filter, u"1"));
    EXPECT_EQ(item->getReader()->getError()->code, 0x80004001u);
}

TEST_F(EmlTest, HeaderModeWritesTheHeadersOnly)
{
    mcl::MailItem* header = session.readHeaderFromFile(sample(), false);
    ASSERT_NE(header, nullptr);
    mcl::MailProperties* props = header->getHeaderProperties();
    EXPECT_NE(props->findProperty(0x0E080003), nullptr);
    EXPECT_EQ(header->getSubject(), u"Welcome to Parcelet \u2014 a sample message");
    EXPECT_EQ(props->findProperty(0x37000000), nullptr);
    EXPECT_EQ(props->findProperty(0x1013001F), nullptr);
    header->release();
}

TEST_F(EmlTest, PartsAreWrittenOnceOverSeveralLoads)
{
    ASSERT_NE(read(sample()), nullptr);
    ASSERT_NE(item->getAttachments(), nullptr);
    size_t rows = 0;
    std::vector<mcl::MailProperty*> out;
    rows = static_cast<size_t>(item->getHeaderProperties()->collect(out, 0x37000000, 0, false, 0, 0xFFFFFFFF));
    ASSERT_NE(item->getProperties(), nullptr);  // loads the rest, attachments not again
    out.clear();
    EXPECT_EQ(static_cast<size_t>(item->getHeaderProperties()->collect(out, 0x37000000, 0, false, 0, 0xFFFFFFFF)),
              rows);
}

TEST_F(EmlTest, SavingWritesTheMessageBack)
{
    ASSERT_NE(read(sample()), nullptr);
    ASSERT_TRUE(item->save(dir.wide("copy.eml")));
    mcl::MailItem* copy = session.readFile(dir.wide("copy.eml"), false);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->getSubject(), item->getSubject());
    copy->release();
}

}  // namespace
