// How a message is cut into parts: the boundary search, the two shapes of a body, the pass limit
// and the parse modes. Every expected list is traced by hand through the scan.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "mime/mime.h"
#include "mime_test_helpers.h"

namespace {

using mime_test::crlf;
using mime_test::header;
using mime_test::partsOf;
using mime_test::str;

using Summary = std::vector<std::pair<std::string, std::string>>;  // type and body of each part

Summary parseToSummary(CMime& mime, const std::string& message)
{
    EXPECT_EQ(mime_test::parse(mime, message), 1);
    Summary out;
    for (const CMimePart* part : partsOf(mime)) out.emplace_back(str(part->contentType), part->body);
    return out;
}

TEST(PartStructure, PreambleAndEpilogueBecomeParts)
{
    CMime mime;
    Summary parts = parseToSummary(mime, crlf("From: a@b\n"
                                              "Content-Type: multipart/mixed; boundary=\"XYZ\"\n\n"
                                              "preamble\n"
                                              "--XYZ\nContent-Type: text/plain\n\nhello\n"
                                              "--XYZ\nContent-Type: application/octet-stream\n"
                                              "Content-Transfer-Encoding: base64\n\nZm9vYmFy\n"
                                              "--XYZ--\n\nepilogue\n"));
    // The root's body is its header block up to the line before "boundary=".
    EXPECT_EQ(parts, (Summary{{"multipart/mixed", "From: a@b\r\n"},
                              {"", "preamble\r\n"},
                              {"text/plain", "hello\r\n"},
                              {"application/octet-stream", "foobar"},
                              {"", "epilogue\r\n"}}));
    EXPECT_EQ(mime.root(), mime.first());
    EXPECT_EQ(mime.root()->bodyOffset, 11u);
    EXPECT_EQ(mime.inlineCount(), 1u);
    EXPECT_EQ(mime.attachmentCount(), 0u);
}

TEST(PartStructure, PartWithoutHeadersDependsOnTheLineEnds)
{
    // The byte after a boundary goes with it. With CRLF that is the CR, and the LF and the blank
    // line close an empty header block; with LF alone the header scan takes the blank line, and
    // the boundary line before it was skipped as a line that is no field.
    const std::string message =
        "Content-Type: multipart/mixed; boundary=XYZ\n\n"
        "--XYZ\n\nplain words\n"
        "--XYZ\nContent-Type: text/html\n\n<p>hi</p>\n"
        "--XYZ--\n";
    CMime lf, withCrlf;
    // "Content-Type" is the first line: the walk back to a line break stops at the start.
    EXPECT_EQ(parseToSummary(lf, message),
              (Summary{{"multipart/mixed", "C"}, {"", "plain words\n"}, {"text/html", "<p>hi</p>\n"}}));
    EXPECT_EQ(lf.root()->bodyOffset, 0u);
    EXPECT_EQ(parseToSummary(withCrlf, crlf(message)), (Summary{{"multipart/mixed", "C"},
                                                                {"", "-"},
                                                                {"", "plain words\r\n"},
                                                                {"text/html", "<p>hi</p>\r\n"}}));
}

TEST(PartStructure, NestedMultipartsFormOneFlatList)
{
    CMime mime;
    Summary parts = parseToSummary(mime, crlf("Content-Type: multipart/mixed; boundary=\"outer\"\n"
                                              "Subject: nested\n\n"
                                              "--outer\nContent-Type: multipart/alternative; boundary=\"inner\"\n\n"
                                              "--inner\nContent-Type: text/plain\n\nplain\n"
                                              "--inner\nContent-Type: text/html\n\n<b>html</b>\n"
                                              "--inner--\n\n"
                                              "--outer\nContent-Type: application/pdf; name=\"a.pdf\"\n"
                                              "Content-Disposition: attachment\n\nPDFDATA\n"
                                              "--outer--\n"));
    EXPECT_EQ(parts, (Summary{{"multipart/mixed", "C"},
                              {"", "-"},
                              {"multipart/alternative", "\n"},
                              {"", "-"},
                              {"text/plain", "plain\r\n"},
                              {"text/html", "<b>html</b>\r\n"},
                              {"", "-"},
                              {"application/pdf", "PDFDATA\r\n"}}));
    std::vector<const CMimePart*> list = partsOf(mime);
    EXPECT_EQ(header(*list[1], "Subject"), "nested");  // the rest of the root's header block
    EXPECT_EQ(list[2]->bodyOffset, 1u);                // a nested multipart keeps its header block
    EXPECT_TRUE(list[7]->flags & CMimePart::kAttachment);
    EXPECT_EQ(mime.attachmentCount(), 1u);
    EXPECT_EQ(mime.last(), list[7]);
    for (size_t k = 1; k < list.size(); ++k) EXPECT_EQ(list[k]->prev, list[k - 1]);
}

TEST(PartStructure, BoundaryMatchesAnywhereInALine)
{
    // Inside a longer boundary-like text, and inside a body line without "--".
    CMime prefix, inLine;
    EXPECT_EQ(parseToSummary(prefix, crlf("Content-Type: multipart/mixed; boundary=ab\n\n"
                                          "--ab\nContent-Type: text/plain\n\none\n"
                                          "--abc\nContent-Type: text/plain\n\ntwo\n"
                                          "--ab--\n")),
              (Summary{{"multipart/mixed", "C"}, {"", "-"}, {"text/plain", "one\r\n"}, {"text/plain", "two\r\n"}}));
    EXPECT_EQ(parseToSummary(inLine, crlf("Content-Type: multipart/mixed; boundary=SEP\n\n"
                                          "--SEP\nContent-Type: text/plain\n\nfirst line\ntext with SEP inside\n"
                                          "--SEP--\n")),
              (Summary{{"multipart/mixed", "C"}, {"", "-"}, {"text/plain", "first line\r\n"}}));
}

TEST(PartStructure, MissingBoundariesRunTheBodyToTheEnd)
{
    CMime unfinished, never;
    EXPECT_EQ(parseToSummary(unfinished, crlf("Content-Type: multipart/mixed; boundary=XYZ\n\n"
                                              "--XYZ\nContent-Type: text/plain\n\nunfinished\nmore\n")),
              (Summary{{"multipart/mixed", "C"}, {"", "-"}, {"text/plain", "unfinished\r\nmore\r\n"}}));
    EXPECT_EQ(parseToSummary(never, crlf("Content-Type: multipart/mixed; boundary=NEVER\nSubject: s1\n\ntext\n")),
              (Summary{{"multipart/mixed", "C"}, {"", "text\r\n"}}));
}

TEST(PartStructure, ShapesOfTheBody)
{
    // A single-part root: the whole message, the content after the header block.
    CMime single;
    std::string message = crlf("Subject: hello\nTo: a@b\n\nline one\n");
    ASSERT_EQ(mime_test::parse(single, message), 1);
    EXPECT_EQ(single.root()->body, message);
    EXPECT_EQ(single.root()->bodyOffset, 27u);
    EXPECT_EQ(single.root()->content(), "line one\r\n");
    EXPECT_EQ(str(single.root()->contentType), "text/plain");

    // A message root: only what follows its header block.
    CMime embedded;
    EXPECT_EQ(parseToSummary(embedded, crlf("Content-Type: message/rfc822\n\nFrom: x@y\n\ninner\n")),
              (Summary{{"message/rfc822", crlf("From: x@y\n\ninner\n")}}));

    // A multipart that is an attachment: like any other part, with its own boundary.
    CMime attached;
    EXPECT_EQ(parseToSummary(attached, crlf("Content-Type: multipart/mixed; boundary=OUT\n\n"
                                            "--OUT\nContent-Type: multipart/alternative; boundary=IN\n"
                                            "Content-Disposition: attachment\n\npreface\n"
                                            "--IN\nContent-Type: text/plain\n\nx\n--OUT--\n")),
              (Summary{{"multipart/mixed", "C"},
                       {"", "-"},
                       {"multipart/alternative", "preface\r\n"},
                       {"text/plain", "x\r\n"}}));
}

std::string messageOfParts(int count)
{
    std::string message = "Content-Type: multipart/mixed; boundary=SEP\n\n";
    for (int k = 1; k <= count; ++k) message += "--SEP\nContent-Type: text/plain\n\nbody " + std::to_string(k) + "\n";
    return crlf(message + "--SEP--\n");
}

TEST(PartStructure, HundredPassesAtMost)
{
    // The root and the "-" before the first child take two passes.
    CMime many, fewer;
    EXPECT_EQ(mime_test::parse(many, messageOfParts(150)), 1);
    EXPECT_EQ(many.partCount(), 100u);
    EXPECT_EQ(many.last()->body, "body 98\r\n");
    EXPECT_EQ(mime_test::parse(fewer, messageOfParts(50)), 1);
    EXPECT_EQ(fewer.partCount(), 52u);
}

TEST(PartStructure, ParseModes)
{
    CMime single;
    EXPECT_EQ(mime_test::parse(single, messageOfParts(3), CMime::kModeSinglePass), 1);
    EXPECT_EQ(single.partCount(), 1u);
    EXPECT_EQ(single.first(), single.root());

    CMime quick;
    EXPECT_EQ(mime_test::parse(quick, crlf("Subject: quick\n") + messageOfParts(3), CMime::kModeHeadersOnly), 1);
    EXPECT_EQ(quick.partCount(), 0u);
    EXPECT_EQ(quick.first(), nullptr);
    ASSERT_NE(quick.root(), nullptr);
    EXPECT_EQ(header(*quick.root(), "Subject"), "quick");
    EXPECT_EQ(str(quick.root()->boundary), "SEP");
    EXPECT_TRUE(quick.root()->body.empty());

    // Each parse starts afresh; clearing keeps the initial setting.
    ASSERT_EQ(mime_test::parse(quick, messageOfParts(3)), 1);
    EXPECT_EQ(quick.partCount(), 5u);
    quick.clear();
    EXPECT_EQ(quick.root(), nullptr);
    EXPECT_EQ(quick.partCount(), 0u);
    EXPECT_EQ(quick.initialSetting(), 3u);

    EXPECT_EQ(quick.parse(nullptr, 10, 0), 0);
    EXPECT_EQ(quick.parse("x", 0, 0), 0);
}

TEST(PartStructure, NamedOrBinaryPartsCountAsInline)
{
    CMime mime;
    parseToSummary(mime, crlf("Content-Type: multipart/mixed; boundary=SEP\n\n"
                              "--SEP\nContent-Type: text/plain; name=notes.txt\n\nnotes\n"
                              "--SEP\nContent-Type: IMAGE/png\n\npng\n"
                              "--SEP\nContent-Type: TEXT/html\n\nhtml\n"
                              "--SEP\nContent-Type: image/gif\nContent-Disposition: attachment\n\ngif\n"
                              "--SEP--\n"));
    EXPECT_EQ(mime.inlineCount(), 2u);
    EXPECT_EQ(mime.attachmentCount(), 1u);
    for (const CMimePart* part : partsOf(mime))
        EXPECT_EQ(bool(part->flags & CMimePart::kInlineBinary), part->body == "notes\r\n" || part->body == "png\r\n");
}

}  // namespace
