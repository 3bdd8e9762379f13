#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "foundation/base_object.h"
#include "foundation/log.h"

namespace {

struct CapturingWriter : wh::Writer {
    explicit CapturingWriter(std::vector<ty::LogRecord>* out) : records(out) {}
    void write(const ty::LogRecord& record) override { records->push_back(record); }
    std::vector<ty::LogRecord>* records;
};

class LogTest : public ::testing::Test {
protected:
    void SetUp() override { ty::Logger::instance().addWriter(std::make_unique<CapturingWriter>(&records)); }
    void TearDown() override { ty::Logger::instance().setLogFile(u""); }
    std::vector<ty::LogRecord> records;
};

TEST(LogLine, MonthCountsFromZeroAndFieldsArePadded)
{
    ty::LogRecord record;
    record.level = ty::LogError;
    record.time.tm_mday = 5;
    record.time.tm_mon = 0;  // January
    record.time.tm_year = 124;
    record.time.tm_hour = 7;
    record.time.tm_min = 3;
    record.time.tm_sec = 9;
    record.depth = 2;
    record.scope = "mcl::Session::read";
    record.text = "broken";
    EXPECT_EQ(ty::formatLogLine(record), "[05.00.2024 07:03:09] E   mcl::Session::read: broken");
    record.depth = -3;
    record.level = ty::LogCritical;
    EXPECT_EQ(ty::formatLogLine(record), "[05.00.2024 07:03:09] C mcl::Session::read: broken");
}

TEST_F(LogTest, ScopesLogEntryAndExitAndIndentWhatIsInside)
{
    {
        ty::TraceScope outer("mcl::Session::readFile");
        outer.debug("fileName = ", std::u16string(u"a.eml"), ", ignoreExt = ", false);
        ty::TraceScope inner("mcl::BaseReader::init");
    }
    ASSERT_EQ(records.size(), 5u);
    EXPECT_EQ(records[0].text, ">>>");
    EXPECT_EQ(records[0].depth, 0);
    EXPECT_EQ(records[1].text, "fileName = a.eml, ignoreExt = 0");
    EXPECT_EQ(records[1].depth, 1);
    EXPECT_EQ(records[2].scope, "mcl::BaseReader::init");
    EXPECT_EQ(records[2].depth, 1);
    EXPECT_EQ(records[3].text, "<<<");
    EXPECT_EQ(records[3].depth, 1);
    EXPECT_EQ(records[4].scope, "mcl::Session::readFile");
    EXPECT_EQ(records[4].depth, 0);
}

TEST_F(LogTest, ScopeMadeWhileLoggingWasOffStaysSilent)
{
    ty::Logger::instance().setLogFile(u"");
    {
        ty::TraceScope scope("silent");
        ty::Logger::instance().addWriter(std::make_unique<CapturingWriter>(&records));
        scope.debug("not logged");
    }
    EXPECT_TRUE(records.empty());
}

TEST_F(LogTest, ObjectLifeIsTracedWithParent)
{
    {
        mcl::BaseObject parent(u"MailItem");
        mcl::BaseObject child(u"Recipients", &parent);
    }
    std::vector<std::string> texts;
    for (auto& r : records)
        if (r.text.rfind("class: ", 0) == 0) texts.push_back(r.text);
    ASSERT_EQ(texts.size(), 4u);
    EXPECT_EQ(texts[0].find("class: MailItem; address: 0x"), 0u);
    EXPECT_NE(texts[1].find("; parent: MailItem; parent address: 0x"), std::string::npos);
}

TEST(LogFile, EmptyPathEndsLoggingAndLinesAreAppended)
{
    auto path = std::filesystem::temp_directory_path() / ("parcelet-log-" + std::to_string(getpid()) + ".txt");
    ty::Logger::instance().setLogFile(ty::utf8ToWide(path.string()));
    { ty::TraceScope scope("first"); }
    ty::Logger::instance().setLogFile(u"");
    { ty::TraceScope scope("after"); }
    std::ifstream in(path);
    std::string line;
    std::vector<std::string> lines;
    while (std::getline(in, line)) lines.push_back(line);
    std::filesystem::remove(path);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].substr(21), " D first: >>>");
    EXPECT_EQ(lines[1].substr(21), " D first: <<<");
}

TEST(BaseObject, ReferenceOnAChildKeepsTheParentChainAlive)
{
    auto* parent = new mcl::BaseObject(u"MailItem");
    auto* child = new mcl::BaseObject(u"Attachments", parent);
    EXPECT_EQ(parent->getRefCount(), 1);  // registering a child does not count
    child->addRef();
    EXPECT_EQ(child->getRefCount(), 2);
    EXPECT_EQ(parent->getRefCount(), 2);
    child->release();
    EXPECT_EQ(child->getRefCount(), 1);
    EXPECT_EQ(parent->getRefCount(), 1);
    EXPECT_EQ(parent->getChildren().count(child), 1u);
    child->release();  // destroys the child, which leaves its parent
    EXPECT_TRUE(parent->getChildren().empty());
    parent->release();
}

TEST(BaseObject, DestroyingAParentDetachesItsChildren)
{
    auto* parent = new mcl::BaseObject(u"List");
    mcl::BaseObject child(u"Item", parent);
    parent->release();
    EXPECT_EQ(child.getParent(), nullptr);
}

}  // namespace
