// Messages loaded through the session and the item, the named property map, attached OLE
// objects, and what becomes of files that can't be read.
#include <gtest/gtest.h>

#include "core/mail_item.h"
#include "core/session.h"
#include "msg_fixture.h"
#include "support/temp_dir.h"

namespace {

using msg_test::fixedList;
using msg_test::le;
using msg_test::Loaded;
using msg_test::utf16;

cfb::CompoundFileWriter smallMessage()
{
    cfb::CompoundFileWriter writer;
    writer.root.addStream(u"__properties_version1.0", fixedList(32, {{3, 0x0E08, 12345}}));
    writer.root.addStream(u"__substg1.0_0037001F", utf16(u"S"));
    writer.root.addStorage(u"__recip_version1.0_#00000000").addStream(u"__substg1.0_3001001F", utf16(u"Ann"));
    writer.root.addStorage(u"__attach_version1.0_#00000000").addStream(u"__substg1.0_3707001F", utf16(u"a.txt"));
    return writer;
}

TEST(MsgLoading, AHeaderLoadBringsAllButAttachmentsAndIsNotRepeated)
{
    test_support::TempDir dir;
    std::string image = smallMessage().build();
    std::u16string path = dir.write("small.msg", image);
    mcl::Session session;
    mcl::MailItem* item = session.readFile(path, false);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->getSize(), image.size());  // the file's size replaces the stored one
    EXPECT_EQ(item->getPath(), u"/");
    ASSERT_TRUE(item->loadBody());
    mcl::MailProperties* all = item->getProperties();
    ASSERT_NE(all, nullptr);
    for (uint32_t tag : {0x0037001Fu, mcl::kRecipientRow, mcl::kAttachmentRow})
        EXPECT_EQ(msg_test::below(*all, tag, 0).size(), 1u) << std::hex << tag;
    EXPECT_FALSE(item->save(dir.wide("out.msg")));
    EXPECT_EQ(item->getError()->text, u"Saving MSG files is not supported yet");
    EXPECT_EQ(item->getError()->code, 0x80004001u);
    item->release();

    mcl::MailItem* header = session.readHeaderFromFile(path, false);
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->getSubject(), u"S");
    EXPECT_TRUE(msg_test::below(*header->getHeaderProperties(), mcl::kAttachmentRow, 0).empty());
    header->release();
}

TEST(MsgLoading, FilesThatCantBeReadFailWithTheirWordsWhileDamagedPartsAreLeftOut)
{
    cfb::CfbLayout layout;
    const std::string sound = smallMessage().build(&layout);
    auto patched = [&](const std::u16string& entry, size_t field, uint32_t value) {
        std::string bytes = sound;
        cfb::putU32(bytes, layout.entryOffset(entry) + field, value);
        return bytes;
    };
    struct Case {
        std::string image;
        const char16_t* text;  // the start of the error's text
        uint32_t code;
    };
    for (const Case& c : {Case{"From: a\r\n\r\nbody", u"Can't open specified file", 0x80030050},
                          Case{patched(u"__substg1.0_0037001F", 0x48, 100000),  // a sibling link out of range
                               u"Can't read specified file contents", 0x80030109},
                          Case{patched(u"__substg1.0_0037001F", 0x78, 4000),  // larger than its chain
                               u"Compound file error 0x80030109", 0x8000FFFF}}) {
        Loaded loaded(c.image, 1);
        EXPECT_FALSE(loaded.ok);
        ASSERT_TRUE(loaded.reader->hasError());
        EXPECT_EQ(loaded.reader->getError()->text.rfind(c.text, 0), 0u) << ty::wideToUtf8(c.text);
        EXPECT_EQ(loaded.reader->getError()->code, c.code);
    }
    Loaded shortened(patched(u"__attach_version1.0_#00000000/__substg1.0_3707001F", 0x48, 100000), 135);
    ASSERT_TRUE(shortened.ok);
    mcl::MailProperty* row = shortened.props.findProperty(mcl::kAttachmentRow, 0);
    ASSERT_NE(row, nullptr);
    EXPECT_TRUE(msg_test::below(shortened.props, 0, row->id()).empty());
    EXPECT_EQ(shortened.props.getString(0x0037001F), u"S");
}

