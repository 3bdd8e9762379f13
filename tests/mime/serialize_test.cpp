// Writing a parsed message back out, with its losses, and the file operations.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "mime/mime.h"
#include "mime_test_helpers.h"
#include "support/temp_dir.h"

namespace {

using mime_test::crlf;

const std::string kMessage = crlf(
    "Subject: hi\nContent-Type: multipart/mixed; boundary=XYZ\n\n"
    "--XYZ\nContent-Type: text/plain\nContent-Transfer-Encoding: base64\n\nZm9vYmFy\n"
    "--XYZ\nContent-Type: text/plain\nContent-Transfer-Encoding: quoted-printable\n\na=3Db\n"
    "--XYZ--\n");

// Parts: the root (body: the line before "boundary="), "-", base-64, quoted-printable. Headers
// sorted without regard to case; the root's stored header block again as its body; base-64
// encoded again; quoted-printable lost; no closing delimiter.
const std::string kWritten = crlf(
    "Content-Type: multipart/mixed; boundary=XYZ\nSubject: hi\n\nSubject: hi\n"
    "\n\n--XYZ\n"
    "\n-"
    "\n\n--XYZ\n"
    "Content-Transfer-Encoding: base64\nContent-Type: text/plain\n\nZm9vYmFy"
    "\n\n--XYZ\n"
    "Content-Transfer-Encoding: quoted-printable\nContent-Type: text/plain\n\n");

TEST(Serialize, WritesPartsWithTheirLosses)
{
    CMime mime;
    ASSERT_EQ(mime_test::parse(mime, kMessage), 1);
    ASSERT_EQ(mime.partCount(), 4u);
    std::string out(4096, '#');
    size_t written = mime.serialize(out.data(), out.size());
    EXPECT_EQ(out.substr(0, written + 1), kWritten + '\0');
    // Measuring counts the NUL, and encodedLength + 4 = 12 for the 8 base-64 characters.
    EXPECT_EQ(mime.serialize(nullptr, 0), kWritten.size() + 4 + 1);

    std::string small(40, '#');
    small += "GUARD";
    mime.serialize(small.data(), 40);
    EXPECT_EQ(small, kWritten.substr(0, 40) + "GUARD");
}

TEST(SaveFile, WritesExactlyTheMeasuredBytes)
{
    CMime mime;
    ASSERT_EQ(mime_test::parse(mime, kMessage), 1);
    test_support::TempDir dir;
    std::string path = dir.path("out.eml").string();
    ASSERT_EQ(mime.saveFile(path), 1);
    // The text, its NUL, and the unused margin of the base-64 part as zeros.
    EXPECT_EQ(dir.read("out.eml"), kWritten + std::string(5, '\0'));

    ASSERT_EQ(mime_test::parse(mime, crlf("Subject: ab\n\nx\n")), 1);
    ASSERT_EQ(mime.saveFile(path), 1);
    EXPECT_EQ(dir.read("out.eml"), crlf("Subject: ab\n\nSubject: ab\n\nx\n") + '\0');

    EXPECT_EQ(mime.saveFile(dir.path("missing/out.eml").string()), 0);
}

TEST(SaveFile, EmptyMessageWritesNothing)
{
    CMime mime;
    EXPECT_EQ(mime.serialize(nullptr, 0), 0u);
    // Headers only: a root, but no list.
    ASSERT_EQ(mime_test::parse(mime, crlf("Subject: ab\n\nx\n"), CMime::kModeHeadersOnly), 1);
    EXPECT_EQ(mime.serialize(nullptr, 0), 0u);
    test_support::TempDir dir;
    EXPECT_EQ(mime.saveFile(dir.path("empty.eml").string()), 1);
    EXPECT_FALSE(std::filesystem::exists(dir.path("empty.eml")));
}

TEST(LoadFile, ReadsWholeFilesOnly)
{
    test_support::TempDir dir;
    dir.write("in.eml", kMessage);
    dir.write("empty.eml", "");
    CMime mime;
    EXPECT_EQ(mime.loadFile(dir.path("in.eml").string(), 0), 1);
    EXPECT_EQ(mime.partCount(), 4u);
    EXPECT_EQ(mime.loadFile(dir.path("in.eml").string(), CMime::kModeSinglePass), 1);
    EXPECT_EQ(mime.partCount(), 1u);
    EXPECT_EQ(mime.loadFile(dir.path("none.eml").string(), 0), 0);
    EXPECT_EQ(mime.loadFile(dir.path("empty.eml").string(), 0), 0);
}

}  // namespace
