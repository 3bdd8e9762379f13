// The parser on streams built here: where attributes land, how each MAPI value type is stored
// (quirks included), and what damage and odd layouts leave.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <vector>

#include "foundation/win_time.h"
#include "tnef/tnef_parser.h"
#include "tnef_stream_builder.h"

namespace {

using namespace tnef_test;

struct Record {
    uint32_t tag, parentId;
    std::u16string name;
    std::string value;
    bool hasValue = true;
    bool operator==(const Record&) const = default;
};

std::vector<Record> records(const mcl::MailProperties& table)
{
    std::vector<Record> out;
    for (size_t i = 0; i < table.count(); ++i) {
        const mcl::MailProperty* p = table.at(i);
        std::string value = p->hasValue() ? std::string(reinterpret_cast<const char*>(p->bytes()), p->size()) : "";
        out.push_back({p->tag(), p->parentId(), p->name(), value, p->hasValue()});
    }
    return out;
}

std::string value(const mcl::MailProperty* p)
{
    return p ? std::string(reinterpret_cast<const char*>(p->bytes()), p->size()) : "<none>";
}

bool parse(const std::string& bytes, mcl::MailProperties& table, uint32_t parentId = 0)
{
    ty::Buffer input(bytes.data(), int64_t(bytes.size()));
    std::string name;
    return mcl::TNEFParser::parse(name, input, &table, parentId);
}

std::string messageList(const PropertyList& list) { return attribute(1, kAttMsgProps, list.bytes()); }
std::string attachmentList(const PropertyList& list) { return attribute(2, kAttAttachment, list.bytes()); }
const std::string kRendering = attribute(2, kAttAttachRendering, std::string(14, '\1'));
const std::string kIid = "0123456789abcdef";  // an interface identifier leads an object's bytes

TEST(TNEFParser, AttributesLandOnTheMessageAndTheOpenAttachment)
{
    std::string bytes = stream({attribute(1, kAttSubject, raw("Hi\0")), attribute(1, kAttMessageClass, raw("IPM.Note\0")),
                                attribute(1, kAttDateSent, std::string(14, '\7')),
                                attribute(2, kAttAttachTitle, raw("early\0")),  // no attachment open yet
                                attachmentList(PropertyList().add(3, 0x0E21, u32(1))), kRendering,
                                attribute(2, kAttAttachTitle, raw("a.txt\0")), attribute(2, kAttAttachData, "xyz"),
                                attachmentList(PropertyList().add(3, 0x0E21, u32(5))),
                                attribute(1, kAttBody, raw("Body\0"))});
    mcl::MailProperties table;
    ASSERT_TRUE(parse(bytes, table, 7));
    EXPECT_EQ(records(table), (std::vector<Record>{{0x0037001E, 7, u"", raw("Hi\0")},
                                                   {0x001A001E, 7, u"", raw("IPM.Note\0")},
                                                   {0x37000000, 7, u"Attachment", "", false},
                                                   {0x3704001E, 3, u"", raw("a.txt\0")},
                                                   {0x37010102, 3, u"Attach Data", "xyz"},
                                                   {0x0E210003, 3, u"TNEF Property", u32(5)},
                                                   {0x1000001E, 7, u"", raw("Body\0")}}));
}

std::string systemTime(ty::SystemTime time) { return std::string(reinterpret_cast<const char*>(&time), 16); }

TEST(TNEFParser, EachValueTypeIsStoredAsItsTableSays)
{
    // 2000-01-01 00:00:01.234 UTC, a Saturday: 12,591,158,401.234 s after 1601.
    const uint64_t time2000 = 125911584012340000, otherTime = 0x0102030405060708;
    const std::string next = u16(3) + u16(0x0E08);  // the type and id of the property that follows
    struct Case {
        uint16_t type;
        std::string encoded;
        uint16_t storedType;
        std::string stored;
    };
    const std::vector<Case> cases = {
        {0x0002, raw("\x3C\0\x99\x99"), 2, raw("\x3C\0")},  // 2 of the 4 bytes
        {0x0003, u32(0x12345678), 3, u32(0x12345678)},
        {0x1003, u32(2) + u32(1) + u32(2), 3, u32(1) + u32(2)},
        {0x0004, u32(0x3F800000), 4, u32(0x3F800000)},
        {0x000B, u32(1), 0x0B, u32(1)},
        {0x0005, u64(0x3FF0000000000000), 5, u64(0x3FF0000000000000)},
        {0x0006, u64(12345), 6, u64(12345)},
        {0x0007, u64(77), 7, u64(77)},
        {0x0014, u64(uint64_t{1} << 40), 0x14, u64(uint64_t{1} << 40)},
        {0x0048, kIid, 0x48, kIid},
        {0x0040, u64(time2000), 0x40, systemTime({2000, 1, 6, 1, 0, 0, 1, 234})},
        // Taken 8 bytes on from the count, which takes 4: the value ends in the next entry.
        {0x1040, u32(2) + u64(time2000) + u64(otherTime), 0x102, u64(time2000).substr(4) + u64(otherTime) + next},
        {0x001E, counted({raw("abc\0")}), 0x1E, raw("abc\0")},
        {0x101E, counted({raw("one\0"), raw("two\0"), raw("three\0")}), 0x1E, raw("one\0two\0three\0")},
        {0x001F, counted({raw("h\0i\0\0\0")}), 0x1F, raw("h\0i\0\0\0")},
        {0x0102, counted({"\1\2\3\4\5"}), 0x102, "\1\2\3\4\5"},
        {0x0102, u32(0), 0x102, ""},
        {0x000D, counted({kIid + "DATA"}), 0x0D, "DATA"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << std::hex << c.type);
        mcl::MailProperties table;
        ASSERT_TRUE(parse(stream({messageList(PropertyList().add(c.type, 0x3702, c.encoded).add(3, 0x0E08, u32(9)))}), table));
        EXPECT_EQ(records(table), (std::vector<Record>{{0x37020000u | c.storedType, 0, u"TNEF Property", c.stored},
                                                       {0x0E080003, 0, u"TNEF Property", u32(9)}}));
    }
}

TEST(TNEFParser, NamedPropertiesKeepTheirRawIdAndCollide)
{
    const std::string set(16, 'Z');
    PropertyList list;
    list.add(3, 0x8000, u32(7), set + u32(0) + u32(0x8501))                        // by number
        .add(3, 0x8000, u32(9), set + u32(1) + u32(10) + raw("n\0a\0m\0e\0\0\0\0\0"))  // by name
        .add(3, 0x8002, u32(4), set + u32(2) + u32(2) + raw("ab\0\0") + u32(5) + raw("abcde\0\0\0"))
        .add(3, 0x0E08, u32(1));
    mcl::MailProperties table;
    ASSERT_TRUE(parse(stream({messageList(list)}), table));
    ASSERT_EQ(table.count(), 4u);
    EXPECT_EQ(table.at(1)->tag(), 0x80000003u);
    EXPECT_EQ(value(table.findProperty(0x80000003)), u32(7));  // the first of the two
    EXPECT_EQ(value(table.findProperty(0x80020003)), u32(4));
    EXPECT_EQ(value(table.findProperty(0x0E080003)), u32(1));
}

TEST(TNEFParser, OutcomeOfOddAndDamagedStreams)
{
    using Check = std::function<void(const mcl::MailProperties&)>;
    auto count = [](size_t n) -> Check { return [n](const mcl::MailProperties& t) { EXPECT_EQ(t.count(), n); }; };
    auto data = [](uint32_t tag, const std::string& bytes) -> Check {
        return [=](const mcl::MailProperties& t) { EXPECT_EQ(value(t.findMasked(tag, 0xFFFFFFFF, 1)), bytes); };
    };
    const std::string subject = attribute(1, kAttSubject, raw("S\0")), body = attribute(1, kAttBody, raw("B\0"));
    const std::string good = stream({subject}), embedded = u32(0x223E9F78) + "rest";
    auto objectList = [&](const std::string& object) {
        return attachmentList(PropertyList().add(0x0D, 0x3701, counted({kIid + object})));
    };
    struct Case {
        const char* what;
        std::string bytes;
        bool result;
        Check check;
    };
    const std::vector<Case> cases = {
        {"the signature alone", stream({}), true, count(0)},
        {"a wrong signature", u32(0x223E9F79) + u16(0) + subject, false, count(0)},
        {"an unknown level", stream({subject, attribute(3, kAttBody, "x"), body}), true, count(1)},
        {"a length past the end", good + attribute(1, kAttBody, "0123456789").substr(0, 15), true, count(1)},
        {"a huge length", good + "\1" + u32(kAttBody) + u32(0xFFFFFFF0) + "xx", true, count(1)},
        {"a file cut in a header", good + "\1\x0C\x80", true, count(1)},
        {"trailing garbage", good + "garbage after the stream", true, count(1)},
        {"no last checksum", good.substr(0, good.size() - 2), true, count(1)},
        {"an unknown value type", stream({messageList(PropertyList().add(3, 0x0E08, u32(1)).add(0x0A, 0x0E09, u32(0))), body}),
         false, count(1)},
        {"a list cut short", stream({attribute(1, kAttMsgProps, u32(1000) + u16(3) + u16(0x0E08) + u32(1))}), false, count(1)},
        {"a value larger than its list", stream({messageList(PropertyList().add(0x102, 0x0FF9, u32(1) + u32(0x7FFFFFFF)))}),
         false, count(0)},
        {"an object shorter than its id", stream({messageList(PropertyList().add(0x0D, 0x3702, counted({"short"})))}), false,
         count(0)},
        {"the message's attachment data hides the attachments'",
         stream({messageList(PropertyList().add(0x102, 0x3701, counted({"root"}))), kRendering,
                 attribute(2, kAttAttachData, "lost")}),
         true, count(2)},
        {"repeated attachment data leaves the first",
         stream({kRendering, attribute(2, kAttAttachData, "first"),
                 attachmentList(PropertyList().add(0x102, 0x3701, counted({"second"})))}),
         true, [](const mcl::MailProperties& t) { EXPECT_EQ(value(t.findProperty(0x37010102, 1)), "first"); }},
        {"an embedded stream replaces the data", stream({kRendering, attribute(2, kAttAttachData, "old"), objectList(embedded)}),
         true, [&](const mcl::MailProperties& t) {
             EXPECT_EQ(records(t).back(), (Record{0x37010102, 1, u"Attach Data", embedded}));
             EXPECT_EQ(t.count(), 2u);
         }},
        {"an embedded stream becomes the data", stream({kRendering, objectList(embedded)}), true, data(0x37010102, embedded)},
        {"another object stays an object", stream({kRendering, objectList("storage")}), true, data(0x3701000D, "storage")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        mcl::MailProperties table;
        EXPECT_EQ(parse(c.bytes, table), c.result);
        c.check(table);
    }
}

// A compressed RTF container that holds its text uncompressed ("MELA").
std::string storedRtf(const std::string& rtf)
{
    return u32(uint32_t(rtf.size() + 12)) + u32(uint32_t(rtf.size())) + u32(0x414C454D) + u32(0) + rtf;
}

TEST(TNEFParser, CompressedRtfBodiesAreImported)
{
    auto withBody = [](const std::string& container) {
        return stream({messageList(PropertyList().add(0x102, 0x1009, counted({container})))});
    };
    mcl::MailProperties plain, empty;
    ASSERT_TRUE(parse(withBody(storedRtf("{\\rtf1 plain}")), plain, 4));
    EXPECT_EQ(value(plain.findProperty(0xF1000102, 4)), "{\\rtf1 plain}");
    EXPECT_EQ(plain.findProperty(0x0E1F000B, 4)->valueU32(), 1u);
    // An empty body can't be decoded at all; the reader frame reports what is thrown.
    EXPECT_THROW(parse(withBody(""), empty), std::out_of_range);
}

}  // namespace
