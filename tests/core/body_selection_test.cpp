#include <gtest/gtest.h>

#include "core/mail_item.h"
#include "support/temp_dir.h"
#include "test_reader.h"

namespace {

using testing_reader::TestReader;

class BodyTest : public ::testing::Test {
protected:
    mcl::MailItem* open(const std::string& text)
    {
        auto* reader = new TestReader(u"EML", dir.write("m.eml", text));
        EXPECT_TRUE(reader->init());
        item = new mcl::MailItem(reader, 1);
        reader->release();
        uint32_t filter = 1;
        reader->load(item->getHeaderProperties(), &filter);
        return item;
    }
    void TearDown() override
    {
        if (item) item->release();
    }

    test_support::TempDir dir;
    mcl::MailItem* item = nullptr;
};

const char kHtmlWithImage[] =
    "2 0 1013001F <p>Hi</p><img src=cid:abc><div style=\"background:url( cid:abc)\"></div>"
    "<i style=\"x:url(cid:abc )\"></i>\n"
    "4 0 row A 37000000\n"
    "4 A 3707001F a.png\n"
    "4 A 3712001F abc\n"
    "4 A 37010102 89504E47\n";

TEST(LinkNames, ByFileNameOrByIndexAndExtension)
{
    EXPECT_EQ(mcl::attachmentLinkName(u"photo.jpg", u"abc", 3), u"t_file_at3.jpg");
    EXPECT_EQ(mcl::attachmentLinkName(u"photo.jpg", u"", 3), u"photo.jpg");
    EXPECT_EQ(mcl::attachmentLinkName(u"", u"", 2), u"t_file_at2");
    EXPECT_EQ(mcl::fileExtension(u"a.tar.gz"), u".gz");
    EXPECT_EQ(mcl::quoteForPattern(u"a.b$[c] d\t#"), u"a\\.b\\$\\[c]\\ d\\\t\\#");
}

TEST_F(BodyTest, LinksStayUntilAttachmentsAreLoaded)
{
    open(kHtmlWithImage);
    EXPECT_NE(item->getBodyProp(BodyHTML)->toString().find(u"src=cid:abc"), std::u16string::npos);
    ASSERT_NE(item->getAttachments(), nullptr);
    std::u16string html = item->getBodyProp(BodyHTML)->toString();
    EXPECT_NE(html.find(u"<img src=\"t_file_at0.png\">"), std::u16string::npos) << ty::wideToUtf8(html);
    EXPECT_NE(html.find(u"url(t_file_at0.png)"), std::u16string::npos);
    EXPECT_NE(html.find(u"url(cid:abc )"), std::u16string::npos);  // no blank allowed after the id
}

TEST_F(BodyTest, LinkedByNameDropsTheBaseTag)
{
    open("2 0 1013001F <BASE href=\"http://x/\"><img src=\"Report\">\n"
         "4 0 row A 37000000\n4 A 3001001F Report\n4 A 37050003 5\n");
    item->getAttachments();
    EXPECT_EQ(item->getBodyProp(BodyHTML)->toString(), u"<img src=\"Report\">");
}

TEST_F(BodyTest, ProperBodyFollowsRtfSync)
{
    open("2 0 F1000102 7B5C727466317D\n2 0 1013001F <p>h</p>\n2 0 0E1F000B 0\n");
    EXPECT_EQ(item->getProperBodyType(), BodyHTML);
    item->release();
    open("2 0 F1000102 7B5C727466317D\n2 0 0E1F000B 0\n");
    EXPECT_EQ(item->getProperBodyType(), BodyNone);
    ASSERT_NE(item->getBodyProp(BodyRTF), nullptr);
    EXPECT_EQ(item->getBodyText(BodyRTF), u"{\\rtf1}");
    item->release();
    open("2 0 F1000102 7B5C727466317D\n2 0 1000001F plain\n");
    EXPECT_EQ(item->getProperBodyType(), BodyRTF);
    item->release();
    open("1 0 001A001F IPM.Contact\n2 0 1000001F plain\n");
    EXPECT_EQ(item->getProperBodyType(), BodyHTML);
    item->release();
    open("1 0 0037001F nothing\n");
    EXPECT_EQ(item->getProperBodyType(), BodyNone);
}

TEST_F(BodyTest, PlainTextIsMadeFromHtmlWhenMissing)
{
    open("2 0 1013001F <html><body><p>Hello <b>there</b></p><p>Bye</p></body></html>\n");
    EXPECT_EQ(item->getBodyText(BodyPlainText), u"Hello there\n\nBye");
    EXPECT_EQ(item->getBodyText(BodyRTF), u"");
}

TEST_F(BodyTest, NarrowHtmlByTheMessageCodePageAndBinaryHtmlByTheSystems)
{
    open("1 0 3FDE0003 1251\n2 0 1013001E <p>\xC0\xE1</p>\n");
    EXPECT_EQ(item->getBodyText(BodyHTML), u"<p>\u0410\u0431</p>");
    item->release();
    open("1 0 3FDE0003 1251\n2 0 10130102 3C703EC0E13C2F703E\n");
    EXPECT_EQ(item->getBodyText(BodyHTML), u"<p>\u00C0\u00E1</p>");
    EXPECT_EQ(item->getBodyProp(BodyHTML)->tag(), 0x1013001Fu);
}

TEST_F(BodyTest, ExportWritesUtf16WithAMarkAndSavesLinkedAttachments)
{
    open(kHtmlWithImage);
    EXPECT_FALSE(item->exportBody(BodyHTML, u"name.html"));
    EXPECT_EQ(item->getError()->text, u"Absolute path with file name required.");
    ASSERT_TRUE(item->exportBody(BodyHTML, dir.wide("out.html")));
    std::string bytes = dir.read("out.html");
    ASSERT_GE(bytes.size(), 4u);
    EXPECT_EQ(bytes.substr(0, 4), std::string("\xFF\xFE<\0", 4));
    EXPECT_EQ(dir.read("t_file_at0.png"), "\x89PNG");
    ASSERT_TRUE(item->exportBody(BodyPlainText, dir.wide("out.txt")));
    EXPECT_EQ(dir.read("out.txt"), std::string("\xFF\xFEH\0i\0", 6));
    EXPECT_FALSE(item->exportBody(7, dir.wide("other.bin")));
}

}  // namespace
