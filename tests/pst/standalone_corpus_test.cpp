// Every store of the corpus through the session, with both standalone readers: the folder tree
// is walked through the reader's folder face, and every message is read whole and in header
// mode. Expected names, counts and subjects come from the corpus manifest and from pffexport.
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <string>

#include "core/context.h"
#include "core/folder_tree.h"
#include "core/mail_item.h"
#include "core/session.h"
#include "foundation/utf.h"
#include "pst/standalone_reader.h"

namespace {

struct StoreCase {
    const char* file;
    int messages;         // messages that can be read, as pffexport finds them below the top folder
    const char* folder;   // a folder's name, UTF-8
    const char* subject;  // a message's subject, UTF-8; empty: not compared
    // The first folder with messages counts more than its table holds, and the default
    // reader's run ends where the count leads past the rows.
    bool runEndsEarly = false;
};

const StoreCase kStores[] = {
    {"pst/aspose__SampleOstFile.ost", 92, "Inbox", "xx", true},
    {"pst/hughbe__hughbe_Outlook.pst", 6, "Journal", "Journal Entry"},
    {"pst/javalibpst__dist-list.pst", 3, "Contacts", "test dist list"},
    {"pst/javalibpst__passworded.pst", 2, "Contacts", "contact name 1"},
    {"pst/libyal__outlook.pst", 2, "Inbox", "Welcome to Microsoft Office Outlook 2003"},
    {"pst/processpst__flags_john_doe.pst", 10, "Sent Items", "Test message"},
    {"pst/processpst__four_nesting_levels.pst", 1, "Inbox", "Outermost message"},
    {"pst/processpst__multiple_to_cc.pst", 1, "Inbox", "Multiple recipients"},
    {"pst/pst2john__2003_high-encryption_quickquick.pst", 36, "Deleted Items", "FW: Welcome to Microsoft Outlook 2000!"},
    {"pst/pst2john__2003_no-encryption_quickquick.pst", 20, "Deleted Items", "Welcome to Microsoft Outlook 2000!"},
    {"pst/pst2john__97_outlook_pass12345.pst", 294, "Deleted Items", "Lorem ipsum "},
    {"pst/pstextractor__alpha-beta-gamma-delta.pst", 1, "削除済みアイテム", "Alpha"},
    {"pst/pstextractor__contacts97-2002.pst", 1, "", ""},
    {"pst/pstsdk__sample1.pst", 1, "Sample1", "Here is a sample message"},
    {"pst/pstsdk__sample2.pst", 1, "Sample2", "Here is a sample message"},
    {"pst/pstsdk__submessage.pst", 1, "submessage", "This is a message which has an embedded message attached"},
    // pffexport and readpst export no message of these two, whose folders count one and two.
    {"pst/pstsdk__test_ansi.pst", -1, "Folder", ""},
    {"pst/pstsdk__test_unicode.pst", -1, "Folder", ""},
    {"pst/tika__testPST.pst", 7, "Éléments supprimés", "Re: Feature Generators"},
    {"pst/tika__testPST_variousBodyTypes.pst", 4, "tmp", "original email"},
    {"big/pstextractor-npm__enron.pst", 71, "MLOKAY (Non-Privileged)",
     "Power Mart '01 - Register online for your FREE exhibition pass!"},
};

std::u16string corpusPath(const char* file) { return ty::utf8ToWide(std::string(PARCELET_CORPUS_DIR "/") + file); }

struct Walk {
    int messages = 0;
    std::set<std::string> folders;
    std::set<std::string> subjects;
};

// Loads the current message of the reader as a host does: whole, then again in header mode. A
// folder's count may name messages the file hasn't; those fail both ways.
void loadMessage(mcl::BaseReader& reader, Walk& walk)
{
    auto* item = new mcl::MailItem(&reader, 0);
    uint32_t filter = mcl::kLoadEverything;
    const bool loaded = reader.load(item->getHeaderProperties(), &filter);
    if (loaded) {
        ++walk.messages;
        walk.subjects.insert(ty::wideToUtf8(item->getSubject()));
    }
    item->release();
    auto* header = new mcl::MailItem(&reader, 0);
    filter = mcl::LoadListing;
    const uint32_t before = reader.setHeaderMode(1);
    EXPECT_EQ(reader.load(header->getHeaderProperties(), &filter), loaded);
    if (loaded) {
        EXPECT_EQ(walk.subjects.count(ty::wideToUtf8(header->getSubject())), 1u);
    }
    reader.setHeaderMode(before);
    header->release();
}

// Depth first through the folder face, reading every message of every folder.
void walkFolders(mcl::PSTStandaloneReader& reader, int depth, Walk& walk)
{
    ASSERT_LT(depth, 32);
    const int count = reader.countDir();
    // A count above the table's rows ends the folder early.
    for (int i = 0; i < count; ++i) {
        loadMessage(reader, walk);
        if (!reader.next()) break;
    }
    std::vector<std::u16string> names;
    const int32_t listed = reader.collectDir(names);
    ASSERT_EQ(listed, static_cast<int32_t>(names.size()));
    for (const std::u16string& name : names) {
        walk.folders.insert(ty::wideToUtf8(name));
        ASSERT_TRUE(reader.changeDir(name));
        walkFolders(reader, depth + 1, walk);
        ASSERT_TRUE(reader.moveUp());
    }
}

class StandaloneCorpus : public testing::TestWithParam<StoreCase> {
protected:
    mcl::Context context;
    mcl::Session session;