TEST(MsgLoading, NamedPropertiesAreFoundByNumberAndByName)
{
    const mcl::Guid taskSet = {0x03, 0x20, 0x06, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
    auto entry = [](uint32_t identifier, uint32_t index, uint32_t guid, bool named) {
        return le(identifier, 4) + le(index << 16 | guid << 1 | (named ? 1 : 0), 4);
    };
    cfb::CompoundFileWriter writer;
    cfb::CfbNode& names = writer.root.addStorage(u"__nameid_version1.0");
    names.addStream(u"__substg1.0_00020102", std::string(taskSet.begin(), taskSet.end()));
    names.addStream(u"__substg1.0_00030102", entry(0x8101, 0, 3, false) + entry(0x8101, 1, 1, false) +
                                                 entry(0, 2, 2, true) + entry(1000, 3, 2, true) +
                                                 entry(0x8102, 4, 9, false) + entry(28, 5, 2, true) +
                                                 entry(0x8103, 6, 0, false));
    names.addStream(u"__substg1.0_00040102", le(24, 4) + utf16(u"content-type") + le(11, 4) + utf16(u"x-odd"));
    for (uint32_t filter : {1u, 8u}) {
        Loaded loaded(writer.build(), filter);
        const uint32_t mapped = filter == 8 ? 0 : 1;  // a quick header read leaves the map alone
        mcl::MSGReader& reader = *loaded.reader;
        EXPECT_EQ(reader.namedPropertyIdByNumber(taskSet, 0x8101), mapped * 0x8000);
        EXPECT_EQ(reader.namedPropertyIdByNumber(mcl::kPsMapiGuid, 0x8101), mapped * 0x8001);
        EXPECT_EQ(reader.namedPropertyIdByNumber(mcl::kPsPublicStringsGuid, 0x8102), 0u);  // GUID index 9
        EXPECT_EQ(reader.namedPropertyIdByNumber(mcl::kPsPublicStringsGuid, 0x8103), 0u);  // GUID index 0
        EXPECT_EQ(reader.namedPropertyIdByName(u"content-type"), mapped * 0x8002);
        EXPECT_EQ(reader.namedPropertyIdByName(u"x-odd"), mapped * 0x8005);  // odd length, low bit cleared
        EXPECT_EQ(reader.namedPropertyIdByName(u"Content-Type"), 0u);
    }
}

TEST(MsgLoading, AnAttachedObjectIsRecordedByWhatItsStorageHolds)
{
    // A presentation of 2540 by 1270 hundredths of a millimetre: a standard clipboard format, no
    // target device, then aspect, index, advise flags, reserved, width, height, size.
    std::string presentation = le(0xFFFFFFFF, 4) + le(3, 4) + le(4, 4) + le(1, 4) + le(0xFFFFFFFF, 4) + le(0, 8) +
                               le(2540, 4) + le(1270, 4) + le(0, 4);
    cfb::CompoundFileWriter writer;
    cfb::CfbNode& object = writer.root.addStorage(u"__attach_version1.0_#00000000").addStorage(u"__substg1.0_3701000D");
    object.classId = {0x0C, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x46};
    object.addStream(u"\x01Ole10Native", "native data");
    object.addStream(u"\x02OlePres000", presentation);
    writer.root.addStorage(u"__attach_version1.0_#00000001").addStorage(u"__substg1.0_3701000D");
    Loaded loaded(writer.build(), 4);
    std::vector<mcl::MailProperty*> rows = msg_test::below(loaded.props, mcl::kAttachmentRow, 0);
    ASSERT_EQ(rows.size(), 2u);
    const mcl::MailProperties& props = loaded.props;
    mcl::MailProperty* stored = props.findProperty(0xF011000D, rows[0]->id());
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->name(), u"OLE Object");
    EXPECT_EQ(msg_test::bytesOf(props.findProperty(0xF0140102, rows[0]->id())), "native data");
    EXPECT_EQ(props.findProperty(0xF1110003, rows[0]->id())->valueU32(), 2540u);
    EXPECT_EQ(props.findProperty(0xF1100003, rows[0]->id())->valueU32(), 1270u);
    EXPECT_EQ(props.findProperty(0xF011000D, rows[1]->id()), nullptr);  // no class, no object

    // The object's storage, written out on its own, opens with its class and streams.
    mcl::MailProperties again;
    ASSERT_TRUE(mcl::MSGReader::ReadOLEStorage(msg_test::bytesOf(stored), 7, &again));
    EXPECT_EQ(msg_test::bytesOf(again.findProperty(0xF011000D, 7)), msg_test::bytesOf(stored));
    EXPECT_EQ(msg_test::bytesOf(again.findProperty(0xF0140102, 7)), "native data");
    EXPECT_FALSE(mcl::MSGReader::ReadOLEStorage(std::string("not a storage"), 7, &again));
}

}  // namespace
