#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "core/mail_item.h"
#include "core/reader_factory.h"
#include "core/session.h"
#include "support/temp_dir.h"
#include "test_reader.h"

namespace {

using testing_reader::TestReader;

// A reader whose load adds what the test hands it and answers as told.
class ScriptedReader : public mcl::BaseReader {
public:
    ScriptedReader() : BaseReader(u"", u"/x.eml", FileEML) {}
    bool doInit() override { return true; }
    bool doLoad(mcl::MailProperties* props, uint32_t*) override
    {
        if (addOnLoad) addOnLoad(props);
        decodeEnabled = 1;
        decodeMultibyteStrings(props);
        return loadResult;
    }
    bool doLoadByID(mcl::MailProperties*, uint32_t*, const std::u16string&) override { return false; }
    bool doNext() override { return false; }
    bool doSaveEmbeddedMessage(mcl::Attachment*, mcl::MailProperties*, const std::u16string&) override { return true; }
    bool doSaveMessage(mcl::MailProperties*, const std::u16string&) override { return true; }
    int32_t doGetItemCount() override
    {
        if (throwOnCount) throw std::runtime_error("count failed");
        return 1;
    }
    uint32_t namedPropertyIdByName(const std::u16string& name) override
    {
        return name == u"content-type" ? 0x8005 : 0;
    }

