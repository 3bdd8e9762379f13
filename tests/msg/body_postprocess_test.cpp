// The pages made for tasks, contacts, appointments and journal entries, the HTML body turned
// from bytes into text, and the two renderers.
#include <gtest/gtest.h>

#include "msg/renderers.h"
#include "msg_fixture.h"
#include "support/temp_dir.h"

namespace {

using msg_test::fixedList;
using msg_test::utf16;

const std::u16string kHead =
    u"<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" \"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">"
    u"<html xmlns=\"http://www.w3.org/1999/xhtml\"><head>"
    u"<meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\" /><title></title></head><body>";

struct Stream {
    const char16_t* name;
    std::string bytes;
};

// The HTML body of a message of the class with the streams and fixed-size values given.
std::u16string htmlBodyOf(const std::u16string& messageClass, const std::vector<Stream>& streams,
                          const std::vector<msg_test::FixedEntry>& values = {}, uint32_t* tag = nullptr)
{
    cfb::CompoundFileWriter writer;
    writer.root.addStream(u"__properties_version1.0", fixedList(32, values));
    writer.root.addStream(u"__substg1.0_001A001F", utf16(messageClass));
    for (const Stream& s : streams) writer.root.addStream(s.name, s.bytes);
    msg_test::Loaded loaded(writer.build(), 1);
    mcl::MailProperty* html = loaded.props.findMasked(0x10130000, 0xFFFF0000, 0);
    if (!html) return u"(none)";
    if (tag) *tag = html->tag();
    return html->toString();
}

TEST(MsgBodyPostprocess, ItemsThatArentMailGetAPageOfTheirProperties)
{
    struct Case {
        std::u16string messageClass;
        std::vector<Stream> streams;
        std::vector<msg_test::FixedEntry> values;
        std::u16string page;  // between the head and the closing tags
    };
    const Case cases[] = {
        {u"IPM.Task",
         {{u"__substg1.0_0037001F", utf16(u"Do it")}},
         {{3, 0x0026, 2}, {3, 0x0017, 1}},
         u"<p>TASK</p><p>\nSubject: Do it</p><p>\nPriority: 2</p><p>\nImportance: 1</p><p>\nNotes:\n</p>"},
        {u"IPM.Contact",
         {{u"__substg1.0_3001001F", utf16(u"Ann Lee")}, {u"__substg1.0_3A1C001F", utf16(u"555")}},
         {},
         u"<p>CONTACT</p><p>\nName: Ann Lee</p><p>\nMobile Phone: 555</p><p>\nNotes:\n</p>"},
        {u"IPM.Appointment",
         {{u"__substg1.0_0E04001F", utf16(u"Bob")},
          {u"__substg1.0_8005001F", utf16(u"Room 1")},
          {u"__substg1.0_8007001F", utf16(u"Room 2")},
          {u"__substg1.0_1000001F", utf16(u"Agenda")}},
         {},
         u"<p>APPOINTMENT</p><p>\nLocation: Room 1</p><p>\nLocation: Room 2</p><p>\nTo: Bob</p>"
         u"<p>\nAttendees: Bob</p><p>\nNotes:\nAgenda</p>"},
        {u"IPM.Activity", {{u"__substg1.0_1000001F", utf16(u"Called <Ann>")}}, {}, u"<p>Called <Ann></p>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(ty::wideToUtf8(c.messageClass));
        EXPECT_EQ(htmlBodyOf(c.messageClass, c.streams, c.values), kHead + c.page + u"</body></html>");
    }
    // The class is compared whole and with its case.
    EXPECT_EQ(htmlBodyOf(u"IPM.Task.Custom", {{u"__substg1.0_0037001F", utf16(u"Do it")}}), u"(none)");
    EXPECT_EQ(htmlBodyOf(u"ipm.task", {}), u"(none)");
}

TEST(MsgBodyPostprocess, AnHtmlBodyOfBytesIsDecodedByItsCharset)
{
    // "Привет" in windows-1251 and in KOI8-R.
    const std::string cp1251 = "\xCF\xF0\xE8\xE2\xE5\xF2", koi8 = "\xF0\xD2\xC9\xD7\xC5\xD4";
    uint32_t tag = 0;
    std::u16string html = htmlBodyOf(
        u"IPM.Note",
        {{u"__substg1.0_10130102",
          "<html><HEAD><META HTTP-EQUIV=\"Content-Type\" CONTENT=\"text/html; charset=windows-1251\"></HEAD>"
          "\n<p>" + cp1251 +
              "</p></html>"}},
        {{3, 0x3FDE, 20866}}, &tag);
    EXPECT_EQ(tag, 0x1013001Fu);
    EXPECT_EQ(html, u"<html><HEAD>\n<p>Привет</p></html>");  // the declaration is gone with the rest of its line
    // Without a declaration, the message's code page decides.
    EXPECT_EQ(htmlBodyOf(u"IPM.Note.Custom", {{u"__substg1.0_10130102", "<p>" + koi8 + "</p>"}}, {{3, 0x3FDE, 20866}}),
              u"<p>Привет</p>");
    // Text already stored as text is left as it is.
    EXPECT_EQ(htmlBodyOf(u"IPM.Note", {{u"__substg1.0_1013001F", utf16(u"<p>as is</p>")}}), u"<p>as is</p>");
    EXPECT_EQ(htmlBodyOf(u"IPM.Note", {}), u"(none)");
}

TEST(MsgRenderers, TextRendererWritesXhtmlAndHtmlRendererPlainText)
{
    mul::TextRenderer xhtml;
    xhtml.bold(u"b");
    xhtml.preformatted(u"pre");
    xhtml.rule();
    EXPECT_EQ(xhtml.renderedText(), kHead + u"<b>b</b><pre>pre</pre><hr/></body></html>");
    EXPECT_EQ(xhtml.renderedText(), kHead + u"<b>b</b><pre>pre</pre><hr/></body></html></body></html>");

    mul::HtmlRenderer text;
    text.bold(u"b");
    text.paragraph(u"p");
    text.preformatted(u"pre");
    text.rule();
    EXPECT_EQ(text.renderedText(), u"b\np\npre\n\n");
    test_support::TempDir dir;
    ASSERT_TRUE(text.saveUtf16(dir.wide("wide.txt")));
    EXPECT_EQ(dir.read("wide.txt"), std::string("\xFF\xFE", 2) + utf16(u"b\np\npre\n\n"));
    EXPECT_FALSE(mul::HtmlRenderer().saveUtf16(dir.wide("empty.txt")));
}

}  // namespace
