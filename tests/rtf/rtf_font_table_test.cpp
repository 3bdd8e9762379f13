// Charsets and names read from a document's font table, and the font words that select them.
#include <gtest/gtest.h>

#include <string>

#include "rtf/rtf_font_table.h"

namespace {

using mcl::RtfFontTable;

std::string selectCharset(const std::string& document, int64_t font)
{
    RtfFontTable table(document);
    table.selectFont(font);
    return table.currentCharset();
}

TEST(RtfDefaultCharset, ComesFromAnsicpg)
{
    EXPECT_EQ(RtfFontTable("{\\rtf1\\ansi\\ansicpg1251\\deff0}").defaultCharset(), "CP1251");
    EXPECT_EQ(RtfFontTable("{\\rtf1\\ansi\\ansicpg932 }").defaultCharset(), "CP932");
    EXPECT_EQ(RtfFontTable("{\\rtf1\\ansi\\ansicpg0 }").defaultCharset(), "CP0");
    EXPECT_EQ(RtfFontTable("{\\rtf1\\ansi}").defaultCharset(), "CP1252");
}

TEST(RtfDefaultCharset, OnlyTheFirstHundredBytesAreSearched)
{
    std::string padding(100, ' ');
    EXPECT_EQ(RtfFontTable("{\\rtf1" + padding + "\\ansicpg1251}").defaultCharset(), "CP1252");
    // Cut at byte 100, the number loses its last digits.
    std::string head = "{\\rtf1" + std::string(84, ' ');  // the digits start at byte 98
    EXPECT_EQ(RtfFontTable(head + "\\ansicpg1251}").defaultCharset(), "CP12");
}

TEST(RtfFontCharsets, EachCharsetWord)
{
    const std::pair<const char*, const char*> rows[] = {
        {"0", "CP1252"},   {"128", "CP932"},  {"129", "CP949"},  {"130", "CP950"},  {"134", "CP936"},
        {"136", "CP950"},  {"161", "CP1253"}, {"162", "CP1254"}, {"163", "CP1258"}, {"177", "CP1255"},
        {"178", "CP1256"}, {"186", "CP1257"}, {"204", "CP1251"}, {"222", "CP874"},  {"238", "CP1250"},
        {"2", ""},         {"77", ""},
    };
    for (const auto& [number, charset] : rows) {
        std::string document = std::string("{\\rtf1{\\fonttbl{\\f3\\fnil\\fcharset") + number + " Some Font;}}}";
        EXPECT_EQ(selectCharset(document, 3), charset) << "fcharset" << number;
    }
}

TEST(RtfFontCharsets, MsOxrtfexFontTable)
{
    // The font table of the encapsulation example of [MS-OXRTFEX]: only \f2 names a charset.
    const std::string document =
        "{\\rtf1\\ANSI\\ansicpg1251\\fromhtml1 \\deff0\r\n"
        "{\\fonttbl {\\f0\\fmodern Courier New;}{\\f1\\fswiss Arial;}{\\f2\\fswiss\\fcharset0 Arial;}}\r\n";
    RtfFontTable table(document);
    table.selectFont(2);
    EXPECT_EQ(table.currentCharset(), "CP1252");
    EXPECT_EQ(table.selectedFont(), 2);
    table.selectFont(0);
    EXPECT_EQ(table.currentCharset(), "");
    EXPECT_EQ(table.selectedFont(), mcl::kNoFont);
    EXPECT_EQ(table.activeCharset(), "CP1251");
    EXPECT_EQ(table.fontName(0), "Courier New");
    EXPECT_EQ(table.fontName(1), "Arial");
    EXPECT_EQ(table.fontName(2), "Arial");
}

TEST(RtfFontCharsets, AFurtherWordBeforeTheCharsetLosesIt)
{
    const std::string document = "{\\rtf1{\\fonttbl{\\f0\\froman\\fprq2\\fcharset204 Times New Roman;}}}";
    EXPECT_EQ(selectCharset(document, 0), "");
    EXPECT_EQ(RtfFontTable(document).fontName(0), "Times New Roman");
}

TEST(RtfFontCharsets, LaterEntryOverwrites)
{
    const std::string document =
        "{\\rtf1{\\fonttbl{\\f1\\fnil\\fcharset128 A;}{\\f1\\fnil\\fcharset238 B;}}}";
    EXPECT_EQ(selectCharset(document, 1), "CP1250");
    EXPECT_EQ(RtfFontTable(document).fontName(1), "B");
}

TEST(RtfFontCharsets, CaptureRunsToTheLastClosingPair)
{
    // The greedy capture takes in a font-like entry that follows the table.
    const std::string document =
        "{\\rtf1{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}}{\\stylesheet{\\f5\\fnil\\fcharset204 Normal;}}}";
    EXPECT_EQ(selectCharset(document, 5), "CP1251");
}

TEST(RtfFontCharsets, NoFontTableSelectsNothing)
{
    RtfFontTable table("{\\rtf1\\ansi\\ansicpg1253 {\\f0\\fnil\\fcharset128 X;}}");
    table.selectFont(0);
    EXPECT_EQ(table.currentCharset(), "");
    EXPECT_EQ(table.activeCharset(), "CP1253");
    EXPECT_EQ(table.fontName(0), "Arial");
}

TEST(RtfFontCharsets, UnknownFontEmptiesTheCurrentCharset)
{
    RtfFontTable table("{\\rtf1{\\fonttbl{\\f1\\fnil\\fcharset128 MS Gothic;}}}");
    table.selectFont(1);
    EXPECT_EQ(table.activeCharset(), "CP932");
    table.selectFont(9);
    EXPECT_EQ(table.currentCharset(), "");
    EXPECT_EQ(table.activeCharset(), "CP1252");
}

TEST(RtfFontWord, ReadsAtMostTwoDigits)
{
    int64_t font = 0;
    const char* text = "\\f123 x";
    EXPECT_EQ(RtfFontTable::parseFontWord(text, 7, font), 4u);
    EXPECT_EQ(font, 12);
    EXPECT_EQ(RtfFontTable::parseFontWord("\\f1 x", 5, font), 3u);
    EXPECT_EQ(font, 1);
}

TEST(RtfFontWord, NeedsFourBytesAndADigit)
{
    int64_t font = 5;
    EXPECT_EQ(RtfFontTable::parseFontWord("\\f1", 3, font), 0u);
    EXPECT_EQ(font, mcl::kNoFont);
    EXPECT_EQ(RtfFontTable::parseFontWord("\\fs24", 5, font), 0u);
    EXPECT_EQ(RtfFontTable::parseFontWord("\\fcs1", 5, font), 0u);
    EXPECT_EQ(font, mcl::kNoFont);
}

}  // namespace
