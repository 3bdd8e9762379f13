// Every store of the shared corpus: it opens, both trees are walked page by page, and the folder
// tree is read from the root folder down, with each message's properties, attachments and
// recipients. Expected counts and texts come from the corpus manifest and from pffexport.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "pst_fixture.h"

namespace pst_test {
namespace {

struct CorpusCase {
    const char* file;
    int formatNumber;      // 1 ANSI, 2 Unicode
    uint8_t encryption;
    size_t messages;       // rows of all contents tables under the root folder
    int attachments;       // -1: not compared
    const char* folder;    // a folder name, UTF-8
    const char* subject;   // a message subject, UTF-8; empty: not compared
};

const CorpusCase kCases[] = {
    {"pst/aspose__SampleOstFile.ost", 2, 1, 92, -1, "Inbox", "xx"},
    {"pst/hughbe__hughbe_Outlook.pst", 2, 1, 7, 0, "Journal", "Journal Entry"},
    {"pst/javalibpst__dist-list.pst", 2, 1, 4, 2, "Contacts", "test dist list"},
    {"pst/javalibpst__passworded.pst", 2, 1, 3, 0, "Contacts", "contact name 1"},
    {"pst/libyal__outlook.pst", 2, 1, 2, 22, "Top of Personal Folders", "Welcome to Microsoft Office Outlook 2003"},
    {"pst/processpst__flags_john_doe.pst", 2, 1, 10, 0, "Top of Outlook data file", "Test message"},
    {"pst/processpst__four_nesting_levels.pst", 2, 1, 1, 1, "Inbox", "Outermost message"},
    {"pst/processpst__multiple_to_cc.pst", 2, 1, 1, 0, "Inbox", "Multiple recipients"},
    {"pst/pst2john__2003_high-encryption_quickquick.pst", 2, 2, 36, 302, "Top of Personal Folders",
     "FW: Welcome to Microsoft Outlook 2000!"},
    {"pst/pst2john__2003_no-encryption_quickquick.pst", 2, 0, 20, 170, "Top of Personal Folders",
     "Welcome to Microsoft Outlook 2000!"},
    {"pst/pst2john__97_outlook_pass12345.pst", 1, 1, 294, 0, "Deleted Items", "Lorem ipsum "},
    {"pst/pstextractor__alpha-beta-gamma-delta.pst", 2, 1, 1, 2, "Outlook データ ファイルのトップ", "Alpha"},
    {"pst/pstextractor__contacts97-2002.pst", 1, 1, 1, 0, "Contact Search", ""},
    {"pst/pstsdk__sample1.pst", 2, 1, 1, 1, "Sample1", "Here is a sample message"},
    {"pst/pstsdk__sample2.pst", 1, 1, 1, 1, "Sample2", "Here is a sample message"},
    {"pst/pstsdk__submessage.pst", 2, 1, 1, 1, "Top of Outlook data file",
     "This is a message which has an embedded message attached"},
    {"pst/pstsdk__test_ansi.pst", 1, 1, 1, 0, "Folder", ""},
    {"pst/pstsdk__test_unicode.pst", 2, 1, 2, 0, "Folder", ""},
    {"pst/tika__testPST.pst", 2, 1, 7, 1, "Début du fichier de données Outlook", "Re: Feature Generators"},
    {"pst/tika__testPST_variousBodyTypes.pst", 2, 1, 4, 0, "Top of Outlook data file", "original email"},
    {"big/pstextractor-npm__enron.pst", 2, 1, 71, 70, "MLOKAY (Non-Privileged)",
     "Power Mart '01 - Register online for your FREE exhibition pass!"},
};

// Text of an item as this reader's users take it: UTF-16 or, for ANSI files, the bytes; a
// subject's leading marker of two characters below 32 is left out.
std::string itemText(const PST::BlockItem* item)
{
    if (!item || item->value.empty()) return {};
    const bool marked = static_cast<uint8_t>(item->value[0]) < 32;
    if (item->type == PT_STRING8) return std::string(item->value.c_str() + (marked ? 2 : 0));
    std::u16string wide;
    for (size_t i = 0; i + 1 < item->value.size(); i += 2) {
        char16_t c = static_cast<char16_t>(PST::loadU16(reinterpret_cast<const uint8_t*>(item->value.data()) + i));
        if (c == 0) break;
        wide += c;
    }
    return ty::wideToUtf8(marked && wide.size() >= 2 ? wide.substr(2) : wide);
}

template <class Record, class Index>
size_t walkPages(PST::TableNodeLazy<Record>& page, Index& index)
{
    EXPECT_TRUE(page.build()) << errorText(page.keeper());
    size_t records = 0;
    for (auto* child = page.firstChild(); child; child = child->next()) records += walkPages(*child, index);
    for (const Record& record : page.entries()) {
        EXPECT_EQ(index.find(record.id), &record);
        ++records;
    }
    return records;
}

struct Totals {
    size_t messages = 0;
    size_t attachments = 0;
    std::set<std::string> folders;
    std::set<std::string> subjects;
};

void walkFolder(PST::Reader& reader, uint64_t folderId, int depth, Totals& totals)
{
    ASSERT_LT(depth, 16);
    PST::DescIndex& nodes = *reader.descIndex();
    PST::Block folder(&reader, nodes.find(folderId), nullptr, PST::KindFolder);
    EXPECT_EQ(folder.kind(), PST::KindFolder);
    totals.folders.insert(itemText(folder.findItem(0x3001)));
    if (const auto* contents = nodes.find((folderId & ~uint64_t{31}) | 14)) {
        PST::Block table(&reader, contents, nullptr, PST::KindFolder);
        EXPECT_TRUE(table.rows().empty());
        totals.messages += table.rowIds().size();
        for (const auto& row : table.rowIds()) {
            PST::Block message(&reader, nodes.find(row.rowId), nullptr, PST::KindUnknown);
            EXPECT_FALSE(message.rows().empty());
            totals.subjects.insert(itemText(message.findItem(0x0037)));
            if (auto attachments = message.getAttachmentTree()) totals.attachments += attachments->childCount();
            if (auto recipients = message.getRecipientTree()) {
                EXPECT_EQ(recipients->block()->kind(), PST::KindRecipient);
            }
        }
    }
    if (const auto* hierarchy = nodes.find((folderId & ~uint64_t{31}) | 13)) {
        PST::Block table(&reader, hierarchy, nullptr, PST::KindFolder);
        for (const auto& row : table.rowIds()) walkFolder(reader, row.rowId, depth + 1, totals);
    }
}

class CorpusTest : public testing::TestWithParam<CorpusCase> {};

TEST_P(CorpusTest, OpensAndWalks)
{
    const CorpusCase& c = GetParam();
    PST::Reader reader;
    ASSERT_TRUE(reader.open(ty::utf8ToWide(std::string(PARCELET_CORPUS_DIR "/") + c.file)));
    EXPECT_FALSE(reader.hasError()) << errorText(reader);
    EXPECT_EQ(reader.adapter()->formatNumber(), c.formatNumber);
    EXPECT_EQ(reader.encryptionMethod(), c.encryption);
    EXPECT_FALSE(reader.nameMap().empty());
    EXPECT_GT(walkPages(reader.index()->root(), *reader.index()), 0u);
    EXPECT_GT(walkPages(reader.descIndex()->root(), *reader.descIndex()), 0u);
    auto store = reader.getStore();
    ASSERT_NE(store, nullptr);
    EXPECT_FALSE(store->block()->hasError());

    Totals totals;
    walkFolder(reader, PST::NID_ROOT_FOLDER, 0, totals);
    EXPECT_EQ(totals.messages, c.messages);
    if (c.attachments >= 0) {
        EXPECT_EQ(totals.attachments, static_cast<size_t>(c.attachments));
    }
    EXPECT_TRUE(totals.folders.count(c.folder)) << c.folder;
    if (*c.subject) {
        EXPECT_TRUE(totals.subjects.count(c.subject)) << c.subject;
    }
}

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusTest, testing::ValuesIn(kCases), [](const auto& info) {
    std::string name = info.param.file;
    name = name.substr(name.find("__") + 2);
    for (char& ch : name)
        if (!isalnum(static_cast<unsigned char>(ch))) ch = '_';
    return name;
});

}  // namespace
}  // namespace pst_test
