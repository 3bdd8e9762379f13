#include <gtest/gtest.h>

#include <cstring>

#include "core/base_reader.h"
#include "core/context.h"
#include "core/file_type.h"
#include "core/mail_item.h"
#include "core/reader_factory.h"
#include "core/session.h"
#include "support/temp_dir.h"
#include "test_reader.h"

namespace {

using testing_reader::TestReader;

std::string compoundFileHeader()
{
    std::string header(512, '\0');
    const unsigned char signature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
    std::memcpy(header.data(), signature, 8);
    header[0x1A] = 3;                          // major version 3
    header[0x1C] = '\xFE', header[0x1D] = '\xFF';  // byte order
    header[0x1E] = 9;                          // 512-byte sectors
    header[0x20] = 6;                          // 64-byte mini sectors
    header[0x39] = 0x10;                       // mini stream cutoff 4096
    return header;
}

const char kTwoMessages[] =
    "1 0 0037001F First subject\n"
    "2 0 1000001F First body\n"
    "===\n"
    "1 0 0037001F Second subject\n";

class SessionTest : public ::testing::Test {
protected:
    void SetUp() override { testing_reader::installTestReaders(); }
    void TearDown() override { testing_reader::removeTestReaders(); }

    std::u16string typeOf(const std::string& name, const std::string& bytes, bool ignoreExt)
    {
        return mcl::detectFileType(dir.write(name, bytes), ignoreExt);
    }
    std::u16string readerClass(mcl::Session& session, const std::u16string& path, bool ignoreExt = false)
    {
        mcl::BaseReader* reader = session.createReader(path, ignoreExt);
        std::u16string name = reader ? reader->getClassName() : u"none";
        if (reader) reader->release();
        return name;
    }

