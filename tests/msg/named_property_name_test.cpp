// The MSG reader's names for named property ids, checked against a corpus file whose
// "__nameid_version1.0" streams were read by hand: the entry stream maps 0x8000 to number
// 0x8580 of the first stored GUID {00062008-...}, and 0x8004 and 0x8005 to the string names at
// offsets 0 and 0x38 of the string stream, "content-transfer-encoding" and "content-type";
// its last entry is for 0x8010.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/mail_item.h"
#include "core/session.h"
#include "foundation/utf.h"
#include "msg/msg_reader.h"

namespace {

TEST(NamedPropertyName, CorpusFileNamesItsNamedProperties)
{
    mcl::Session session;
    mcl::MailItem* item = session.readFile(
        ty::utf8ToWide((std::filesystem::path(PARCELET_CORPUS_DIR) / "msg" / "msgreader__msgInMsgInMsg.msg").string()),
        false);
    ASSERT_NE(item, nullptr);
    ASSERT_NE(item->getProperties(), nullptr);
    auto* reader = dynamic_cast<mcl::MSGReader*>(item->getReader());
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->namedPropertyName(0x8000), u"{00062008-0000-0000-C000-000000000046}:0x8580");
    EXPECT_EQ(reader->namedPropertyName(0x8004), u"content-transfer-encoding");
    EXPECT_EQ(reader->namedPropertyName(0x8005), u"content-type");
    EXPECT_EQ(reader->namedPropertyName(0x8011), u"");
    item->release();
}

}  // namespace
