// Every message of the shared corpus parses in every mode, and facts read off the files hold:
// the root's type, the decoded size of each base-64 part outside embedded messages (as Python's
// email and base64 modules decode them), and the part counts of a few files traced by hand.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "mime/ascii.h"
#include "mime/mime.h"
#include "mime_test_helpers.h"

namespace {

namespace fs = std::filesystem;
using Decoded = std::vector<std::pair<std::string, size_t>>;  // type, decoded size

struct Facts {
    std::string rootType;
    Decoded decoded;
};

const std::map<std::string, Facts> kFacts = {
    {"langchain__example.mht", {"multipart/related", {}}},
    {"mail__attachment_message_rfc822.eml", {"multipart/mixed", {}}},
    {"mail__attachment_message_rfc822_inline_image.eml", {"multipart/mixed", {{"image/png", 370}}}},
    {"mail__attachment_nonascii_filename.eml", {"multipart/mixed", {}}},
    {"mail__attachment_with_encoded_name.eml", {"multipart/mixed", {{"application/octet-stream", 399}}}},
    {"mail__attachment_with_quoted_filename.eml", {"multipart/mixed", {{"image/jpeg", 1952}}}},
    {"mail__basic_email.eml", {"text/plain", {}}},
    {"mail__content_transfer_encoding_x_uuencode.eml", {"multipart/mixed", {}}},
    {"mail__encoding_madness.eml", {"text/plain", {}}},
    {"mail__example14.eml", {"text/plain", {}}},
    {"mail__japanese_attachment_long_name.eml", {"multipart/mixed", {}}},
    {"mail__japanese_iso_2022.eml", {"text/plain", {}}},
    {"mail__japanese_shift_jis.eml", {"text/plain", {}}},
    {"mail__ks_c_5601-1987.eml", {"text/plain", {}}},
    {"mail__multipart_report_multiple_status.eml", {"multipart/report", {}}},
    {"mail__raw_email.eml", {"text/plain", {{"text/plain", 72}}}},
    {"mail__raw_email_bad_time.eml", {"multipart/alternative", {}}},
    {"mail__raw_email_with_nested_attachment.eml",
     {"multipart/signed", {{"image/png", 1902}, {"application/pkcs7-signature", 939}}}},
    {"mimekit__bounce.eml", {"multipart/report", {{"text/plain", 1365}}}},
    {"mimekit__delivery-status.eml", {"multipart/report", {}}},
    {"mimekit__disposition-notification.eml", {"multipart/report", {}}},
    {"mimekit__epilogue.eml", {"multipart/mixed", {{"application/postscript", 0}}}},
    {"mimekit__issue358.eml", {"multipart/alternative", {}}},
    {"mimekit__japanese.eml", {"text/plain", {}}},
    {"mimekit__multipart-digest.eml", {"message/rfc822", {}}},
    {"mimekit__multipart-related-mhtml.eml", {"multipart/related", {{"image/png", 889}}}},
    {"mimekit__simple-embedded-message.eml", {"multipart/mixed", {}}},
    {"mimekit__startrek.eml",
     {"multipart/mixed", {{"audio/basic", 22964}, {"image/gif", 18971}, {"image/gif", 13619}, {"audio/basic", 34894}}}},
    {"mimekit__ukr.eml", {"multipart/mixed", {{"application/ms-tnef", 9566}}}},
    {"msgreader-sicos__EmailWithISO_8859_1_From.eml", {"text/plain", {}}},
    {"msgreader-sicos__TestWithAttachments.eml",
     {"multipart/mixed", {{"image/jpeg", 186412}, {"image/jpeg", 65743}, {"image/jpeg", 1805083}}}},
    {"msgreader-sicos__TestWithAttachmentsAndInlines.eml",
     {"multipart/mixed",
      {{"image/png", 1725}, {"text/plain", 18}, {"text/plain", 18}, {"text/plain", 18}, {"text/plain", 18}}}},
    {"msgreader-sicos__TestWithInlineHavingContentDisposition.eml",
     {"multipart/mixed", {{"image/png", 1725}, {"text/plain", 18}}}},
    // Broken Subject folds make other readers end its header block early; this scan reads on to
    // the base-64 body.
    {"msgreader-sicos__UTF-8_Test.eml", {"text/plain", {{"text/plain", 86}}}},
    {"tika__testEML_embedded_xhtml_and_img.eml", {"multipart/related", {{"image/jpeg", 4699}}}},
    {"tika__testMHTMLFirefox.mhtml", {"multipart/related", {{"image/png", 2897}}}},
    {"tika__testRFC822_multipart_attachments.eml",
     {"multipart/mixed", {{"text/plain", 73}, {"text/html", 151}, {"text/plain", 33}, {"text/plain", 33}}}},
};

const fs::path kDir = fs::path(PARCELET_CORPUS_DIR) / "eml";

std::string lower(std::string_view text)
{
    std::string out(text);
    for (char& c : out) c = mime::asciiLower(c);
    return out;
}

Decoded decodedParts(const CMime& mime)
{
    Decoded out;
    for (const CMimePart* part : mime_test::partsOf(mime)) {
        std::string type = lower(part->contentType);
        if ((part->encoding & CMimePart::kBase64) && type.rfind("multipart/", 0) && type.rfind("message/", 0))
            out.emplace_back(type, part->content().size());
    }
    return out;
}

TEST(CorpusEml, EveryFileParsesInEveryModeAndKeepsItsFacts)
{
    size_t files = 0;
    for (const auto& entry : fs::directory_iterator(kDir)) {
        std::string name = entry.path().filename().string();
        SCOPED_TRACE(name);
        ++files;
        auto facts = kFacts.find(name);
        ASSERT_NE(facts, kFacts.end());
        for (uint32_t mode : {0u, CMime::kModeSinglePass, CMime::kModeHeadersOnly}) {
            CMime mime;
            ASSERT_EQ(mime.loadFile(entry.path().string(), mode), 1);
            ASSERT_NE(mime.root(), nullptr);
            EXPECT_EQ(lower(mime.root()->contentType), facts->second.rootType);
            if (mode == 0) {
                EXPECT_EQ(decodedParts(mime), facts->second.decoded);
                EXPECT_GT(mime.serialize(nullptr, 0), 0u);
            } else {
                EXPECT_EQ(mime.partCount(), mode == CMime::kModeSinglePass ? 1u : 0u);
            }
        }
    }
    EXPECT_EQ(files, kFacts.size());
}

TEST(CorpusEml, PartCountsTracedByHand)
{
    const std::map<std::string, uint32_t> counts = {{"langchain__example.mht", 3},
                                                    {"mail__attachment_message_rfc822.eml", 4},
                                                    {"mimekit__disposition-notification.eml", 5},
                                                    {"mimekit__multipart-digest.eml", 1}};
    for (const auto& [name, count] : counts) {
        CMime mime;
        ASSERT_EQ(mime.loadFile((kDir / name).string(), 0), 1);
        EXPECT_EQ(mime.partCount(), count) << name;
    }
}

TEST(CorpusEml, FieldsOfSomeParts)
{
    std::ifstream in(kDir / "mail__basic_email.eml", std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), {});
    CMime basic;
    ASSERT_EQ(basic.loadFile((kDir / "mail__basic_email.eml").string(), 0), 1);
    EXPECT_EQ(basic.root()->body, bytes);
    EXPECT_EQ(basic.root()->bodyOffset, bytes.find("\r\n\r\n") + 4);
    EXPECT_EQ(mime_test::str(basic.root()->charset), "US-ASCII");

    CMime embedded;
    ASSERT_EQ(embedded.loadFile((kDir / "mail__attachment_message_rfc822.eml").string(), 0), 1);
    EXPECT_EQ(mime_test::str(embedded.last()->name), "ForwardedMessage.eml");
    EXPECT_EQ(embedded.last()->body.rfind("From xxxx@xxxx.com Tue May 10 11:28:07 2005\r\n", 0), 0u);

    CMime tnef;
    ASSERT_EQ(tnef.loadFile((kDir / "mimekit__ukr.eml").string(), 0), 1);
    EXPECT_EQ(mime_test::str(tnef.last()->name), "winmail.dat");
    EXPECT_EQ(tnef.last()->body.substr(0, 4), std::string("\x78\x9f\x3e\x22", 4));  // the TNEF signature
}

TEST(CorpusEml, LargeMessageParsesQuickly)
{
    auto start = std::chrono::steady_clock::now();
    CMime mime;
    ASSERT_EQ(mime.loadFile((kDir / "msgreader-sicos__TestWithAttachments.eml").string(), 0), 1);
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 2.0);
    EXPECT_EQ(mime.last()->body.substr(0, 2), "\xff\xd8");  // JPEG
}

}  // namespace
