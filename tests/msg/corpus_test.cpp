// Every MSG file of the shared corpus loads through the session, in full, and shows what the
// corpus MANIFEST states about it; a dozen files are checked further against values read off
// their streams with other tools (OLE::Storage_Lite, msgconvert).
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "core/mail_item.h"
#include "core/session.h"
#include "foundation/utf.h"
#include "msg_fixture.h"

namespace {

namespace fs = std::filesystem;

struct ManifestFacts {
    std::string messageClass;
    bool unicode = false;
    std::string body;
    size_t attachments = 0, embedded = 0, recipients = 0;
};

// The MSG rows of the MANIFEST: "| msg/NAME | ... | CLASS; Unicode; body B; N attachments (M embedded
// msg); K recipients; ...".
std::map<std::string, ManifestFacts> manifest()
{
    std::ifstream in(fs::path(PARCELET_CORPUS_DIR) / "MANIFEST.md");
    std::string text((std::istreambuf_iterator<char>(in)), {});
    std::regex row(R"(\| msg/([^ |]+) \|.*\| ([^;|]+); (Unicode|non-Unicode \(PT_STRING8\)); body ([^;]+); )"
                   R"((\d+) attachments \((\d+) embedded msg\); (\d+) recipients;)");
    std::map<std::string, ManifestFacts> facts;
    for (std::sregex_iterator it(text.begin(), text.end(), row), end; it != end; ++it) {
        const std::smatch& m = *it;
        facts[m[1]] =
            ManifestFacts{m[2], m[3] == "Unicode", m[4], std::stoul(m[5]), std::stoul(m[6]), std::stoul(m[7])};
    }
    return facts;
}

const std::u16string kPageStart = u"<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\"";

bool isPageClass(const std::string& messageClass)
{
    return messageClass == "IPM.Task" || messageClass == "IPM.Contact" || messageClass == "IPM.Appointment" ||
           messageClass == "IPM.Activity";
}

// "text+html+rtf" as the MANIFEST writes it, from the bodies at the root; a made page isn't a body.
std::string bodyKinds(const mcl::MailProperties& props, bool page)
{
    std::string kinds;
    auto add = [&](uint32_t tag, const char* kind) {
        if (props.findMasked(tag, 0xFFFF0000, 0)) kinds += (kinds.empty() ? "" : "+") + std::string(kind);
    };
    add(0x10000000, "text");
    if (!page) add(0x10130000, "html");
    add(0x10090000, "rtf");
    return kinds.empty() ? "no body" : kinds;
}

// Loads the file as a host would: the item, then everything.
struct LoadedFile {
    mcl::Session session;
    mcl::MailItem* item = nullptr;
    mcl::MailProperties* all = nullptr;
    explicit LoadedFile(const std::string& name)
    {
        item = session.readFile(ty::utf8ToWide((fs::path(PARCELET_CORPUS_DIR) / "msg" / name).string()), false);
        if (item) all = item->getProperties();
    }
    ~LoadedFile()
    {
        if (item) item->release();
    }
};

TEST(MsgCorpus, EveryFileLoadsWholeAndShowsTheManifestsFacts)
{
    std::map<std::string, ManifestFacts> facts = manifest();
    size_t files = 0;
    for (const auto& entry : fs::directory_iterator(fs::path(PARCELET_CORPUS_DIR) / "msg")) {
        const std::string name = entry.path().filename().string();
        SCOPED_TRACE(name);
        ++files;
        LoadedFile file(name);
        ASSERT_NE(file.item, nullptr) << ty::wideToUtf8(file.session.getError()->getDescription());
        ASSERT_NE(file.all, nullptr) << ty::wideToUtf8(file.item->getError()->getDescription());
        ASSERT_NE(file.item->getAttachments(), nullptr);
        ASSERT_TRUE(facts.count(name));
        const ManifestFacts& expected = facts[name];
        const mcl::MailProperties& props = *file.all;
        mcl::MailProperty* messageClass = props.findProperty(0x001A001F, 0);
        ASSERT_NE(messageClass, nullptr);
        EXPECT_EQ(ty::wideToUtf8(messageClass->toString()), expected.messageClass);
        EXPECT_EQ(messageClass->name() == u"__substg1.0_001A001F", expected.unicode);
        const bool page = isPageClass(expected.messageClass);
        EXPECT_EQ(bodyKinds(props, page), expected.body);
        if (page) {
            EXPECT_EQ(props.getString(0x1013001F, 0).rfind(kPageStart, 0), 0u);
        }
        EXPECT_EQ(msg_test::below(props, mcl::kRecipientRow, 0).size(), expected.recipients);
        std::vector<mcl::MailProperty*> attachments = msg_test::below(props, mcl::kAttachmentRow, 0);
        EXPECT_EQ(attachments.size(), expected.attachments);
        size_t embedded = 0;
        for (mcl::MailProperty* row : attachments) {
            mcl::MailProperty* object = props.findMasked(0x3701000D, 0xFFFFFFFF, row->id());
            embedded += object && props.findProperty(0x001A001F, object->id());
        }
        EXPECT_EQ(embedded, expected.embedded);
    }
    EXPECT_EQ(files, facts.size());
}

struct Attached {
    std::u16string name;  // the long file name, else the display name
    uint64_t dataSize;    // 0: no data stream
};

struct Expected {
    const char* file;
    std::u16string subject, sender;
    size_t recipients;
    std::u16string firstRecipient;
    std::vector<Attached> attachments;
    std::u16string embeddedSubject;  // of the first attached message
};

TEST(MsgCorpus, ChosenFilesHoldTheValuesOtherToolsRead)
{
    const Expected table[] = {
        {"poi__quick.msg", u"Test the content transformer", u"Kevin Roast", 1, u"Kevin Roast", {}, u""},
        {"msgreader__nonUnicodeMail.msg", u"Non Unicode mail subject", u"", 1, u"xmailuser2@xmailserver.test", {}, u""},
        {"poi__msgClassTask.msg", u"Must jump over the lazy dog", u"Allison, Timothy B.", 0, u"", {}, u""},
        {"poi__msgClassContact.msg", u"Quick Brown Fox Jr", u"Allison, Timothy B.", 0, u"", {}, u""},
        {"poi__msgClassAppointment.msg", u"Quick brown fox", u"Allison, Timothy B.", 1, u"Allison, Timothy B.", {},
         u""},
        {"msgreader__msgInMsgInMsg.msg", u"I have sub attachments!", u"", 0, u"",
         {{u"I have attachments!", 0}, {u"blue.png", 134}}, u"I have attachments!"},
        {"poi__attachment_msg_pdf.msg", u"test email", u"Nick Booth", 1, u"Nick Booth",
         {{u"Test Attachment", 0}, {u"smbprn.00009008.KdcPjl.pdf", 13539}}, u"Test Attachment"},
        {"msgreader__Attach_sample_eml_received.msg", u"Attach sample.eml", u"hmailuser@hmailserver.test",
         1, u"hmailuser@hmailserver.test", {{u"sample.eml (555 バイト)", 0}}, u"sample"},
        {"msgreader-sicos__EmailWithAttachments.msg", u"This is the subject", u"Kees", 3,
         u"crocodile@neverland.com", {{u"peterpan.jpg", 39150}, {u"tinkerbell.jpg", 49353}}, u""},
        {"msgextractor__unicode.msg", u"Test for TIF files", u"Brian Zhou", 2, u"brianzhou@me.com",
         {{u"import OleFileIO.tif", 969674}, {u"raised value error.tif", 1033142}}, u""},
        {"poi__outlook_30_msg.msg", u"IN-SPIRE servers going down for a bit, back up around 8am",
         u"Cramer, Nick", 18, u"Bohn, Shawn J", {}, u""},
        {"msgreader__newOutlook_Microsoft_Outlook_test.msg", u"Microsoft Outlook テスト メッセージ",
         u"Microsoft Outlook", 1, u"ku@digitaldolphins.jp", {}, u""},
        {"poi__lots-of-recipients.msg", u"Read Original Extract of Mr. Narayana Murthy's Speech during Mentor session",
         u"vishwajit Mankar", 1321, u"Niranjan Salian",
         {{u"Fwd_ Read Original Extract of Mr. Narayana Murthy's Speech during Mentor session.eml", 7813}}, u""},
    };
    for (const Expected& e : table) {
        SCOPED_TRACE(e.file);
        LoadedFile file(e.file);
        ASSERT_NE(file.all, nullptr);
        const mcl::MailProperties& props = *file.all;
        EXPECT_EQ(props.getString(0x0037001F, 0), e.subject);
        EXPECT_EQ(props.getString(0x0C1A001F, 0), e.sender);
        std::vector<mcl::MailProperty*> recipients = msg_test::below(props, mcl::kRecipientRow, 0);
        ASSERT_EQ(recipients.size(), e.recipients);
        if (!recipients.empty()) {
            EXPECT_EQ(props.getString(0x3001001F, recipients[0]->id()), e.firstRecipient);
        }
        std::vector<mcl::MailProperty*> attachments = msg_test::below(props, mcl::kAttachmentRow, 0);
        ASSERT_EQ(attachments.size(), e.attachments.size());
        for (size_t i = 0; i < attachments.size(); ++i) {
            const uint32_t row = attachments[i]->id();
            std::u16string name = props.getString(0x3707001F, row);
            EXPECT_EQ(name.empty() ? props.getString(0x3001001F, row) : name, e.attachments[i].name);
            mcl::MailProperty* data = props.findMasked(0x37010102, 0xFFFFFFFF, row);
            EXPECT_EQ(data ? data->size() : 0, e.attachments[i].dataSize);
        }
        if (!e.embeddedSubject.empty()) {
            mcl::MailProperty* object = props.findMasked(0x3701000D, 0xFFFFFFFF, attachments[0]->id());
            ASSERT_NE(object, nullptr);
            EXPECT_EQ(props.getString(0x0037001F, object->id()), e.embeddedSubject);
        }
    }
}

}  // namespace
