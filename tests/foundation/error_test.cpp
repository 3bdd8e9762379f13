#include <gtest/gtest.h>

#include "foundation/error.h"

namespace {

TEST(ErrorRecord, DescriptionIsBuiltOnceWithSeverityLetterAndDecimalCode)
{
    mul::ErrorRef record = mul::makeError(u"Can't determine file type", u"mcl::Session::createReaderEx", 0,
                                          mul::E_FAIL_CODE);
    EXPECT_EQ(record->getDescription(),
              u"(W: 2147500037) mcl::Session::createReaderEx: Can't determine file type");
    record->text = u"changed";
    EXPECT_EQ(record->getDescription(),
              u"(W: 2147500037) mcl::Session::createReaderEx: Can't determine file type");
}

TEST(ErrorRecord, EmptySourceHasNoColonAndUnknownSeverityIsQuestionMark)
{
    EXPECT_EQ(mul::makeError(u"text", u"", 1, 5)->getDescription(), u"(E: 5) text");
    EXPECT_EQ(mul::makeError(u"text", u"", 2, 5)->getDescription(), u"(C: 5) text");
    EXPECT_EQ(mul::makeError(u"text", u"", 7, 5)->getDescription(), u"(?: 5) text");
    EXPECT_EQ(mul::unknownRuntimeError()->getDescription(), u"(C: 2147500037) Unknown run-time error");
}

TEST(FoundationError, DescriptionUsesKindLetterAndEightHexDigits)
{
    ty::Ref<ty::Error> error(new ty::Error(0x1F, 3, u"ty::File::open", u"No such file or directory"));
    EXPECT_EQ(error->description(), u"(E:0x0000001F) ty::File::open: No such file or directory");
    EXPECT_EQ(ty::Ref<ty::Error>(new ty::Error(0x80004005, 2, u"", u"x"))->description(), u"(W:0x80004005) x");
    EXPECT_EQ(ty::Ref<ty::Error>(new ty::Error(1, 4, u"", u"x"))->description(), u"(C:0x00000001) x");
    EXPECT_EQ(ty::Ref<ty::Error>(new ty::Error(1, 1, u"", u"x"))->description(), u"(?:0x00000001) x");
}

TEST(ErrorKeeper, SharesRecordsAndNullClears)
{
    mul::ErrorKeeper reader, session;
    reader.setError(u"broken", u"src", 1, mul::E_UNEXPECTED_CODE);
    session.setError(reader.getError());
    EXPECT_EQ(session.getError().get(), reader.getError().get());
    EXPECT_EQ(reader.getError()->refCount, 2);
    session.setError(mul::ErrorRef());
    EXPECT_FALSE(session.hasError());
    EXPECT_EQ(reader.getError()->refCount, 1);
}

TEST(ErrorKeeper, KeepErrorBlocksClearingAndReplacing)
{
    mul::ErrorKeeper keeper;
    keeper.setError(u"first", u"", 0, 1);
    keeper.keepError = 1;
    keeper.clearError();
    keeper.setError(u"second", u"", 0, 2);
    ASSERT_TRUE(keeper.hasError());
    EXPECT_EQ(keeper.getError()->text, u"first");
    keeper.keepError = 0;
    keeper.clearError();
    EXPECT_FALSE(keeper.hasError());
}

TEST(ErrorKeeper, SystemErrorTakesTheSystemText)
{
    mul::ErrorKeeper keeper;
    keeper.setSystemError(2, u"mcl::Session::createReaderEx", 0);
    EXPECT_EQ(keeper.getError()->text, u"No such file or directory");
    EXPECT_EQ(keeper.getError()->code, 2u);
    keeper.setSystemError(99999, u"x", 0);
    EXPECT_EQ(keeper.getError()->text, u"Unknown system error");
}

}  // namespace
