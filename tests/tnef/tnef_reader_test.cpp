// A TNEF file on its own through the session: the names and contents routed to the reader, and
// the narrow text it leaves for the frame to convert.
#include <gtest/gtest.h>

#include "core/mail_item.h"
#include "core/session.h"
#include "support/temp_dir.h"
#include "tnef_stream_builder.h"

namespace {

using namespace tnef_test;

TEST(TNEFReader, ReadsWhatTheSessionRoutesToIt)
{
    // "Grüße" in Windows-1252, the ANSI code page of the C locale the tests run in.
    const std::string bytes = stream({attribute(1, kAttSubject, raw("Gr\xFC\xDF" "e\0"))});
    test_support::TempDir dir;
    struct Case {
        const char* fileName;
        bool ignoreExtension, headerOnly;
    };
    for (const Case& c : {Case{"message.tnef", false, false}, Case{"WinMail.DAT", false, true}, Case{"message.bin", true, false}}) {
        SCOPED_TRACE(c.fileName);
        mcl::Session session;
        std::u16string path = dir.write(c.fileName, bytes);
        mcl::MailItem* item = c.headerOnly ? session.readHeaderFromFile(path, false) : session.readFile(path, c.ignoreExtension);
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->getFileType(), 3u);
        EXPECT_EQ(item->getSubject(), u"Grüße");
        EXPECT_NE(item->getHeaderProperties()->findMasked(0x0037001F, 0xFFFFFFFF, 0), nullptr);
        item->release();
    }
    // A file named as TNEF that holds none loads as an empty message.
    mcl::Session session;
    mcl::MailItem* item = session.readFile(dir.write("other.tnef", "not a stream"), false);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->getProperties()->count(), 0u);
    item->release();
}

}  // namespace
