// Damaged and hostile input gives a shorter result, never a crash, an overrun or a hang: the
// sanitizer build checks the memory, the time limits a scan that is not linear.
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>

#include "mime/mime.h"
#include "mime_test_helpers.h"

namespace {

using mime_test::crlf;
using mime_test::header;

// Parses in every mode and writes the result out; gives the seconds it took.
double parseEveryWay(const std::string& message)
{
    auto start = std::chrono::steady_clock::now();
    for (uint32_t mode : {0u, CMime::kModeSinglePass, CMime::kModeHeadersOnly}) {
        CMime mime;
        EXPECT_EQ(mime_test::parse(mime, message, mode), message.empty() ? 0 : 1);
        for (CMimePart* part = mime.first(); part; part = part->next) {
            EXPECT_LE(part->bodyOffset, part->bodySize());
            EXPECT_EQ(mime.decodeBody(*part), 1);
        }
        std::string out(mime.serialize(nullptr, 0) + 1, '\0');
        EXPECT_LT(mime.serialize(out.data(), out.size()), out.size());
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(HostileInput, DataEndingInsideTheHeaderLosesThePart)
{
    CMime mime;
    for (const std::string& message : {std::string("Subject: never ends"), crlf("From: a@b\nSubject: hi\n"),
                                       std::string("\r\n")}) {
        EXPECT_EQ(mime_test::parse(mime, message), 1);
        EXPECT_EQ(mime.root(), nullptr) << message;
        parseEveryWay(message);
    }
    // Two line breaks make a blank line: a root without fields, whose body is all of it.
    ASSERT_EQ(mime_test::parse(mime, "\r\n\r\n"), 1);
    EXPECT_EQ(mime.root()->body, "\r\n\r\n");
    EXPECT_EQ(mime.root()->bodyOffset, 4u);
    parseEveryWay(crlf("Content-Type: multipart/mixed; boundary=X\n\n--X\nContent-Type: text/plain"));
}

TEST(HostileInput, NulBytes)
{
    const char raw[] = "Sub\0ject: x1\r\nTo: a\0b\r\nContent-Type: multipart/mixed; boundary=Q\0R\r\n\r\n"
                       "--Q\0R\r\n\r\nbody\0body\r\n--Q\0R--\r\n";
    std::string message(raw, sizeof raw - 1);
    CMime mime;
    ASSERT_EQ(mime_test::parse(mime, message), 1);
    EXPECT_EQ(header(*mime.root(), "Sub"), "<absent>");
    EXPECT_EQ(header(*mime.root(), "To"), std::string("a\0b", 3));
    EXPECT_EQ(mime_test::str(mime.root()->boundary), "Q");
    parseEveryWay(message);
    parseEveryWay(std::string(1000, '\0'));
}

TEST(HostileInput, MegabyteLines)
{
    std::string value(1 << 20, 'x');
    CMime mime;
    ASSERT_EQ(mime_test::parse(mime, "Subject: " + value + "\r\n\r\nbody\r\n"), 1);
    EXPECT_EQ(header(*mime.root(), "Subject"), value);
    EXPECT_LT(parseEveryWay("Subject: " + value + "\r\n\r\nbody\r\n"), 5.0);
    EXPECT_LT(parseEveryWay("Subject: " + value), 5.0);

    // Parameter fields of a hundred thousand entries, of separators only, of sections only.
    std::string params, sections;
    while (params.size() < (1u << 20)) params += "; a" + std::to_string(params.size() % 977) + "=\"v\"";
    while (sections.size() < (1u << 20)) sections += "[;";
    EXPECT_LT(parseEveryWay("Content-Type: multipart/mixed" + params + "; boundary=B\r\n" +
                            "Content-Disposition: x" + params + "\r\n\r\n--B\r\n\r\nx\r\n"),
              5.0);
    EXPECT_LT(parseEveryWay("Content-Type: a" + std::string(1 << 20, ';') + "\r\n\r\n"), 5.0);
    EXPECT_LT(parseEveryWay("Content-Type: a" + sections + "\r\n\r\n"), 5.0);
}

TEST(HostileInput, BoundarySearchStaysLinear)
{
    // A long boundary, and a body that nearly matches it everywhere.
    std::string boundary(1000, 'a'), body;
    while (body.size() < (2u << 20)) body += std::string(999, 'a') + "b";
    EXPECT_LT(parseEveryWay("Content-Type: multipart/mixed; boundary=" + boundary + "\r\n\r\n--" + boundary +
                            "\r\nContent-Type: text/plain\r\n\r\n" + body),
              5.0);
    // A hundred nested boundaries that never come again, each looked for in the rest.
    std::string nested = "Content-Type: multipart/mixed; boundary=b0\r\n\r\n";
    for (int k = 1; k < 120; ++k)
        nested += "--b" + std::to_string(k - 1) + "\r\nContent-Type: multipart/mixed; boundary=b" +
                  std::to_string(k) + "\r\n\r\n";
    EXPECT_LT(parseEveryWay(nested + std::string(256 << 10, 'b')), 5.0);
}

TEST(HostileInput, RandomBytes)
{
    std::mt19937 random(20240611);
    std::string alphabet = "\r\n\r\n:;=\"<>-- \t[]#%ab09ZB\x80\xff";
    alphabet += '\0';
    for (int round = 0; round < 300; ++round) {
        std::string message = round % 3 ? "" : "Content-Type: multipart/mixed; boundary=--\r\n\r\n";
        for (size_t i = random() % 600; i > 0; --i) message += alphabet[random() % alphabet.size()];
        parseEveryWay(message);
    }
}

}  // namespace