    mcl::BaseReader* open(uint32_t version)
    {
        context.setContextVersion(version);
        return session.createReaderEx(corpusPath(GetParam().file), false);
    }
};

TEST_P(StandaloneCorpus, FolderFaceReachesEveryMessage)
{
    const StoreCase& c = GetParam();
    mcl::BaseReader* opened = open(3);
    ASSERT_NE(opened, nullptr) << (session.hasError() ? ty::wideToUtf8(session.getError()->text) : "");
    auto* reader = dynamic_cast<mcl::PSTStandaloneReader*>(opened);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->folderTree(), static_cast<mcl::FolderTree*>(reader));
    EXPECT_EQ(reader->getCount(), 0);
    Walk walk;
    walkFolders(*reader, 0, walk);
    if (c.messages >= 0) {
        EXPECT_EQ(walk.messages, c.messages);
    }
    if (*c.folder) {
        EXPECT_EQ(walk.folders.count(c.folder), 1u) << c.folder;
    }
    if (*c.subject) {
        EXPECT_EQ(walk.subjects.count(c.subject), 1u) << c.subject;
    }
    opened->release();
}

TEST_P(StandaloneCorpus, DefaultReaderRunsThroughAllMessagesOnce)
{
    const StoreCase& c = GetParam();
    mcl::BaseReader* reader = open(2);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(dynamic_cast<mcl::PSTStandaloneReader*>(reader)->getClassName(), u"PSTStandaloneReaderLegacy");
    const int32_t counted = reader->getCount();
    EXPECT_GE(counted, c.messages);
    Walk walk;
    int steps = 0;
    do {
        loadMessage(*reader, walk);
        ASSERT_LE(++steps, counted);
    } while (reader->next());
    if (c.messages >= 0 && !c.runEndsEarly) {
        EXPECT_EQ(walk.messages, c.messages);
    }
    if (*c.subject && !c.runEndsEarly) {
        EXPECT_EQ(walk.subjects.count(c.subject), 1u) << c.subject;
    }
    reader->release();
}

INSTANTIATE_TEST_SUITE_P(Corpus, StandaloneCorpus, testing::ValuesIn(kStores), [](const auto& info) {
    std::string name = info.param.file;
    name = name.substr(name.find("__") + 2);
    for (char& ch : name)
        if (!isalnum(static_cast<unsigned char>(ch))) ch = '_';
    return name;
});

TEST(StandaloneStore, FourKilobytePagesAreRefused)
{
    mcl::Context context;
    for (uint32_t version : {2u, 3u}) {
        context.setContextVersion(version);
        mcl::Session session;
        EXPECT_EQ(session.readFile(corpusPath("big/pstextractor-npm__ost2013-4k.ost"), false), nullptr);
        ASSERT_TRUE(session.hasError());
        EXPECT_EQ(session.getError()->text,
                  u"Unknown PST index type. File may be corrupted or have unsupported format.");
        EXPECT_EQ(session.getError()->code, mul::E_FAIL_CODE);
    }
}

}  // namespace