    test_support::TempDir dir;
};

TEST_F(SessionTest, TypeByExtension)
{
    EXPECT_EQ(typeOf("a.eml", "x", false), mcl::kTypeEml);
    EXPECT_EQ(typeOf("a.MHT", "x", false), mcl::kTypeEml);
    EXPECT_EQ(typeOf("a.mhtml", "x", false), mcl::kTypeEml);
    EXPECT_EQ(typeOf("text.msg", "From: a\r\n", false), mcl::kTypeEml);   // not a compound file
    EXPECT_EQ(typeOf("real.msg", compoundFileHeader(), false), mcl::kTypeMsg);
    EXPECT_EQ(typeOf("compound.eml", compoundFileHeader(), false), mcl::kTypeEml);
    EXPECT_EQ(typeOf("a.pst", "", false), mcl::kTypePst);
    EXPECT_EQ(typeOf("a.Ost", "", false), mcl::kTypePst);
    EXPECT_EQ(typeOf("a.tnef", "", false), mcl::kTypeTnef);
    EXPECT_EQ(typeOf("WinMail.Dat", "", false), mcl::kTypeTnef);
    EXPECT_EQ(typeOf("report.dat", "", false), mcl::kTypeUnknown);
    EXPECT_EQ(mcl::detectFileType(u"message.eml", false), mcl::kTypeUnknown);  // no separator, no extension
}

TEST_F(SessionTest, TypeByContent)
{
    EXPECT_EQ(typeOf("compound.eml", compoundFileHeader(), true), mcl::kTypeMsg);
    EXPECT_EQ(typeOf("store.bin", "!BDN....", true), mcl::kTypePst);
    EXPECT_EQ(typeOf("x.bin", std::string("\x78\x9F\x3E\x22\x01", 5), true), mcl::kTypeTnef);
    EXPECT_EQ(typeOf("notes.txt", "Hello there", true), mcl::kTypeEml);
    EXPECT_EQ(typeOf("zero.bin", std::string("\0abc", 4), true), mcl::kTypeUnknown);
    // Fewer than four bytes: the extension decides.
    EXPECT_EQ(typeOf("empty.pst", "", true), mcl::kTypePst);
    EXPECT_EQ(typeOf("ab.txt", "ab", true), mcl::kTypeUnknown);
    // A broken compound header is not a compound file.
    std::string broken = compoundFileHeader();
    broken[0x1E] = 12;  // 4096-byte sectors with version 3
    EXPECT_EQ(typeOf("broken.msg", broken, false), mcl::kTypeEml);
}

TEST_F(SessionTest, ReaderChoiceFollowsTypeAndContextSettings)
{
    mcl::Context context;
    mcl::Session session;
    EXPECT_EQ(readerClass(session, dir.write("a.eml", "x")), u"EML");
    EXPECT_EQ(readerClass(session, dir.write("a.msg", compoundFileHeader())), u"MSG");
    EXPECT_EQ(readerClass(session, dir.write("winmail.dat", "x")), u"TNEF");
    std::u16string store = dir.write("a.pst", "!BDN");
    EXPECT_EQ(readerClass(session, store), u"PSTLegacy");
    context.setContextVersion(3);
    EXPECT_EQ(readerClass(session, store), u"PST3");
    context.setContextVersion(0);
    EXPECT_EQ(readerClass(session, store), u"PSTLegacy");
    EXPECT_EQ(readerClass(session, dir.write("a.doc", "x")), u"none");
    EXPECT_FALSE(session.hasError());  // nothing recognised is no error at this level

    // MAPI is taken only by sessions made after the setting, and only with the route built in.
    context.setUseMapiIfPossible(-1);
    EXPECT_EQ(readerClass(session, store), u"PSTLegacy");
    mcl::Session later;
    EXPECT_EQ(readerClass(later, store), u"PSTMAPI");
    mcl::readerFactories().pstThroughMapi = nullptr;
    mcl::Session withoutMapi;
    EXPECT_EQ(readerClass(withoutMapi, store), u"PSTLegacy");
}

TEST_F(SessionTest, FailuresComeBackWithTheirWordsSeveritiesAndCodes)
{
    mcl::Session session;
    for (bool ignoreExt : {false, true}) {
        EXPECT_EQ(session.readFile(dir.wide("missing.eml"), ignoreExt), nullptr);
        ASSERT_TRUE(session.hasError());
        EXPECT_EQ(session.getError()->text, u"No such file or directory");
        EXPECT_EQ(session.getError()->code, 2u);
        EXPECT_EQ(session.getError()->severity, 0u);
        EXPECT_EQ(session.getError()->source, u"mcl::Session::createReaderEx");
    }

    EXPECT_EQ(session.readFile(dir.write("a.doc", "x"), false), nullptr);
    EXPECT_EQ(session.getError()->getDescription(),
              u"(W: 2147500037) mcl::Session::createReaderEx: Can't determine file type");

    EXPECT_EQ(session.readFile(dir.write("fail.eml", "fail-init\n"), false), nullptr);
    EXPECT_EQ(session.getError()->text, u"Can't initialize mail reader: EML");

    EXPECT_EQ(session.readFile(dir.write("err.eml", "error-init\n"), false), nullptr);
    EXPECT_EQ(session.getError()->text, u"Bad test file");
    EXPECT_EQ(session.getError()->source, u"TestReader::doInit");

    EXPECT_EQ(session.readFile(dir.wide(""), false), nullptr);  // a folder is no file
    EXPECT_EQ(session.getError()->code, static_cast<uint32_t>(EISDIR));
}

TEST_F(SessionTest, ExceptionInALoadIsCaughtAtTheReaderFrame)
{
    mcl::Session session;
    EXPECT_EQ(session.readFile(dir.write("t.eml", "throw-load\n"), false), nullptr);
    ASSERT_TRUE(session.hasError());
    EXPECT_EQ(session.getError()->text, u"test load failure");
    EXPECT_EQ(session.getError()->source, u"mcl::BaseReader::load");
    EXPECT_EQ(session.getError()->severity, 1u);
    EXPECT_EQ(session.getError()->code, 0x8000FFFFu);
}

TEST_F(SessionTest, ReadFileLoadsFilterOneAndTheItemOutlivesTheSession)
{
    mcl::MailItem* item = nullptr;
    {
        mcl::Session session;
        item = session.readFile(dir.write("m.eml", kTwoMessages), false);
        ASSERT_NE(item, nullptr);
    }
    EXPECT_EQ(item->getSubject(), u"First subject");
    auto* reader = static_cast<TestReader*>(item->getReader());
    EXPECT_EQ(reader->filtersSeen, std::vector<uint32_t>({1}));
    EXPECT_EQ(item->getHeaderProperties()->findProperty(0x1000001F), nullptr);
    EXPECT_TRUE(item->loadBody());
    EXPECT_EQ(item->getHeaderProperties()->getString(0x1000001F), u"First body");
    EXPECT_EQ(reader->filtersSeen, std::vector<uint32_t>({1, 2}));
    EXPECT_EQ(reader->getRefCount(), 1);  // held by the item alone
    item->release();
}

TEST_F(SessionTest, HeaderModeReadsFilterEightAndStaysOn)
{
    mcl::Session session;
    mcl::MailItem* item = session.readHeaderFromFile(dir.write("m.eml", kTwoMessages), false);
    ASSERT_NE(item, nullptr);
    auto* reader = static_cast<TestReader*>(item->getReader());
    EXPECT_EQ(reader->filtersSeen, std::vector<uint32_t>({8}));
    EXPECT_EQ(reader->isHeaderMode(), 1u);
    EXPECT_EQ(item->getProperties(), item->getHeaderProperties());  // no load in header mode
    EXPECT_EQ(reader->filtersSeen.size(), 1u);
    item->release();
    // With no reader and no error, header mode reports nothing.
    EXPECT_EQ(session.readHeaderFromFile(dir.write("x.doc", "x"), false), nullptr);
}

TEST_F(SessionTest, QueueOfTwoReadersIsDrainedInOrder)
{
    mcl::Session session;
    ASSERT_TRUE(session.addFile(dir.write("a.eml", kTwoMessages), false));
    ASSERT_TRUE(session.addFile(dir.write("b.eml", "1 0 0037001F Third subject\n"), false));
    EXPECT_EQ(session.getCount(), 3);
    std::vector<std::u16string> subjects;
    while (mcl::MailItem* item = session.read()) {
        subjects.push_back(item->getSubject());
        item->release();
    }
    EXPECT_EQ(subjects, (std::vector<std::u16string>{u"First subject", u"Second subject", u"Third subject"}));
    EXPECT_EQ(session.getCount(), 0);
    EXPECT_FALSE(session.hasError());
}

TEST_F(SessionTest, ReadHeaderStopsAfterTheLastMessageUntilReset)
{
    mcl::Session session;
    ASSERT_TRUE(session.addFile(dir.write("a.eml", kTwoMessages), false));
    mcl::MailItem* first = session.readHeader();
    mcl::MailItem* second = session.readHeader();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->getSubject(), u"Second subject");
    auto* reader = static_cast<TestReader*>(first->getReader());
    size_t loads = reader->filtersSeen.size();
    EXPECT_EQ(session.readHeader(), nullptr);
    EXPECT_EQ(reader->filtersSeen.size(), loads);  // the reader is not touched again
    EXPECT_EQ(reader->isHeaderMode(), 0u);          // restored after each header read
    session.resetHeaders();
    mcl::MailItem* again = session.readHeader();
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->getSubject(), u"Second subject");  // the reader stands where it stood
    for (auto* item : {first, second, again}) item->release();
}

