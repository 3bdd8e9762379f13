#include <gtest/gtest.h>

#include <cstring>

#include "core/context.h"
#include "core/mail_property.h"
#include "foundation/win_time.h"

namespace {

using mcl::MailProperties;
using mcl::MailProperty;

TEST(MailProperty, ValuesCarryThreeZeroBytesAndBothStringSizes)
{
    MailProperties table;
    MailProperty* added = table.addProperty(0x0037001F, 0, u"Subject", u"Hi");
    EXPECT_EQ(added->size(), 4u);  // no terminator
    EXPECT_EQ(std::memcmp(added->bytes(), "H\0i\0\0\0\0", 7), 0);
    added->setValue(u"Hi");
    EXPECT_EQ(added->size(), 6u);  // with a terminator
    EXPECT_EQ(added->toString(), u"Hi");
    MailProperty* empty = table.addProperty(0x37000000, 0, u"Attachment");
    EXPECT_EQ(empty->bytes(), nullptr);
    EXPECT_EQ(empty->toString(), u"");
    EXPECT_EQ(table.count(), 2u);
    EXPECT_EQ(empty->id(), 2u);
}

TEST(MailProperty, ToStringByType)
{
    MailProperties table;
    uint16_t shortValue = 65535;
    uint32_t longValue = 4000000000u;
    EXPECT_EQ(table.addProperty(0x00010002, 0, u"", &shortValue, 2)->toString(), u"65535");
    uint16_t yes = 1, variantTrue = 0xFFFF;
    EXPECT_EQ(table.addProperty(0x0002000B, 0, u"", &yes, 2)->toString(), u"1");
    EXPECT_EQ(table.addProperty(0x0002000B, 0, u"", &variantTrue, 2)->toString(), u"65535");
    EXPECT_EQ(table.addProperty(0x00030003, 0, u"", &longValue, 4)->toString(), u"4000000000");
    // Narrow text is cut at its size when it has no NUL, and widened byte by byte.
    EXPECT_EQ(table.addProperty(0x0037001E, 0, u"", "abc\xE9xyz", 4)->toString(), u"abc\u00E9");
    EXPECT_EQ(table.addProperty(0x0037001E, 0, u"", "ab\0cd", 5)->toString(), u"ab");
    const char16_t wide[] = u"wide\0rest";
    EXPECT_EQ(table.addProperty(0x0037001F, 0, u"", wide, 18)->toString(), u"wide");
    EXPECT_EQ(table.addProperty(0x0037001F, 0, u"", wide, 5)->toString(), u"wi");  // odd size
    const uint8_t binary[] = {0x00, 0xAB, 0x0F};
    EXPECT_EQ(table.addProperty(0x0FFF0102, 0, u"", binary, 3)->toString(), u"00AB0F");
    EXPECT_EQ(table.addProperty(0x0FFF0102, 0, u"", binary, 0)->toString(), u"");
    // Short numbers read as zero-extended; nothing is read past the value.
    uint8_t oneByte = 7;
    EXPECT_EQ(table.addProperty(0x00040003, 0, u"", &oneByte, 1)->toString(), u"7");
    EXPECT_EQ(table.addProperty(0x00040003, 0, u"", &oneByte, 0)->toString(), u"0");
}

TEST(MailProperty, DatesUseTheContextPicturesWithoutConversion)
{
    mcl::Context context;
    context.setDateFormat(u"yyyy'.'MM'.'dd");
    context.setTimeFormat(u"HH':'mm':'ss");
    ty::SystemTime time{2024, 1, 5, 5, 13, 7, 9, 0};
    MailProperties table;
    EXPECT_EQ(table.addProperty(0x00390040, 0, u"Date", &time, sizeof time)->toString(), u"2024.01.05 13:07:09");
}

TEST(MailProperties, NarrowAndWideFormsStandInForEachOther)
{
    MailProperties table;
    MailProperty* wide = table.addProperty(0x0037001F, 0, u"Subject", u"S");
    EXPECT_EQ(table.findProperty(0x0037001E), wide);
    EXPECT_EQ(table.findProperty(0x0037001E, 0), wide);
    EXPECT_EQ(table.findProperty(0x00370003, 0), wide);   // any type of the number under a row
    EXPECT_EQ(table.findProperty(0x00370003), nullptr);   // but not without a row
    EXPECT_EQ(table.findProperty(0x0037001F, 5), nullptr);
}

TEST(MailProperties, RetaggedRecordsAreFoundByTheirNewTagInTheOrderAdded)
{
    MailProperties table;
    MailProperty* html = table.addProperty(0x10130102, 0, u"", "<p>", 3);
    MailProperty* narrowFirst = table.addProperty(0x3001001E, 0, u"", "a", 1);
    MailProperty* wide = table.addProperty(0x3001001F, 0, u"", u"b");
    html->setTag(0x1013001F);
    EXPECT_EQ(table.findProperty(0x1013001F), html);
    EXPECT_EQ(table.findProperty(0x10130102), nullptr);
    narrowFirst->setTag(0x3001001F);
    EXPECT_EQ(table.findProperty(0x3001001F), narrowFirst);  // added before the other wide one
    std::vector<MailProperty*> out;
    table.collect(out, 0x3001001F, -1, false, 0, 0xFFFFFFFF);
    EXPECT_EQ(out, (std::vector<MailProperty*>{narrowFirst, wide}));
}

TEST(MailProperties, FirstAddedWinsAndRowsTellRecordsApart)
{
    MailProperties table;
    MailProperty* rowA = table.addProperty(mcl::kRecipientRow, 0, u"Recipient");
    MailProperty* rowB = table.addProperty(mcl::kRecipientRow, 0, u"Recipient");
    MailProperty* alice = table.addProperty(0x3001001F, rowA->id(), u"", u"Alice");
    MailProperty* bob = table.addProperty(0x3001001F, rowB->id(), u"", u"Bob");
    EXPECT_EQ(table.findProperty(0x3001001F), alice);
    EXPECT_EQ(table.findProperty(0x3001001F, rowB->id()), bob);
    EXPECT_EQ(table.getStringOrAny(0x3001001F, -1), u"Alice");
    EXPECT_EQ(table.getStringOrAny(0x3001001F, rowB->id()), u"Bob");
}

TEST(MailProperties, CollectIsLooseAboutMaxCountWhenRecursive)
{
    MailProperties table;
    MailProperty* row = table.addProperty(mcl::kAttachmentRow, 0, u"Attachment");
    MailProperty* nested = table.addProperty(0x3701000D, row->id(), u"");
    table.addProperty(0x370B0003, nested->id(), u"");
    table.addProperty(0x370B0003, nested->id(), u"");
    table.addProperty(0x370B0003, row->id(), u"");
    std::vector<MailProperty*> out;
    // The nested level gets the full maxCount and its additions are not counted here, so a
    // maxCount of 1 brings two records.
    EXPECT_EQ(table.collect(out, 0x370B0003, row->id(), true, 1, 0xFFFFFFFF), 1);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0]->parentId(), nested->id());
    EXPECT_EQ(out[1]->parentId(), row->id());
    out.clear();
    EXPECT_EQ(table.collect(out, 0x370B0003, row->id(), true, 2, 0xFFFFFFFF), 1);
    EXPECT_EQ(out.size(), 3u);
    out.clear();
    EXPECT_EQ(table.collect(out, 0, row->id(), false, 0, 0xFFFFFFFF), 2);  // all that lies below
    out.clear();
    EXPECT_EQ(table.collect(out, 0x370B0000, -1, false, 0, 0xFFFF0000), 3);  // whole table, masked
}

