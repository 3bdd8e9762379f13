// From a body stream to the item's properties: reading the stream, and routing RTF that wraps
// HTML apart from plain RTF.
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "core/mail_property.h"
#include "foundation/stream.h"
#include "rtf/compressed_rtf.h"
#include "rtf/rtf_body_import.h"

namespace {

using mcl::MailProperties;
using mcl::MailProperty;

std::string le32(uint32_t value)
{
    std::string bytes(4, '\0');
    for (int i = 0; i < 4; ++i) bytes[i] = char(value >> (8 * i));
    return bytes;
}

// RTF kept without compression, as a body stream holds it.
std::string storedBody(const std::string& rtf)
{
    return le32(uint32_t(rtf.size() + 12)) + le32(uint32_t(rtf.size())) + le32(mcl::kUncompressedRtfMagic) +
           le32(0) + rtf;
}

// A stream that knows its size but whose read fails.
class UnreadableStream : public ty::IOS {
public:
    int64_t getSize() override { return 40; }
    int64_t _read(void*, int64_t) override { return -1; }
};

struct Imported {
    MailProperties properties;
    void import(const std::string& streamBytes, uint32_t parentId = 7, const std::u16string& name = u"__substg1.0_10090102")
    {
        ty::Buffer stream(streamBytes.data(), int64_t(streamBytes.size()));
        mcl::importRtfBody(stream, parentId, name, properties);
    }
    std::string bytesOf(const MailProperty* property) const
    {
        return std::string(reinterpret_cast<const char*>(property->bytes()), size_t(property->size()));
    }
};

TEST(RtfBodyStream, DecompressesTheWholeStream)
{
    const std::string rtf = "{\\rtf1\\ansi hello}";
    std::string bytes = storedBody(rtf);
    ty::Buffer stream(bytes.data(), int64_t(bytes.size()));
    EXPECT_EQ(mcl::readRtfBodyStream(stream), rtf);
}

TEST(RtfBodyStream, UnreadableStreamGivesNothing)
{
    UnreadableStream stream;
    EXPECT_EQ(mcl::readRtfBodyStream(stream), "");
}

TEST(RtfBodyStream, EmptyStreamIsFatal)
{
    ty::Buffer stream;
    EXPECT_THROW(mcl::readRtfBodyStream(stream), std::out_of_range);
}

TEST(RtfBodyImport, PlainRtfIsStoredWithItsExactBytes)
{
    Imported item;
    const std::string rtf = "{\\rtf1\\ansi\\ansicpg1252 plain}";
    item.import(storedBody(rtf), 7, u"RTF body");

    MailProperty* body = item.properties.findProperty(mcl::kRtfBodyTag);
    ASSERT_NE(body, nullptr);
    EXPECT_EQ(item.bytesOf(body), rtf);
    EXPECT_EQ(body->parentId(), 7u);
    EXPECT_EQ(body->name(), u"RTF body");

    MailProperty* inSync = item.properties.findProperty(mcl::kRtfInSyncTag);
    ASSERT_NE(inSync, nullptr);
    EXPECT_EQ(inSync->name(), u"PidTagRtfInSync");
    EXPECT_EQ(inSync->size(), 4u);
    EXPECT_EQ(inSync->valueU32(), 1u);
    EXPECT_EQ(inSync->parentId(), 7u);
    EXPECT_EQ(item.properties.findProperty(mcl::kHtmlFromRtfTag), nullptr);
}

TEST(RtfBodyImport, ExistingRtfInSyncIsLeftAlone)
{
    Imported item;
    const uint32_t outOfSync = 0;
    item.properties.addProperty(mcl::kRtfInSyncTag, 0, u"PidTagRtfInSync", &outOfSync, 4);
    item.import(storedBody("{\\rtf1 x}"));

    std::vector<MailProperty*> flags;
    item.properties.collect(flags, mcl::kRtfInSyncTag, -1, false, 0, 0xFFFFFFFF);
    ASSERT_EQ(flags.size(), 1u);
    EXPECT_EQ(flags[0]->valueU32(), 0u);
    EXPECT_NE(item.properties.findProperty(mcl::kRtfBodyTag), nullptr);
}

TEST(RtfBodyImport, HtmlWrappingRtfIsStoredAsItsHtml)
{
    Imported item;
    item.import(storedBody("{\\rtf1\\ansi\\fromhtml1 {\\*\\htmltag <p>}}"), 3, u"body");

    MailProperty* html = item.properties.findProperty(mcl::kHtmlFromRtfTag);
    ASSERT_NE(html, nullptr);
    EXPECT_EQ(html->size(), 6u);  // three characters, no terminator
    EXPECT_EQ(html->toString(), u"<p>");
    EXPECT_EQ(html->parentId(), 3u);
    EXPECT_EQ(html->name(), u"body");
    EXPECT_EQ(item.properties.findProperty(mcl::kRtfBodyTag), nullptr);
    EXPECT_EQ(item.properties.findProperty(mcl::kRtfInSyncTag), nullptr);
}

TEST(RtfBodyImport, HtmlWithoutTagsIsStillStored)
{
    Imported item;
    item.import(storedBody("{\\rtf1\\fromhtml1 no tags}"));
    MailProperty* html = item.properties.findProperty(mcl::kHtmlFromRtfTag);
    ASSERT_NE(html, nullptr);
    EXPECT_EQ(html->size(), 0u);
}

TEST(RtfBodyImport, OnlyTheFirstFromWordDecides)
{
    Imported item;
    item.import(storedBody("{\\rtf1\\fromtext\\fromhtml1 {\\*\\htmltag <p>}}"));
    EXPECT_NE(item.properties.findProperty(mcl::kRtfBodyTag), nullptr);
    EXPECT_EQ(item.properties.findProperty(mcl::kHtmlFromRtfTag), nullptr);
}

TEST(RtfBodyImport, FromhtmlMustBeSpelledOut)
{
    Imported item;
    item.import(storedBody("{\\rtf1\\fromhtm {\\*\\htmltag <p>}}"));
    EXPECT_NE(item.properties.findProperty(mcl::kRtfBodyTag), nullptr);
}

TEST(RtfBodyImport, UnusableStreamStoresNothing)
{
    Imported item;
    item.import("not a compressed RTF body at all");
    EXPECT_EQ(item.properties.count(), 0u);
}

TEST(RtfBodyImport, DamagedTokensStoreTheErrorDocument)
{
    Imported item;
    // An end marker at the first write position, long before the raw size is reached.
    std::string damaged = le32(15) + le32(20) + le32(mcl::kCompressedRtfMagic) + le32(0) + "\x01\x0C\xF0";
    item.import(damaged);
    MailProperty* body = item.properties.findProperty(mcl::kRtfBodyTag);
    ASSERT_NE(body, nullptr);
    EXPECT_EQ(item.bytesOf(body), mcl::corruptRtfDocument());
}

}  // namespace