    std::function<void(mcl::MailProperties*)> addOnLoad;
    bool loadResult = true;
    bool throwOnCount = false;
};

TEST(ReaderFrame, ClassNameDefaultsAndSilentFailureStillRunsAfterLoad)
{
    ScriptedReader reader;
    EXPECT_EQ(reader.getClassName(), u"BaseReader");
    reader.loadResult = false;
    reader.addOnLoad = [](mcl::MailProperties* props) {
        props->addProperty(0x007D001F, 0, u"header", u"Received: x\r\nDate: Tue, 5 Mar 2024 10:00:00 -0800\r\n");
    };
    mcl::MailProperties props;
    uint32_t filter = 1;
    EXPECT_FALSE(reader.load(&props, &filter));
    EXPECT_FALSE(reader.hasError());
    EXPECT_EQ(props.getString(0xF039001F), u"-0800");
    EXPECT_EQ(props.findProperty(0xF039001F)->name(), u"Time zone");
}

TEST(ReaderFrame, TimeZoneIsNotTakenTwiceNorFromHeadersWithoutOne)
{
    ScriptedReader reader;
    reader.addOnLoad = [](mcl::MailProperties* props) {
        props->addProperty(0xF039001F, 0, u"Time zone", u"+0100");
        props->addProperty(0x007D001F, 0, u"header", u"Date: Tue, 5 Mar 2024 10:00:00 -0800\r\n");
    };
    mcl::MailProperties props;
    uint32_t filter = 1;
    reader.load(&props, &filter);
    std::vector<mcl::MailProperty*> zones;
    props.collect(zones, 0xF039001F, -1, false, 0, 0xFFFFFFFF);
    EXPECT_EQ(zones.size(), 1u);

    ScriptedReader plain;
    plain.addOnLoad = [](mcl::MailProperties* p) { p->addProperty(0x007D001F, 0, u"header", u"Subject: x\r\n"); };
    mcl::MailProperties other;
    plain.load(&other, &filter);
    EXPECT_EQ(other.findProperty(0xF039001F), nullptr);
}

TEST(ReaderFrame, NarrowTextBecomesWideByTheRightCodePage)
{
    ScriptedReader reader;
    reader.addOnLoad = [](mcl::MailProperties* props) {
        props->addProperty(0x3FDE0003, 0, u"", "\xE9\xFD\x00\x00", 4);  // 65001
        props->addProperty(0x0037001E, 0, u"Subject", "caf\xE9", 4);    // the system's code page
        props->addProperty(0x1000001E, 0, u"Body", "caf\xC3\xA9", 5);   // the message's own
        props->addProperty(0x0000001E, 0, u"", "\xE9", 1);              // no property number: left
        props->addProperty(0x0070001E, 0, u"", "", 0);                  // empty: only retyped
    };
    mcl::MailProperties props;
    uint32_t filter = 1;
    ASSERT_TRUE(reader.load(&props, &filter));
    ASSERT_EQ(reader.getAnsiCodePage(), 1252u);  // the "C" locale the tests run in
    EXPECT_EQ(props.at(1)->tag(), 0x0037001Fu);
    EXPECT_EQ(props.at(1)->toString(), u"caf\u00E9");
    EXPECT_EQ(props.at(2)->tag(), 0x1000001Fu);
    EXPECT_EQ(props.at(2)->toString(), u"caf\u00E9");
    EXPECT_EQ(props.at(3)->tag(), 0x0000001Eu);
    EXPECT_EQ(props.at(4)->tag(), 0x0070001Fu);
    EXPECT_EQ(props.at(4)->size(), 0u);
}

TEST(ReaderFrame, RepeatedLoadConvertsOnlyTheNewProperties)
{
    ScriptedReader reader;
    mcl::MailProperties props;
    reader.addOnLoad = [](mcl::MailProperties* p) { p->addProperty(0x0037001E, 0, u"", "one", 3); };
    uint32_t filter = 1;
    reader.load(&props, &filter);
    // A narrow record added between loads by someone else is older than the next load.
    props.addProperty(0x0E1D001E, 0, u"", "outside", 7);
    reader.addOnLoad = [](mcl::MailProperties* p) { p->addProperty(0x0070001E, 0, u"", "two", 3); };
    filter = 2;
    reader.load(&props, &filter);
    EXPECT_EQ(props.at(1)->tag(), 0x0E1D001Eu);
    EXPECT_EQ(props.at(2)->tag(), 0x0070001Fu);
}

TEST(ReaderFrame, ThrowingCountIsMinusOneAndLowersTheSessionCount)
{
    ScriptedReader reader;
    reader.throwOnCount = true;
    EXPECT_EQ(reader.getCount(), -1);
    EXPECT_EQ(reader.getError()->text, u"count failed");
    EXPECT_EQ(reader.getError()->source, u"mcl::BaseReader::getCount");
    EXPECT_EQ(reader.getError()->severity, 1u);
    EXPECT_EQ(reader.getError()->code, 0x8000FFFFu);
}

TEST(ReaderFrame, RecipientRowsAndContentCharset)
{
    ScriptedReader reader;
    mcl::MailProperties props;
    EXPECT_FALSE(reader.addRecipientRows({}, &props, 0));
    ASSERT_TRUE(reader.addRecipientRows({{u"Ann", u"ann@x.org"}, {u"Bob", u"bob@x.org"}}, &props, 0));
    ASSERT_EQ(props.count(), 6u);
    EXPECT_EQ(props.at(3)->tag(), mcl::kRecipientRow);
    EXPECT_EQ(props.at(3)->name(), u"Recipient");
    EXPECT_EQ(props.at(4)->parentId(), props.at(3)->id());
    EXPECT_EQ(props.at(4)->name(), u"Display name");
    EXPECT_EQ(props.at(5)->toString(), u"bob@x.org");

    EXPECT_EQ(reader.contentCharset(&props), "");
    props.addProperty(0x8005001F, 0, u"", u"text/html; charset=\"KOI8-R\"");
    EXPECT_EQ(reader.contentCharset(&props), "KOI8-R");
    uint32_t cp = 1251;
    props.addProperty(0x3FDE0003, 0, u"", &cp, 4);
    EXPECT_EQ(reader.contentCharset(&props), "windows-1251");
}

TEST(ReaderFrame, OleObjectIsAcceptedOnlyAsACompoundFile)
{
    ScriptedReader reader;
    mcl::MailProperties props;
    std::string header(512, '\0');
    const char signature[] = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
    header.replace(0, 8, signature, 8);
    header[0x1A] = 3, header[0x1C] = '\xFE', header[0x1D] = '\xFF', header[0x1E] = 9, header[0x20] = 6;
    header[0x39] = 0x10;
    mcl::MailProperty* good = props.addProperty(0x37010102, 0, u"", header.data(), header.size());
    mcl::MailProperty* bad = props.addProperty(0x37010102, 0, u"", "not ole", 7);
    EXPECT_TRUE(reader.addOleObject(good, &props, 0));
    EXPECT_FALSE(reader.addOleObject(bad, &props, 0));
    EXPECT_EQ(props.findProperty(0xF011000D), nullptr);  // no object could be made
}

TEST(SessionCount, ReaderThatFailsToCountLowersTheSum)
{
    test_support::TempDir dir;
    testing_reader::installTestReaders();
    mcl::readerFactories().eml = [](const std::u16string&) -> mcl::BaseReader* {
        auto* reader = new ScriptedReader;
        reader->throwOnCount = true;
        return reader;
    };
    mcl::Session session;
    EXPECT_TRUE(session.addFile(dir.write("a.eml", "x"), false));
    EXPECT_EQ(session.getCount(), -1);
    testing_reader::removeTestReaders();
}

}  // namespace
