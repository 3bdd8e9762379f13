// Every compressed RTF body of the sample messages and TNEF streams: it decompresses to a whole
// RTF document, and the HTML-wrapping ones give their HTML back.
#include <gtest/gtest.h>

#include <cctype>
#include <stdexcept>
#include <string>

#include "compressed_rtf_finder.h"
#include "rtf/compressed_rtf.h"
#include "rtf/rtf_to_html.h"

namespace {

using rtf_test::FoundRtfBody;

template <class Text>
bool containsHtmlElement(const Text& text)
{
    std::string lower;
    for (auto c : text) lower += unsigned(c) < 128 ? char(std::tolower(int(c))) : '?';
    return lower.find("<html") != std::string::npos && lower.find("</html>") != std::string::npos;
}

bool wrapsHtml(const std::string& rtf)
{
    size_t from = rtf.find("\\from");
    return from != std::string::npos && rtf.compare(from, 9, "\\fromhtml") == 0;
}

// A document ends with its closing brace; writers may add line ends and a terminating NUL.
char lastSignificant(const std::string& rtf)
{
    size_t last = rtf.find_last_not_of(std::string("\0 \r\n", 4));
    return last == std::string::npos ? '\0' : rtf[last];
}

void checkWholeBody(const FoundRtfBody& body)
{
    SCOPED_TRACE(body.file.filename().string() + " at " + std::to_string(body.offset));
    std::string rtf;
    ASSERT_NO_THROW(rtf = mcl::decompressRtf(body.container));
    EXPECT_EQ(rtf.size(), body.rawSize);
    EXPECT_EQ(rtf.compare(0, 5, "{\\rtf"), 0);
    EXPECT_NE(rtf, mcl::corruptRtfDocument());
    EXPECT_EQ(lastSignificant(rtf), '}');

    std::u16string html;
    mcl::rtfToHtml(rtf, html);
    if (!wrapsHtml(rtf)) return;
    // Some wrap a whole page, others (plain text turned into HTML) only a fragment of one.
    EXPECT_FALSE(html.empty());
    if (containsHtmlElement(rtf)) {
        EXPECT_TRUE(containsHtmlElement(html));
    }
}

// A body that the container split lies in the file in pieces; what the finder took is then
// arbitrary bytes, which may be rejected but must not do harm.
void checkSplitBody(const FoundRtfBody& body)
{
    SCOPED_TRACE(body.file.filename().string() + " at " + std::to_string(body.offset));
    std::string rtf;
    try {
        rtf = mcl::decompressRtf(body.container);
    } catch (const std::out_of_range&) {
        return;
    }
    std::u16string html;
    mcl::rtfToHtml(rtf, html);
}

size_t checkAll(const std::vector<FoundRtfBody>& bodies)
{
    size_t whole = 0;
    for (const FoundRtfBody& body : bodies) {
        if (body.whole) {
            checkWholeBody(body);
            ++whole;
        } else {
            checkSplitBody(body);
        }
    }
    return whole;
}

TEST(CorpusRtfBodies, MessageBodies)
{
    std::vector<FoundRtfBody> bodies = rtf_test::findCorpusRtfBodies("msg", ".msg");
    EXPECT_GE(checkAll(bodies), 50u);
}

TEST(CorpusRtfBodies, TnefBodies)
{
    std::vector<FoundRtfBody> bodies = rtf_test::findCorpusRtfBodies("tnef", ".tnef");
    EXPECT_EQ(checkAll(bodies), bodies.size());  // TNEF keeps a property's bytes in one piece
    EXPECT_GE(bodies.size(), 12u);
}

TEST(CorpusRtfBodies, ShiftJisBodyOfAnEmbeddedMessage)
{
    // The embedded message carries Outlook's Japanese account test text as escapes under
    // \ansicpg932, followed by two paragraph marks.
    const std::u16string expected =
        u"\u3053\u306e\u96fb\u5b50\u30e1\u30fc\u30eb \u30e1\u30c3\u30bb\u30fc\u30b8\u306f\u3001"
        u"\u30a2\u30ab\u30a6\u30f3\u30c8\u306e\u8a2d\u5b9a\u306e\u30c6\u30b9\u30c8\u4e2d\u306b\u3001"
        u"Microsoft Outlook \u304b\u3089\u81ea\u52d5\u9001\u4fe1\u3055\u308c\u305f\u3082\u306e\u3067"
        u"\u3059\u3002\r\n\r\n";
    std::vector<FoundRtfBody> bodies = rtf_test::findCompressedRtfBodies(
        std::filesystem::path(PARCELET_CORPUS_DIR) / "msg" / "msgreader__msgInMsg.msg");
    size_t matches = 0;
    for (const FoundRtfBody& body : bodies) {
        std::u16string html;
        mcl::rtfToHtml(mcl::decompressRtf(body.container), html);
        if (html == expected) ++matches;
    }
    EXPECT_EQ(matches, 1u);
}

}  // namespace
