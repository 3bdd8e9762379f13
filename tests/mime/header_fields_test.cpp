// How header fields are read: what is stored, what is skipped, and the fields the parser reads
// into a part for itself.
#include <gtest/gtest.h>

#include <string>

#include "mime/mime.h"
#include "mime_test_helpers.h"

namespace {

using mime_test::crlf;
using mime_test::header;
using mime_test::str;

// The root of a single-part message with these header lines.
const CMimePart& rootOf(CMime& mime, const std::string& headerLines)
{
    EXPECT_EQ(mime_test::parse(mime, crlf(headerLines + "\n\nbody\n")), 1);
    return *mime.root();
}

TEST(HeaderFields, WhatIsStored)
{
    CMime mime;
    const CMimePart& root = rootOf(mime,
                                   "Subject: x\nTo: xy\nCc:\n"               // one character or none: not stored
                                   "X-Folded: first\n second\n\tthird\n"    // folds stay in the value
                                   "Keywords:   a b\t   \n"                 // blanks trimmed, tabs not
                                   "X-Tag: one\nx-tag: two\n"               // names ignore case, the later wins
                                   "not a field\n"
                                   "\xef\xbb\xbf\x80 From: ab");             // high bytes and blanks before a name
    EXPECT_EQ(header(root, "Subject"), "<absent>");
    EXPECT_EQ(header(root, "To"), "xy");
    EXPECT_EQ(header(root, "Cc"), "<absent>");
    EXPECT_EQ(header(root, "X-Folded"), "first\r\n second\r\n\tthird");
    EXPECT_EQ(header(root, "Keywords"), "a b\t");
    EXPECT_EQ(header(root, "X-TAG"), "two");
    EXPECT_EQ(header(root, "From"), "ab");
    EXPECT_EQ(root.headers.size(), 5u);
}

TEST(HeaderFields, LineOfOneWordWithoutColonTakesTheNextLineWhenLinesEndInLf)
{
    // The line break ends the name and goes as the byte after it; the skip then runs to the end
    // of the following line. With CRLF only the LF is left to skip.
    const std::string message = "Subject: ab\ngarbage\nTo: cd\nFrom: ef\n\nbody\n";
    CMime lf, withCrlf;
    ASSERT_EQ(mime_test::parse(lf, message), 1);
    EXPECT_EQ(header(*lf.root(), "To"), "<absent>");
    EXPECT_EQ(header(*lf.root(), "From"), "ef");
    ASSERT_EQ(mime_test::parse(withCrlf, crlf(message)), 1);
    EXPECT_EQ(header(*withCrlf.root(), "To"), "cd");
}

TEST(HeaderFields, NameOf1100CharactersIsCutAndItsLineSkipped)
{
    CMime mime;
    const CMimePart& root =
        rootOf(mime, std::string(1100, 'N') + ": value\nTo: cd\n" + std::string(1023, 'M') + ": v1");
    EXPECT_EQ(root.headers.size(), 2u);
    EXPECT_EQ(header(root, "To"), "cd");
    EXPECT_EQ(header(root, std::string(1023, 'M')), "v1");
}

TEST(HeaderFields, ContentType)
{
    CMime mime;
    const CMimePart& root = rootOf(mime,
                                   "Content-Type: Text/Plain; charset=\"ISO-8859-1\"; name=a.txt\n"
                                   "Content-Type: multipart/mixed;\n name=\"b c.txt\"; boundary=\"abc \t\"");
    // The second field's text is kept, and it overwrites what it names: not the charset.
    EXPECT_EQ(header(root, "Content-Type"), "multipart/mixed;\r\n name=\"b c.txt\"; boundary=\"abc \t\"");
    EXPECT_EQ(str(root.contentType), "multipart/mixed");
    EXPECT_EQ(str(root.charset), "ISO-8859-1");
    EXPECT_EQ(str(root.name), "b c.txt");
    EXPECT_EQ(str(root.boundary), "abc");  // cut at the tab, trailing blank removed
}

TEST(HeaderFields, TransferEncodingLooksAtTheWordOnly)
{
    CMime a, b, c, d;
    EXPECT_EQ(rootOf(a, "Content-Transfer-Encoding: BASE64").encoding, CMimePart::kBase64);
    EXPECT_EQ(rootOf(b, "Content-Transfer-Encoding: Quoted-Printable").encoding, CMimePart::kQuotedPrintable);
    EXPECT_EQ(rootOf(c, "Content-Transfer-Encoding: base64x").encoding, CMimePart::kBase64);
    EXPECT_EQ(rootOf(d, "Content-Transfer-Encoding: 7bit").encoding, 0u);
}

TEST(HeaderFields, DispositionGivesAFileNameOnlyWhenTheValueStartsWithIt)
{
    CMime usual, bare, folded;
    const CMimePart& a = rootOf(usual, "Content-Disposition: attachment; filename=\"x.txt\"");
    EXPECT_TRUE(a.flags & CMimePart::kAttachment);
    EXPECT_TRUE(a.name.empty());
    const CMimePart& b = rootOf(bare, "Content-Disposition: filename=\"x.txt\"");
    EXPECT_FALSE(b.flags & CMimePart::kAttachment);
    EXPECT_EQ(str(b.name), "x.txt");
    // A fold puts a line break into the value: the name on the next line is an entry of its own.
    const CMimePart& c = rootOf(folded, "Content-Disposition: Attachment;\n filename=y.txt");
    EXPECT_TRUE(c.flags & CMimePart::kAttachment);
    EXPECT_EQ(str(c.name), "y.txt");
}

TEST(HeaderFields, ContentId)
{
    CMime a, b, c, d, e;
    EXPECT_EQ(str(rootOf(a, "Content-ID: <part1@example.com>").contentId), "part1@example.com");
    EXPECT_EQ(str(rootOf(b, "Content-ID: part1@example.com").contentId), "");
    EXPECT_EQ(str(rootOf(c, "Content-ID: <open-ended").contentId), "open-ended");
    EXPECT_EQ(str(rootOf(d, "Content-ID: <" + std::string(3000, 'i') + ">").contentId), std::string(1024, 'i'));
    // Too short to be stored, the value is still read.
    const CMimePart& shortValues = rootOf(e, "Content-ID: <\nContent-Type: x");
    EXPECT_EQ(header(shortValues, "Content-Type"), "<absent>");
    EXPECT_EQ(str(shortValues.contentType), "x");
}

TEST(HeaderFields, MissingContentTypeGivesTextPlainOnTheRootOnly)
{
    CMime plain, multi;
    EXPECT_EQ(str(rootOf(plain, "Subject: ab").contentType), "text/plain");
    ASSERT_EQ(mime_test::parse(
                  multi, crlf("Content-Type: multipart/mixed; boundary=XYZ\n\n--XYZ\nX-Other: ab\n\nbody\n--XYZ--\n")),
              1);
    const CMimePart& child = *mime_test::partsOf(multi).at(2);
    EXPECT_EQ(header(child, "X-Other"), "ab");
    EXPECT_TRUE(child.contentType.empty());
}

}  // namespace
