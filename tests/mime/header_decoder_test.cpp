// Encoded words, extended parameters and field access, with the losses the decoder keeps: text
// before a word, two characters after each word, zero bytes behind each decoded word.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mime/header_codecs.h"
#include "mime/header_decoder.h"
#include "mime/mail_address.h"
#include "mime/mail_date.h"
#include "mime/mime.h"
#include "mime_test_helpers.h"

namespace {

std::u16string nuls(size_t count)
{
    return std::u16string(count, u'\0');
}

CMimePart partWith(const std::string& field, const std::string& value, std::string_view charset = "")
{
    CMimePart part;
    part.headers[field] = value;
    part.charset = charset;
    return part;
}

struct Case {
    std::string input;
    std::u16string expected;
};

TEST(EncodedWords, OnlyWordsAndTheTextAfterTheLastOneSurvive)
{
    // RFC 2047 section 8, where a reader per the RFC shows "Keith Moore", "(a b)", "(ab)"...
    const Case cases[] = {
        {"=?US-ASCII?Q?Keith_Moore?= <moore@cs.utk.edu>", u"Keith_Mooremoore@cs.utk.edu>"},
        {"=?ISO-8859-1?Q?Keld_J=F8rn_Simonsen?= <keld@dkuug.dk>",
         u"Keld_J\u00F8rn_Simonsen" + nuls(2) + u"keld@dkuug.dk>"},
        {"=?ISO-8859-1?Q?Andr=E9?= Pirard <PIRARD@vm1.ulg.ac.be>",
         u"Andr\u00E9" + nuls(2) + u"irard <PIRARD@vm1.ulg.ac.be>"},
        {"=?ISO-8859-1?B?SWYgeW91IGNhbiByZWFkIHRoaXMgeW8=?=\r\n"
         "    =?ISO-8859-2?B?dSB1bmRlcnN0YW5kIHRoZSBleGFtcGxlLg==?=",
         u"If you can read this yo" + nuls(9) + u"u understand the example." + nuls(11)},
        {"=?ISO-8859-1?Q?a?= b", u"a"},
        {"=?ISO-8859-1?Q?a?= =?ISO-8859-1?Q?b?=", u"a?ISO-8859-1?Q?b?="},  // the skip takes the "=" of the next word
        {"=?ISO-8859-1?Q?a?=  =?ISO-8859-1?Q?b?=", u"ab"},
        {"=?ISO-8859-1?Q?a?=\r\n    =?ISO-8859-1?Q?b?=", u"ab"},
        {"=?ISO-8859-1?Q?a_b?=", u"a_b"},
        {"Nathaniel Borenstein <nsb@thumper.bellcore.com>\r\n    (=?iso-8859-8?b?7eXs+SDv4SDp7Oj08A==?=)", u""},
        {"Re: =?UTF-8?Q?caf=C3=A9?=", u"caf\u00E9" + nuls(4)},
        {"=?UTF-8?q?x?=", u""},
        {"=?UTF-8?Q?" "?=", u""},               // no data: the codec refuses it
        {"=?x-unknown?Q?abc?= tail", u"ail"},    // a charset nobody knows gives nothing
        {"plain \xE9", u"plain \u00E9"},         // no word: the fallback charset
        {"=?", u"=?"},
    };
    mcl::HeaderDecoder decoder;
    decoder.defaultCharset = "CP1252";
    for (const Case& c : cases) {
        std::u16string out;
        decoder.decodeRfc2047(out, c.input, "");
        EXPECT_EQ(out, c.expected) << c.input;
    }
    std::u16string out;
    decoder.decodeRfc2047(out, "\xC0", "windows-1251");
    EXPECT_EQ(out, u"\u0410");
}

TEST(HeaderParams, PiecesAreJoinedCleanedAndUnescaped)
{
    struct ParamCase {
        std::string field, value, param;
        std::u16string expected;
    };
    const ParamCase cases[] = {
        // RFC 2231 sections 3 and 4, read by this decoder's rules.
        {"Content-Type",
         "message/external-body; access-type=URL;\r\n URL*0=\"ftp://\";\r\n"
         " URL*1=\"cs.utk.edu/pub/moore/bulk-mailer/bulk-mailer.tar\"",
         "URL", u"ftp://cs.utk.edu/pub/moore/bulk-mailer/bulk-mailer.tar"},
        {"Content-Type", "application/x-stuff;\r\n title*=us-ascii'en-us'This%20is%20%2A%2A%2Afun%2A%2A%2A",
         "title", u""},
        {"Content-Type",
         "application/x-stuff;\r\n title*0*=us-ascii'en'This%20is%20even%20more%20;\r\n"
         " title*1*=%2A%2A%2Afun%2A%2A%2A%20;\r\n title*2=\"isn't it!\"",
         "title", u"**\u00AF" + nuls(1) + u"*** " + nuls(26) + u"isn't it!"},
        {"Content-Disposition", "attachment; filename*0*=UTF-8''a%20; filename*1*=%62", "filename",
         nuls(11) + u"b" + nuls(9)},
        {"Content-Disposition", "attachment; filename*1=b", "filename", u""},
        {"Content-Disposition", "a; filename*=UTF-8''%4142", "filename", u"B" + nuls(11)},  // runs on, cut to 8 bits
        {"Content-Disposition", "a; filename*=UTF-8''%", "filename", nuls(8)},
        {"Content-Disposition", "a; filename*=UTF-8''%4", "filename", nuls(9)},
        {"Content-Disposition", "attachment; FILENAME=x.txt", "filename", u""},
        {"Content-Disposition", "attachment; filename=\"a b.txt\"; size=3", "filename", u"a b.txt"},
        {"Content-Disposition", "attachment; filename=\"\"\"x\"", "filename", u""},
        {"Content-Disposition", "attachment; filename=\"a\\\"b\\\\c\"", "filename", u"a\"b\\c"},
        {"Content-Type", "image/jpeg; name=\"=?ISO-8859-1?Q?caf=E9.txt?=\"", "name", u"caf\u00E9.txt" + nuls(2)},
        {"Subject", "Re: Subject=x; y", "Subject", u"x"},  // the field's own value comes second
        {"Content-ID", "<part1@example.com>", "Content-ID", u"part1@example.com"},
        {"Subject", "a(b", "(", u""},
    };
    mcl::HeaderDecoder decoder;
    decoder.defaultCharset = "UTF-8";
    for (const ParamCase& c : cases) {
        const CMimePart part = partWith(c.field, c.value);
        std::u16string out;
        decoder.decodeHeaderParam(out, c.field, c.param, &part);
        EXPECT_EQ(out, c.expected) << c.value;
    }
}

TEST(HeaderParams, FieldsDecodeByThePartCharsetOrTheDefault)
{
    mcl::HeaderDecoder decoder;
    decoder.defaultCharset = "CP1252";
    const CMimePart plain = partWith("Subject", "x\x80");
    const CMimePart cyrillic = partWith("Subject", "x\x80", "windows-1251");
    std::u16string out;
    decoder.getHeader(out, "subject", &plain, true);
    EXPECT_EQ(out, u"x\u20AC");
    decoder.getHeader(out, "Subject", &cyrillic, true);
    EXPECT_EQ(out, u"x\u0402");
    decoder.getHeader(out, "Subject", &cyrillic, false);
    EXPECT_EQ(out, u"x\u0080");
    decoder.getHeader(out, "To", &plain, true);
    EXPECT_EQ(out, u"");
    decoder.getHeader(out, "Subject", nullptr, false);
    EXPECT_EQ(out, u"");
}

// The first part, the root included, that has the field with the text in it.
const CMimePart* partHolding(const CMime& mime, const std::string& field, std::string_view text)
{
    std::vector<const CMimePart*> parts = mime_test::partsOf(mime);
    parts.insert(parts.begin(), mime.root());
    for (const CMimePart* part : parts) {
        const auto found = part->headers.find(field);
        if (found != part->headers.end() && found->second.find(text) != std::string::npos) return part;
    }
    return nullptr;
}

TEST(HeaderParams, CorpusFields)
{
    struct CorpusCase {
        const char* file;
        std::string field, param, holding;
        std::u16string expected;
    };
    const std::u16string testo = u"\u30C6\u30B9\u30C8" + nuls(4);
    const CorpusCase cases[] = {
        {"mail__raw_email_bad_time.eml", "From", "From", "windows-1251",
         u"\u0410\u0442\u0438\u043A\u043E\u0432a" + nuls(5) + u"<yusuf75thu@auracom.net>"},
        {"mail__example14.eml", "Subject", "Subject", "ISO-2022-JP", testo + testo},
        {"mail__attachment_with_quoted_filename.eml", "Content-Disposition", "filename", "filename*=",
         u"\u000E" + nuls(4) + u" " + nuls(36)},
        {"mail__attachment_with_quoted_filename.eml", "Content-Type", "name", "name=",
         u"Eelanal\u00FC\u00FCsi_p\u00E4ring.jpg" + nuls(6)},
        {"mail__japanese_attachment_long_name.eml", "Content-Disposition", "filename", "filename*0*",
         u"\u304B\u304D\u304F\u3051\u3053\u304B\u304D\u304F\u3051\u3053\u304B\u304D\u304F\u3051\u3053"
         u"\u304B\u304D\u304F\u3051\u3053\u304B" + nuls(133) + u"\u304D\u304F\u3051\u3053" + nuls(35)},
    };
    mcl::HeaderDecoder decoder;
    decoder.defaultCharset = "UTF-8";
    for (const CorpusCase& c : cases) {
        CMime mime;
        ASSERT_EQ(mime.loadFile(std::string(PARCELET_CORPUS_DIR) + "/eml/" + c.file, 0), 1) << c.file;
        const CMimePart* part = partHolding(mime, c.field, c.holding);
        ASSERT_NE(part, nullptr) << c.file;
        std::u16string out;
        decoder.decodeHeaderParam(out, c.field, c.param, part);
        EXPECT_EQ(out, c.expected) << c.file;
    }
}

TEST(HeaderParams, CorpusSenderAndDateTakeTheReadersRoad)
{
    CMime mime;
    ASSERT_EQ(mime.loadFile(std::string(PARCELET_CORPUS_DIR) + "/eml/mail__raw_email_bad_time.eml", 0), 1);
    mcl::HeaderDecoder decoder;
    decoder.defaultCharset = "UTF-8";
    std::u16string from, date;
    decoder.getHeader(from, "From", mime.root(), true);
    // The zero bytes behind the decoded name part it from the address like a blank.
    EXPECT_EQ(mcl::parseAddressList(from, u","),
              (mcl::MailAddressList{{u"\u0410\u0442\u0438\u043A\u043E\u0432a", u"yusuf75thu@auracom.net"}}));
    decoder.getHeader(date, "Date", mime.root(), false);
    const mcl::MailDate parsed = mcl::parseMailDate(date);
    EXPECT_EQ(parsed.time, (ty::SystemTime{3609, 6, 2, 30, 9, 33, 50, 0}));
    EXPECT_EQ(parsed.zone, u"+0600");
}

TEST(HeaderParams, HostileTextEndsQuickly)
{
    mcl::HeaderDecoder decoder;
    decoder.defaultCharset = "UTF-8";
    std::u16string out;
    // Thousands of pieces whose numbers overflow, none of them joined, and the one of number 0.
    std::string pieces;
    for (int i = 0; i < 5000; ++i) pieces += "filename*99999999999=x; ";
    const CMimePart part = partWith("Content-Disposition", pieces + "filename=y");
    decoder.decodeHeaderParam(out, "Content-Disposition", "filename", &part);
    EXPECT_EQ(out, u"y");
}

}  // namespace
