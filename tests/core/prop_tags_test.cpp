#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "core/prop_tags.h"

namespace {

using Row = std::pair<std::string, uint32_t>;

// The data file read independently of the generator: NAME <TAB> 0xTAG, '#' comments.
const std::vector<Row>& dataRows()
{
    static const std::vector<Row> rows = [] {
        std::vector<Row> result;
        std::ifstream in(PARCELET_SOURCE_DIR "/core/prop_tags.tsv");
        EXPECT_TRUE(in.good());
        std::string line;
        while (std::getline(in, line)) {
            if (line.empty() || line[0] == '#')
                continue;
            const auto tab = line.find('\t');
            EXPECT_NE(tab, std::string::npos) << line;
            if (tab == std::string::npos)
                continue;
            result.emplace_back(line.substr(0, tab), static_cast<uint32_t>(std::stoul(line.substr(tab + 1), nullptr, 16)));
        }
        return result;
    }();
    return rows;
}

std::map<std::string, uint32_t> dataByName()
{
    std::map<std::string, uint32_t> byName;
    for (const auto& [name, tag] : dataRows())
        byName.emplace(name, tag);
    return byName;
}

bool isStringType(uint32_t tag)
{
    const uint32_t type = tag & 0xEFFF; // without the multi-value bit
    return type == 0x1E || type == 0x1F;
}

struct Known {
    const char* name;
    uint32_t tag;
};

// Rows the host enumeration must carry, and tags known from the published MAPI headers.
constexpr Known kHostRows[] = {
    {"PR_1_LINKED_MESSAGE_ENTRYID", 0x780E0102}, {"PR_7BIT_DISPLAY_NAME", 0x39FF001E},
    {"PR_AB_DEFAULT_DIR", 0x3D060102},           {"PR_EMS_AB_OTHER_RECIPS", 0xF000000D},
    {"PR_MAPI_DEFERRED_ERRORS", 0x01940003},     {"PR_MCL_SUBMIT_TIMEZONE", 0xF039001E},
    {"PR_MCL_SUBMIT_TIMEZONE_A", 0xF039001E},    {"PR_MCL_SUBMIT_TIMEZONE_W", 0xF039001F},
    {"ptagMapiEntryIdGUID", 0x676C0102},         {"ptagXref", 0x67850102},
};

constexpr Known kWellKnown[] = {
    {"PR_SUBJECT_W", 0x0037001F},      {"PR_MESSAGE_CLASS_W", 0x001A001F},
    {"PR_BODY_W", 0x1000001F},         {"PR_RTF_COMPRESSED", 0x10090102},
    {"PR_ATTACH_DATA_BIN", 0x37010102}, {"PR_TRANSPORT_MESSAGE_HEADERS_W", 0x007D001F},
    {"PR_INTERNET_CPID", 0x3FDE0003},  {"PR_DISPLAY_TO_W", 0x0E04001F},
    {"PR_ENTRYID", 0x0FFF0102},        {"PR_SUBJECT", 0x0037001E},
    {"PR_ATTACH_METHOD", 0x37050003},  {"PR_MESSAGE_FLAGS", 0x0E070003},
};

TEST(PropTags, HostRowsResolveBothWaysAndInTheEnumeration)
{
    for (const auto& row : kHostRows) {
        EXPECT_EQ(mcl::propTagByName(row.name), row.tag) << row.name;
        // Each of these tags has no PR_ name that would be preferred over the one listed,
        // except the _A form, whose tag the bare name also carries.
        if (std::string_view(row.name).ends_with("_A"))
            continue;
        EXPECT_EQ(mcl::propTagName(row.tag), row.name) << std::hex << row.tag;
    }
    EXPECT_EQ(PR_1_LINKED_MESSAGE_ENTRYID, 0x780E0102u);
    EXPECT_EQ(PR_MCL_SUBMIT_TIMEZONE_W, 0xF039001Fu);
    EXPECT_EQ(ptagMapiEntryIdGUID, 0x676C0102u);
    EXPECT_EQ(ptagXref, 0x67850102u);
    EXPECT_EQ(PR_EMS_AB_OTHER_RECIPS, 0xF000000Du);
}

TEST(PropTags, WellKnownTagsMatchThePublishedValues)
{
    for (const auto& row : kWellKnown)
        EXPECT_EQ(mcl::propTagByName(row.name), row.tag) << row.name;
    EXPECT_EQ(PR_SUBJECT_W, 0x0037001Fu);
    EXPECT_EQ(PR_ATTACH_DATA_BIN, 0x37010102u);
    EXPECT_EQ(mcl::propTagName(0x0037001F), "PR_SUBJECT_W");
    EXPECT_EQ(mcl::propTagName(0x0037001E), "PR_SUBJECT");
    EXPECT_EQ(mcl::propTagName(0x1000001F), "PR_BODY_W");
    EXPECT_EQ(mcl::propTagName(0x37010102), "PR_ATTACH_DATA_BIN");
}

TEST(PropTags, NamePreferenceAmongNamesOfOneTag)
{
    // PR_ENTRYID and PR_MEMBER_ENTRYID and ptagEntryId share 0x0FFF0102.
    EXPECT_EQ(mcl::propTagName(0x0FFF0102), "PR_ENTRYID");
    // Narrow text: the bare name, not _A and not the ptag name.
    EXPECT_EQ(mcl::propTagName(0x001A001E), "PR_MESSAGE_CLASS");
    // A wide-text tag with no _W form keeps its bare name.
    EXPECT_EQ(mcl::propTagName(0x0E28001F), "PR_PRIMARY_SEND_ACCT");
    // An object tag named only by its _O form.
    EXPECT_EQ(mcl::propTagName(0x8006000D), "PR_EMS_AB_HOME_MDB_O");
    // A tag named only by ptag.
    EXPECT_EQ(mcl::propTagName(0x40000003), "ptagNewAttach");
}

TEST(PropTags, UnknownNamesAndTagsFindNothing)
{
    EXPECT_EQ(mcl::propTagByName(""), std::nullopt);
    EXPECT_EQ(mcl::propTagByName("pr_subject"), std::nullopt);
    EXPECT_EQ(mcl::propTagByName("PR_SUBJEC"), std::nullopt);
    EXPECT_EQ(mcl::propTagByName("PR_SUBJECT_X"), std::nullopt);
    EXPECT_EQ(mcl::propTagByName(std::string_view("PR_SUBJECT\0", 11)), std::nullopt);
    EXPECT_EQ(mcl::propTagName(0x00000000), "");
    EXPECT_EQ(mcl::propTagName(0xFFFFFFFF), "");
    EXPECT_EQ(mcl::propTagName(0x0037000B), "");
}

TEST(PropTags, EveryDataRowIsUniqueAndResolves)
{
    const auto& rows = dataRows();
    ASSERT_FALSE(rows.empty());
    std::set<std::string> names;
    for (const auto& [name, tag] : rows) {
        EXPECT_TRUE(names.insert(name).second) << "repeated name " << name;
        EXPECT_EQ(mcl::propTagByName(name), tag) << name;
        const auto preferred = mcl::propTagName(tag);
        EXPECT_FALSE(preferred.empty()) << name;
        EXPECT_EQ(mcl::propTagByName(preferred), tag) << name;
    }
    EXPECT_EQ(mcl::propTagNameCount(), rows.size());
}

TEST(PropTags, CountsOfPrAndPtagNamesAreThoseOfTheData)
{
    std::size_t prInData = 0, ptagInData = 0;
    for (const auto& row : dataRows()) {
        prInData += row.first.starts_with("PR_");
        ptagInData += row.first.starts_with("ptag");
    }
    EXPECT_EQ(prInData + ptagInData, dataRows().size());

    std::size_t prInTable = 0, ptagInTable = 0;
    for (const auto& entry : mcl::prop_tags_data::kByName) {
        prInTable += entry.name.starts_with("PR_");
        ptagInTable += entry.name.starts_with("ptag");
    }
    EXPECT_EQ(prInTable, prInData);
    EXPECT_EQ(ptagInTable, ptagInData);
}

TEST(PropTags, StringTriplesHaveNarrowBareAndAAndWideW)
{
    const auto byName = dataByName();
    std::size_t triples = 0;
    for (const auto& [name, tag] : byName) {
        const auto a = byName.find(name + "_A");
        const auto w = byName.find(name + "_W");
        if (!name.starts_with("PR_") || a == byName.end() || w == byName.end())
            continue;
        ++triples;
        EXPECT_EQ(a->second & 0xEFFF, 0x1Eu) << a->first;
        EXPECT_EQ(w->second & 0xEFFF, 0x1Fu) << w->first;
        // Usually one property; a few published _W names (PR_SCHDINFO_DELEGATE_NAMES_W) have their own.
        EXPECT_EQ(w->second & 0x1000, a->second & 0x1000) << name;
        if (isStringType(tag))
            EXPECT_EQ(tag, a->second) << name;
        else // the address book's distinguished-name links, published as objects
            EXPECT_EQ(tag, (a->second & 0xFFFF0000) | 0x0D) << name;
    }
    EXPECT_GT(triples, 100u);
}

TEST(PropTags, LookupTablesAreSortedAndHoldTheSameNames)
{
    const auto& byName = mcl::prop_tags_data::kByName;
    const auto& byTag = mcl::prop_tags_data::kByTag;
    EXPECT_TRUE(std::adjacent_find(std::begin(byName), std::end(byName), [](const auto& a, const auto& b) {
                    return a.name >= b.name;
                }) == std::end(byName));
    EXPECT_TRUE(std::is_sorted(std::begin(byTag), std::end(byTag),
                               [](const auto& a, const auto& b) { return a.tag < b.tag; }));

    std::set<std::pair<std::string_view, uint32_t>> fromName, fromTag;
    for (const auto& entry : byName)
        fromName.emplace(entry.name, entry.tag);
    for (const auto& entry : byTag)
        fromTag.emplace(entry.name, entry.tag);
    EXPECT_EQ(fromName, fromTag);
}

} // namespace