TEST_F(SessionTest, ReadByIdLeavesTheQueueAlone)
{
    mcl::Session session;
    ASSERT_TRUE(session.addFile(dir.write("a.eml", kTwoMessages), false));
    mcl::MailItem* item = session.readByID(u"1");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->getSubject(), u"Second subject");
    item->release();
    EXPECT_EQ(session.readByID(u"7"), nullptr);
    EXPECT_EQ(session.getError()->text, u"No such message");
    EXPECT_EQ(session.getCount(), 2);
    session.clear();
    EXPECT_EQ(session.getCount(), 0);
    EXPECT_FALSE(session.hasError());
    EXPECT_EQ(session.read(), nullptr);
}

TEST(Context, OnlyOnePerProcess)
{
    mcl::Context first;
    EXPECT_EQ(mcl::Context::instance(), &first);
    try {
        mcl::Context second;
        FAIL() << "a second context was made";
    } catch (const std::exception& e) {
        EXPECT_STREQ(e.what(), "Trying to create another one instance of mcl::Context");
    }
    EXPECT_EQ(mcl::Context::instance(), &first);
    EXPECT_EQ(first.getContextVersion(), 2u);
    EXPECT_EQ(first.getDateFormat(), u"dddd, MMMM d, yyyy");
    EXPECT_EQ(first.getTimeFormat(), u"h:mm:ss tt");
    first.setUseMapiIfPossible(1);
    EXPECT_FALSE(first.getUseMapiIfPossible());  // only VARIANT_TRUE counts
}

TEST(Context, AtomsDieWithTheContext)
{
    static int destroyed = 0;
    struct Atom : mcl::ContextAtom {
        ~Atom() override { ++destroyed; }
    };
    {
        mcl::Context context;
        context.addAtom(new Atom);
        auto* removed = new Atom;
        context.addAtom(removed);
        delete removed;  // leaves the list by itself
    }
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(mcl::Context::instance(), nullptr);
}

}  // namespace
