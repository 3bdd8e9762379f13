// Every MSG file of the shared corpus opens, its whole tree is walked and every stream read, and
// the facts the corpus MANIFEST states about each file are found in the tree.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <regex>
#include <string>
#include <vector>

#include "foundation/compound_file_signature.h"
#include "foundation/utf.h"
#include "storage/compound_file_writer.h"
#include "storage/storage.h"
#include "tree_walk.h"

namespace {

namespace fs = std::filesystem;

struct ManifestFacts {
    std::string file;
    std::string messageClass;
    bool unicode = false;
    std::string body;  // "text+rtf", "html", "no body", ...
    int attachments = 0;
    int embedded = 0;
    int recipients = 0;
};

std::string readFile(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// The MSG rows of the MANIFEST's table: "| msg/NAME | ... | CLASS; Unicode; body B; N attachments
// (M embedded msg); K recipients; cp:... |".
std::vector<ManifestFacts> manifestFacts()
{
    std::string text = readFile(fs::path(PARCELET_CORPUS_DIR) / "MANIFEST.md");
    std::regex row(R"(\| msg/([^ |]+) \|.*\| ([^;|]+); (Unicode|non-Unicode \(PT_STRING8\)); body ([^;]+); )"
                   R"((\d+) attachments \((\d+) embedded msg\); (\d+) recipients;)");
    std::vector<ManifestFacts> facts;
    for (std::sregex_iterator it(text.begin(), text.end(), row), end; it != end; ++it) {
        const std::smatch& m = *it;
        facts.push_back(ManifestFacts{m[1], m[2], m[3] == "Unicode", m[4], std::stoi(m[5]), std::stoi(m[6]),
                                      std::stoi(m[7])});
    }
    return facts;
}

std::vector<fs::path> corpusMessages()
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(fs::path(PARCELET_CORPUS_DIR) / "msg"))
        if (entry.path().extension() == ".msg") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

bool startsWith(const std::u16string& text, const std::u16string& prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool has(const storage_test::WalkResult& walk, const std::u16string& path)
{
    return walk.streams.count(path) != 0;
}

TEST(CorpusMsg, EveryFileOpensAndEveryStreamReads)
{
    std::vector<fs::path> files = corpusMessages();
    ASSERT_GE(files.size(), 50u);
    size_t streams = 0;
    uint64_t bytes = 0;
    auto started = std::chrono::steady_clock::now();
    for (const fs::path& file : files) {
        std::u16string path = ty::utf8ToWide(file.string());
        EXPECT_TRUE(ty::isCompoundFile(path)) << file;
        cfb::Storage root;
        ASSERT_EQ(cfb::openStorageFile(path, root), cfb::S_OK_CODE) << file;
        storage_test::WalkResult walk = storage_test::walkAll(root);
        EXPECT_EQ(walk.code, cfb::S_OK_CODE) << file;
        streams += walk.streams.size();
        for (const auto& [name, data] : walk.streams) bytes += data.size();
    }
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    std::cout << "[ corpus  ] opened and walked " << files.size() << " MSG files, " << streams << " streams, "
              << bytes << " bytes in " << seconds * 1000 << " ms\n";
}

TEST(CorpusMsg, FileAndMemoryGiveTheSameTree)
{
    for (const fs::path& file : corpusMessages()) {
        cfb::Storage fromFile, fromMemory;
        ASSERT_EQ(cfb::openStorageFile(ty::utf8ToWide(file.string()), fromFile), cfb::S_OK_CODE) << file;
        ASSERT_EQ(cfb::openStorageMemory(readFile(file), fromMemory), cfb::S_OK_CODE) << file;
        storage_test::WalkResult a = storage_test::walkAll(fromFile), b = storage_test::walkAll(fromMemory);
        EXPECT_TRUE(a.streams == b.streams) << file;
        EXPECT_TRUE(a.listings == b.listings) << file;
    }
}

TEST(CorpusMsg, ChildrenComeInTheFormatsNameOrder)
{
    for (const fs::path& file : corpusMessages()) {
        cfb::Storage root;
        ASSERT_EQ(cfb::openStorageFile(ty::utf8ToWide(file.string()), root), cfb::S_OK_CODE) << file;
        storage_test::WalkResult walk = storage_test::walkAll(root);
        for (const auto& [storage, names] : walk.listings)
            for (size_t i = 1; i < names.size(); ++i)
                EXPECT_LT(cfb::compareNames(names[i - 1], names[i]), 0)
                    << file << " " << ty::wideToUtf8(storage) << ": " << ty::wideToUtf8(names[i - 1]) << " before "
                    << ty::wideToUtf8(names[i]);
    }
}

TEST(CorpusMsg, TreesHoldWhatTheManifestStates)
{
    std::vector<ManifestFacts> facts = manifestFacts();
    ASSERT_EQ(facts.size(), corpusMessages().size());
    for (const ManifestFacts& fact : facts) {
        SCOPED_TRACE(fact.file);
        cfb::Storage root;
        fs::path file = fs::path(PARCELET_CORPUS_DIR) / "msg" / fact.file;
        ASSERT_EQ(cfb::openStorageFile(ty::utf8ToWide(file.string()), root), cfb::S_OK_CODE);
        storage_test::WalkResult walk = storage_test::walkAll(root);
        ASSERT_EQ(walk.code, cfb::S_OK_CODE);
        EXPECT_TRUE(has(walk, u"__properties_version1.0"));

        // The message class, in the string type the file uses.
        const char16_t* classStream = fact.unicode ? u"__substg1.0_001A001F" : u"__substg1.0_001A001E";
        ASSERT_TRUE(has(walk, classStream));
        const std::string& raw = walk.streams[classStream];
        std::string messageClass;
        if (fact.unicode) {
            std::u16string wide(raw.size() / 2, u'\0');
            std::memcpy(wide.data(), raw.data(), wide.size() * 2);
            messageClass = ty::wideToUtf8(wide);
        } else {
            messageClass = raw;
        }
        messageClass = messageClass.substr(0, messageClass.find('\0'));
        EXPECT_EQ(messageClass, fact.messageClass);

        int attachments = 0, embedded = 0, recipients = 0;
        for (const std::u16string& name : walk.listings[u""]) {
            if (startsWith(name, u"__recip_version1.0_#")) ++recipients;
            if (startsWith(name, u"__attach_version1.0_#")) {
                ++attachments;
                if (walk.listings.count(name + u"/__substg1.0_3701000D")) ++embedded;
            }
        }
        EXPECT_EQ(recipients, fact.recipients);
        EXPECT_EQ(attachments, fact.attachments);
        EXPECT_EQ(embedded, fact.embedded);

        const char16_t* stringType = fact.unicode ? u"001F" : u"001E";
        bool text = has(walk, std::u16string(u"__substg1.0_1000") + stringType);
        bool html = has(walk, u"__substg1.0_10130102") || has(walk, std::u16string(u"__substg1.0_1013") + stringType);
        bool rtf = has(walk, u"__substg1.0_10090102");
        EXPECT_EQ(text, fact.body.find("text") != std::string::npos);
        EXPECT_EQ(html, fact.body.find("html") != std::string::npos);
        EXPECT_EQ(rtf, fact.body.find("rtf") != std::string::npos);
    }
}

TEST(CorpusMsg, SubjectStreamsOfKnownFiles)
{
    struct Known {
        const char* file;
        const char16_t* subject;
    };
    for (const Known& known : {Known{"poi__quick.msg", u"__substg1.0_0037001E"},
                               Known{"msgreader__unicode1.msg", u"__substg1.0_0037001F"},
                               Known{"poi__cyrillic_message.msg", u"__substg1.0_0037001E"},
                               Known{"msgreader-sicos__EmailWithAttachments.msg", u"__substg1.0_0037001F"}}) {
        cfb::Storage root;
        fs::path file = fs::path(PARCELET_CORPUS_DIR) / "msg" / known.file;
        ASSERT_EQ(cfb::openStorageFile(ty::utf8ToWide(file.string()), root), cfb::S_OK_CODE);
        cfb::Stream subject;
        EXPECT_EQ(root.openStream(known.subject, subject), cfb::S_OK_CODE) << known.file;
        EXPECT_GT(subject.size(), 0u) << known.file;
    }
}

TEST(CorpusMsg, NestedEmbeddedMessagesAreReachable)
{
    // Two levels of embedded message, each under an attachment storage of its parent.
    cfb::Storage root;
    fs::path file = fs::path(PARCELET_CORPUS_DIR) / "msg" / "msgreader__msgInMsgInMsg.msg";
    ASSERT_EQ(cfb::openStorageFile(ty::utf8ToWide(file.string()), root), cfb::S_OK_CODE);
    storage_test::WalkResult walk = storage_test::walkAll(root);
    ASSERT_EQ(walk.code, cfb::S_OK_CODE);
    int deepest = 0;
    for (const auto& [path, names] : walk.listings) {
        int depth = 0;
        for (size_t at = path.find(u"__substg1.0_3701000D"); at != std::u16string::npos;
             at = path.find(u"__substg1.0_3701000D", at + 1))
            ++depth;
        deepest = std::max(deepest, depth);
    }
    EXPECT_EQ(deepest, 2);
}

}  // namespace