TEST(MailProperties, RecursionCannotLoopOnRowsThatPointForward)
{
    MailProperties table;
    table.addProperty(0x00010003, 2, u"");  // id 1 under id 2
    table.addProperty(0x00020003, 1, u"");  // id 2 under id 1
    std::vector<MailProperty*> out;
    table.collect(out, 0, 1, true, 0, 0xFFFFFFFF);
    EXPECT_EQ(out.size(), 2u);
}

TEST(MailProperties, RemovingARecordTakesItsWholeTagOutOfTagLookup)
{
    MailProperties table;
    MailProperty* first = table.addProperty(0xFC020102, 0, u"Internal GUID stream", "a", 1);
    MailProperty* second = table.addProperty(0xFC020102, 0, u"Internal GUID stream", "b", 1);
    table.removeProperty(first);
    EXPECT_EQ(table.findProperty(0xFC020102), nullptr);
    EXPECT_EQ(table.count(), 1u);
    EXPECT_EQ(table.at(0), second);
    EXPECT_EQ(table.findProperty(0xFC020102, 0), second);  // still under its row
    std::vector<MailProperty*> out;
    table.collect(out, 0, 0, false, 0, 0xFFFFFFFF);
    EXPECT_EQ(out, std::vector<MailProperty*>{second});
    delete first;  // the caller owns it now
}

}  // namespace
