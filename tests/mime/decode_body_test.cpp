// Undoing the transfer encodings of parts, in both shapes of a body.
#include <gtest/gtest.h>

#include <string>

#include "mime/mime.h"
#include "mime_test_helpers.h"

namespace {

using mime_test::crlf;
using mime_test::header;

// The body of the one child of a multipart message, with these header lines and this content.
std::string childBody(const std::string& headerLines, const std::string& content, uint32_t* flags = nullptr)
{
    CMime mime;
    std::string message = crlf("Content-Type: multipart/mixed; boundary=SEP\n\n--SEP\n" + headerLines + "\n\n") +
                          content + crlf("\n--SEP--\n");
    EXPECT_EQ(mime_test::parse(mime, message), 1);
    EXPECT_EQ(mime.partCount(), 3u);  // the root, the "-" before the first boundary line, the child
    if (flags) *flags = mime.last()->flags;
    return mime.last()->body;
}

const std::string kBase64 = "Content-Transfer-Encoding: base64";
const std::string kQuoted = "Content-Transfer-Encoding: quoted-printable";

TEST(DecodeBody, Base64)
{
    uint32_t flags = 0;
    EXPECT_EQ(childBody(kBase64, crlf("Zm9v\nYmFy"), &flags), "foobar");
    EXPECT_TRUE(flags & CMimePart::kDecoded);
    // Decoding stops at the first padding, and an unpadded short group at the end is lost.
    EXPECT_EQ(childBody(kBase64, "Zg==Zm9v"), "f");
    EXPECT_EQ(childBody(kBase64, "Zm9vYg"), "foo");
    // Base-64 wins when both encodings were named.
    EXPECT_EQ(childBody(kQuoted + "\n" + kBase64, "PT0="), "==");
}

TEST(DecodeBody, Base64WithAForeignByteStaysAsItIs)
{
    uint32_t flags = 0;
    EXPECT_EQ(childBody(kBase64, "Zm9v*YmFy", &flags), crlf("Zm9v*YmFy\n"));
    EXPECT_TRUE(flags & CMimePart::kDecoded);
    // "@" decodes as a letter, but a body that holds one is no base-64 text.
    EXPECT_EQ(childBody(kBase64, "Zm9v@mFy"), crlf("Zm9v@mFy\n"));
}

TEST(DecodeBody, QuotedPrintableAndNone)
{
    EXPECT_EQ(childBody(kQuoted, crlf("caf=C3=A9 =\n\nend=3D")), crlf("caf\xc3\xa9 end=\n"));
    uint32_t flags = 0;
    EXPECT_EQ(childBody("Content-Transfer-Encoding: 8bit", "caf=C3=A9", &flags), crlf("caf=C3=A9\n"));
    EXPECT_FALSE(flags & CMimePart::kDecoded);
}

TEST(DecodeBody, Base64RootKeepsItsHeaderBlockInFront)
{
    std::string head = crlf("Subject: b64\n" + kBase64 + "\n\n");
    CMime mime;
    ASSERT_EQ(mime_test::parse(mime, head + crlf("Zm9vYmFy\n")), 1);
    EXPECT_EQ(mime.root()->body, head + "foobar");
    EXPECT_EQ(mime.root()->content(), "foobar");
}

TEST(DecodeBody, QuotedPrintableRootDecodesItsHeaderBlockToo)
{
    CMime mime;
    ASSERT_EQ(mime_test::parse(mime, crlf("Subject: =41=42\n" + kQuoted + "\n\ncaf=C3=A9\n")), 1);
    const CMimePart& root = *mime.root();
    EXPECT_EQ(root.body, crlf("Subject: AB\n" + kQuoted + "\n\ncaf\xc3\xa9\n"));
    EXPECT_EQ(header(root, "Subject"), "=41=42");  // read before the decoding
    // The offset of 64 stayed, then went back to a line start within the shorter body.
    EXPECT_EQ(root.bodyOffset, 60u);
    EXPECT_EQ(root.content(), crlf("caf\xc3\xa9\n"));
    // Once decoded, a body is not decoded again.
    CMimePart& again = *mime.root();
    EXPECT_EQ(mime.decodeBody(again), 1);
    EXPECT_EQ(again.content(), crlf("caf\xc3\xa9\n"));
}

TEST(DecodeBody, OffsetBeyondTheBodyLeavesNothingToDecode)
{
    CMime mime;
    CMimePart part;
    part.encoding = CMimePart::kBase64;
    part.body = "abc";
    part.bodyOffset = 10;
    EXPECT_EQ(mime.decodeBody(part), 1);
    EXPECT_EQ(part.body, "abc");
}

}  // namespace
