// Attached messages taken out as items of their own, from corpus files whose subjects and
// attachment names were read off the files with `strings` (the nested one's subject from the
// MIME header its message keeps, "Microsoft Outlook" and a Japanese text, base64-encoded).
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "core/mail_item.h"
#include "core/session.h"
#include "foundation/utf.h"
#include "msg/msg_reader.h"

namespace {

struct CorpusItem {
    mcl::Session session;
    mcl::MailItem* item;
    mcl::MSGReader* reader = nullptr;
    explicit CorpusItem(const char* name)
        : item(session.readFile(
              ty::utf8ToWide((std::filesystem::path(PARCELET_CORPUS_DIR) / "msg" / name).string()), false))
    {
        if (item && item->getProperties()) reader = dynamic_cast<mcl::MSGReader*>(item->getReader());
    }
    ~CorpusItem()
    {
        if (item) item->release();
    }
};

// The attached message of attachment `index` (0-based) of `item`, or null.
mcl::MailItem* attached(mcl::MSGReader& reader, mcl::MailItem& item, size_t index)
{
    mcl::Attachments* list = item.getAttachments();
    return list && index < list->count() ? reader.embeddedMessage(*list->getAttachment(index)) : nullptr;
}

TEST(EmbeddedMessage, TheAttachedMessageReadsAsAMessage)
{
    CorpusItem file("poi__attachment_msg_pdf.msg");
    ASSERT_NE(file.reader, nullptr);
    mcl::MailItem* message = attached(*file.reader, *file.item, 0);
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->getSubject(), u"Test Attachment");
    EXPECT_EQ(message->getBodyText(BodyPlainText).find(u"Blah blah blah"), 0u);
    message->release();
    EXPECT_EQ(attached(*file.reader, *file.item, 1), nullptr);  // the PDF
}

TEST(EmbeddedMessage, NestedMessagesKeepTheirOwnAttachments)
{
    CorpusItem file("msgreader__msgInMsgInMsg.msg");
    ASSERT_NE(file.reader, nullptr);
    mcl::MailItem* first = attached(*file.reader, *file.item, 0);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->getSubject(), u"I have attachments!");
    ASSERT_NE(first->getAttachments(), nullptr);
    ASSERT_EQ(first->getAttachments()->count(), 2u);
    EXPECT_EQ(first->getAttachments()->getAttachment(1)->getFileName(false), u"green.png");
    mcl::MailItem* second = attached(*file.reader, *first, 0);
    first->release();
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->getSubject(), u"Microsoft Outlook \u30C6\u30B9\u30C8 \u30E1\u30C3\u30BB\u30FC\u30B8");
    EXPECT_EQ(second->getFrom(), u"Microsoft Outlook <xmailuser@xmailserver.test>");
    second->release();
}

}  // namespace
