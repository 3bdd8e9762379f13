// The conversion layer: one table from a Windows code page number to a converter.
#include "foundation/code_page.h"

#include <iconv.h>
#include <langinfo.h>
#include <strings.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <clocale>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "foundation/charset_table.h"

static_assert(std::is_same_v<UChar, char16_t>, "ICU's UChar is the wide character of the system");

namespace ty {

namespace {

enum class Engine : uint8_t { Icu, Iconv };

enum EntryFlags : uint8_t {
    kPlain = 0,
    kUnicodeForm = 1,  // replacement U+FFFD both ways
    kKanaDot = 2,      // replacement U+30FB when decoding (932)
    kSevenBit = 4,     // a byte above 0x7F decodes as the byte with its top bit cleared (20127, IA5)
    kHz = 8,           // HZ: output mends for ICU's converter (see encode)
};

// A byte that the ICU table leaves unassigned and the Windows table maps.
struct ByteMapping {
    uint8_t byte;
    char16_t unit;
};

struct Entry {
    uint32_t codePage;
    Engine engine;
    const char* decoder;  // converter name for bytes to UTF-16
    const char* encoder;  // converter name for UTF-16 to bytes; null: the decoder's
    uint8_t flags;
    const ByteMapping* overlay;
    uint8_t overlayCount;
    uint8_t isciiScript;  // ISCII: the script code of the code page's own script
};

// Windows' values for the bytes that ICU's tables leave unassigned, from the Windows code page
// tables. Bytes that ICU maps are left as ICU maps them (1253 0xAA is U+00AA in ICU, U+F8F9 in
// Windows); bytes neither has become the replacement.
constexpr ByteMapping kOverlay932[] = {{0x80, 0x0080}, {0xA0, 0xF8F0}, {0xFD, 0xF8F1}, {0xFE, 0xF8F2}, {0xFF, 0xF8F3}};
constexpr ByteMapping kOverlay720[] = {{0x80, 0x0080}, {0x81, 0x0081}, {0x84, 0x0084}, {0x86, 0x0086},
                                       {0x8D, 0x008D}, {0x8E, 0x008E}, {0x8F, 0x008F}, {0x90, 0x0090}};
constexpr ByteMapping kOverlay852[] = {{0xAA, 0x00AC}};
constexpr ByteMapping kOverlay1253[] = {{0xD2, 0xF8FA}, {0xFF, 0xF8FB}};
constexpr ByteMapping kOverlay1255[] = {{0xCA, 0x05BA}, {0xD9, 0xF88D}, {0xDA, 0xF88E}, {0xDB, 0xF88F},
                                        {0xDC, 0xF890}, {0xDD, 0xF891}, {0xDE, 0xF892}, {0xDF, 0xF893},
                                        {0xFB, 0xF894}, {0xFC, 0xF895}, {0xFF, 0xF896}};
constexpr ByteMapping kOverlay1257[] = {{0xA1, 0xF8FC}, {0xA5, 0xF8FD}};

constexpr Entry icu(uint32_t codePage, const char* name, uint8_t flags = kPlain)
{
    return {codePage, Engine::Icu, name, nullptr, flags, nullptr, 0, 0};
}
constexpr Entry icu(uint32_t codePage, const char* decoder, const char* encoder)
{
    return {codePage, Engine::Icu, decoder, encoder, kPlain, nullptr, 0, 0};
}
constexpr Entry iscii(uint32_t codePage, const char* name, uint8_t script)
{
    return {codePage, Engine::Icu, name, nullptr, kPlain, nullptr, 0, script};
}
template <size_t N>
constexpr Entry icu(uint32_t codePage, const char* name, const ByteMapping (&overlay)[N], uint8_t flags = kPlain)
{
    static_assert(N < 256);
    return {codePage, Engine::Icu, name, nullptr, flags, overlay, static_cast<uint8_t>(N), 0};
}
constexpr Entry gnu(uint32_t codePage, const char* name, uint8_t flags = kPlain)
{
    return {codePage, Engine::Iconv, name, nullptr, flags, nullptr, 0, 0};
}

// ISO-2022-JP: every Windows variant decodes all the forms (JIS X 0208 and 0212, the JIS X 0201
// escapes and SO/SI katakana), which ICU's JIS7 converter accepts. Encoding: 50220 and 50221 turn
// half-width katakana into full-width (ICU's fallback), 50222 writes them with SO/SI.
constexpr const char* kJisAll = "ISO_2022,locale=ja,version=3";
constexpr const char* kJis = "ISO_2022,locale=ja,version=0";

// The conversion table, by code page number. ICU converters are named by their canonical names,
// which pick the Windows variant of a table where ICU has several (ibm-5348 for windows-1252).
constexpr Entry kEntries[] = {
    icu(37, "ibm-37_P100-1995"),
    icu(437, "ibm-437_P100-1995"),
    icu(500, "ibm-500_P100-1995"),
    icu(708, "ibm-1089_P100-1995"),  // ASMO-708, the ISO-8859-6 table
    icu(720, "ibm-720_P100-1997", kOverlay720),
    icu(737, "ibm-737_P100-1997"),
    icu(775, "ibm-775_P100-1996"),
    icu(850, "ibm-850_P100-1995"),
    icu(852, "ibm-852_P100-1995", kOverlay852),
    icu(855, "ibm-855_P100-1995"),
    icu(857, "ibm-857_P100-1995"),
    icu(858, "ibm-858_P100-1997"),
    icu(860, "ibm-860_P100-1995"),
    icu(861, "ibm-861_P100-1995"),
    icu(862, "ibm-862_P100-1995"),
    icu(863, "ibm-863_P100-1995"),
    icu(864, "ibm-864_X110-1999"),
    icu(865, "ibm-865_P100-1995"),
    icu(866, "ibm-866_P100-1995"),
    icu(869, "ibm-869_P100-1995"),
    icu(870, "ibm-870_P100-1995"),
    icu(874, "windows-874-2000"),
    icu(875, "ibm-875_P100-1995"),
    icu(932, "ibm-943_P15A-2003", kOverlay932, kKanaDot),  // windows-932
    icu(933, "ibm-933_P110-1995"),            // "cp933": IBM EBCDIC Korean
    icu(936, "windows-936-2000"),
    icu(949, "windows-949-2000"),
    icu(950, "windows-950-2000"),
    icu(970, "ibm-970_P110_P110-2006_U2"),  // "cp970": IBM's EUC-KR
    icu(1026, "ibm-1026_P100-1995"),
    icu(1047, "ibm-1047_P100-1995"),
    icu(1140, "ibm-1140_P100-1997"),
    icu(1141, "ibm-1141_P100-1997"),
    icu(1142, "ibm-1142_P100-1997"),
    icu(1143, "ibm-1143_P100-1997"),
    icu(1144, "ibm-1144_P100-1997"),
    icu(1145, "ibm-1145_P100-1997"),
    icu(1146, "ibm-1146_P100-1997"),
    icu(1147, "ibm-1147_P100-1997"),
    icu(1148, "ibm-1148_P100-1997"),
    icu(1149, "ibm-1149_P100-1997"),
    icu(1200, "UTF-16LE", kUnicodeForm),
    icu(1201, "UTF-16BE", kUnicodeForm),
    icu(1250, "ibm-5346_P100-1998"),
    icu(1251, "ibm-5347_P100-1998"),
    icu(1252, "ibm-5348_P100-1997"),
    icu(1253, "ibm-5349_P100-1998", kOverlay1253),
    icu(1254, "ibm-5350_P100-1998"),
    icu(1255, "ibm-9447_P100-2002", kOverlay1255),
    icu(1256, "ibm-9448_X100-2005"),
    icu(1257, "ibm-9449_P100-2002", kOverlay1257),
    icu(1258, "ibm-5354_P100-1998"),
    gnu(1361, "JOHAB"),
    icu(10000, "macos-0_2-10.2"),
    icu(10006, "macos-6_2-10.4"),
    icu(10007, "macos-7_3-10.2"),
    gnu(10017, "MAC-UK"),
    icu(10029, "macos-29-10.2"),
    icu(10081, "macos-35-10.2"),
    icu(12000, "UTF-32LE", kUnicodeForm),
    icu(12001, "UTF-32BE", kUnicodeForm),
    gnu(20002, "BIG5"),  // glibc's Big5 carries the ETen extensions
    gnu(20106, "ISO646-DE", kSevenBit),
    gnu(20107, "ISO646-SE2", kSevenBit),
    gnu(20108, "ISO646-NO", kSevenBit),
    icu(20127, "US-ASCII", kSevenBit),
    gnu(20261, "T.61-8BIT"),
    gnu(20269, "ISO_6937"),
    icu(20273, "ibm-273_P100-1995"),
    icu(20277, "ibm-277_P100-1995"),
    icu(20278, "ibm-278_P100-1995"),
    icu(20280, "ibm-280_P100-1995"),
    icu(20284, "ibm-284_P100-1995"),
    icu(20285, "ibm-285_P100-1995"),
    icu(20290, "ibm-290_P100-1995"),
    icu(20297, "ibm-297_P100-1995"),
    icu(20420, "ibm-420_X120-1999"),
    gnu(20423, "IBM423"),
    icu(20424, "ibm-424_P100-1995"),
    icu(20838, "ibm-838_P100-1995"),
    icu(20866, "ibm-878_P100-1996"),  // KOI8-R
    icu(20871, "ibm-871_P100-1995"),
    gnu(20880, "IBM880"),
    gnu(20905, "IBM905"),
    icu(20932, "euc-jp-2007"),
    icu(20936, "ibm-1383_P110-1999"),         // GB2312
    icu(20949, "ibm-970_P110_P110-2006_U2"),  // Korean Wansung
    icu(21025, "ibm-1025_P100-1995"),
    icu(21866, "ibm-1168_P100-2002"),  // KOI8-U
    icu(28591, "ISO-8859-1"),
    icu(28592, "ibm-912_P100-1995"),
    icu(28593, "ibm-913_P100-2000"),
    icu(28594, "ibm-914_P100-1995"),
    icu(28595, "ibm-915_P100-1995"),
    icu(28596, "ibm-1089_P100-1995"),
    icu(28597, "ibm-9005_X110-2007"),
    icu(28598, "ibm-5012_P100-1999"),
    icu(28599, "ibm-920_P100-1995"),
    icu(28600, "iso-8859_10-1998"),  // 28600, 28601, 28604 and 28606 are beyond Windows' list
    icu(28601, "iso-8859_11-2001"),
    icu(28603, "ibm-921_P100-1995"),
    icu(28604, "iso-8859_14-1998"),
    icu(28605, "ibm-923_P100-1998"),
    gnu(28606, "ISO-8859-16"),
    icu(38598, "ibm-5012_P100-1999"),  // ISO-8859-8-I: the same table, logical order
    icu(50220, kJisAll, kJis),
    icu(50221, kJisAll, kJis),
    icu(50222, kJisAll, kJisAll),
    icu(50225, "ISO_2022,locale=ko,version=0"),
    icu(50227, "ISO_2022,locale=zh,version=0"),
    icu(50930, "ibm-930_P120-1999"),
    icu(50931, "ibm-939_P120-1999"),  // ICU takes ibm-931 as ibm-939
    icu(50933, "ibm-933_P110-1995"),
    icu(50935, "ibm-935_P110-1999"),
    icu(50937, "ibm-937_P110-1999"),
    icu(50939, "ibm-939_P120-1999"),
    icu(51932, "euc-jp-2007"),
    icu(51936, "windows-936-2000"),  // EUC-CN read as its GBK superset, as Windows does
    icu(51949, "ibm-970_P110_P110-2006_U2"),
    icu(52936, "HZ", kHz),
    icu(54936, "gb18030"),
    // ISCII: the script code is the one of ICU's attribute sequence (0xEF and the code) for
    // the converter's own script.
    iscii(57002, "ISCII,version=0", 0x42),  // Devanagari
    iscii(57003, "ISCII,version=1", 0x43),  // Bengali
    iscii(57004, "ISCII,version=5", 0x44),  // Tamil
    iscii(57005, "ISCII,version=6", 0x45),  // Telugu
    iscii(57006, "ISCII,version=1", 0x43),  // Assamese, in the Bengali script
    iscii(57007, "ISCII,version=4", 0x47),  // Oriya
    iscii(57008, "ISCII,version=7", 0x48),  // Kannada
    iscii(57009, "ISCII,version=8", 0x49),  // Malayalam
    iscii(57010, "ISCII,version=3", 0x4A),  // Gujarati
    iscii(57011, "ISCII,version=2", 0x4B),  // Punjabi
    icu(65000, "UTF-7", kUnicodeForm),
    icu(65001, "UTF-8", kUnicodeForm),
};

constexpr size_t kEntryCount = std::size(kEntries);

constexpr bool entriesSorted()
{
    for (size_t i = 1; i < kEntryCount; ++i) {
        if (kEntries[i - 1].codePage >= kEntries[i].codePage) return false;
    }
    return true;
}
static_assert(entriesSorted(), "the conversion table is sorted by code page, without repeats");

// Code pages that Windows lists, or that the charset name table yields, and that neither ICU nor
// glibc iconv has: they convert to an empty output.
//   42 symbol; 709, 710 Arabic ASMO-449+ and transparent Arabic; 10001 to 10005, 10008, 10010,
//   10021, 10079, 10082 the Macintosh Japanese, Chinese, Korean, Arabic, Hebrew, Romanian, Thai,
//   Icelandic and Croatian tables (glibc's MAC-IS is not Apple's Icelandic: 0xA0 is a dagger
//   there, not U+00DD); 20000, 20001, 20003, 20004, 20005 the Taiwanese CNS, TCA, IBM 5550, TeleText
//   and Wang tables; 20105 IA5 IRV; 20833 EBCDIC Korean Extended; 20924 EBCDIC Latin-1 with euro;
//   29001 Europa; 50229 ISO-2022 Traditional Chinese; 50936 EBCDIC Simplified Chinese;
//   51950 EUC Traditional Chinese.
const std::vector<uint32_t> kUnmappable = {42,    709,   710,   10001, 10002, 10003, 10004, 10005, 10008,
                                           10010, 10021, 10079, 10082, 20000, 20001, 20003, 20004, 20005,
                                           20105, 20833, 20924, 29001, 50229, 50936, 51950};

const Entry* findEntry(uint32_t codePage)
{
    auto it = std::lower_bound(std::begin(kEntries), std::end(kEntries), codePage,
                               [](const Entry& entry, uint32_t value) { return entry.codePage < value; });
    return it != std::end(kEntries) && it->codePage == codePage ? it : nullptr;
}

size_t entryIndex(const Entry& entry) { return static_cast<size_t>(&entry - kEntries); }

char16_t decodeReplacement(const Entry& entry)
{
    if (entry.flags & kUnicodeForm) return 0xFFFD;
    if (entry.flags & kKanaDot) return 0x30FB;
    return u'?';
}

const char16_t* encodeReplacement(const Entry& entry) { return (entry.flags & kUnicodeForm) ? u"\uFFFD" : u"?"; }

// The unit a Windows table gives for one byte the engine could not decode, or 0 if none.
char16_t overlayUnit(const Entry& entry, uint8_t byte)
{
    for (uint8_t i = 0; i < entry.overlayCount; ++i) {
        if (entry.overlay[i].byte == byte) return entry.overlay[i].unit;
    }
    return 0;
}

// ---- ICU ----------------------------------------------------------------------------------------

// Called by ICU for a sequence it cannot decode: Windows' value of an overlay byte, the byte with
// its top bit cleared for a 7-bit code page, otherwise the replacement character.
void U_CALLCONV toUnicodeCallback(const void* context, UConverterToUnicodeArgs* args, const char* codeUnits,
                                  int32_t length, UConverterCallbackReason reason, UErrorCode* err)
{
    if (reason > UCNV_IRREGULAR) return;  // reset, close, clone
    const Entry& entry = *static_cast<const Entry*>(context);
    char16_t unit = decodeReplacement(entry);
    if (length == 1) {
        auto byte = static_cast<uint8_t>(codeUnits[0]);
        if (char16_t mapped = overlayUnit(entry, byte)) unit = mapped;
        else if ((entry.flags & kSevenBit) && byte >= 0x80) unit = static_cast<char16_t>(byte & 0x7F);
    }
    *err = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(args, &unit, 1, 0, err);
}

// The reverse of the overlay, then the substitution string.
void U_CALLCONV fromUnicodeCallback(const void* context, UConverterFromUnicodeArgs* args, const UChar* codeUnits,
                                    int32_t length, UChar32 codePoint, UConverterCallbackReason reason,
                                    UErrorCode* err)
{
    if (reason <= UCNV_IRREGULAR && length == 1) {
        const Entry& entry = *static_cast<const Entry*>(context);
        for (uint8_t i = 0; i < entry.overlayCount; ++i) {
            if (entry.overlay[i].unit == codeUnits[0]) {
                *err = U_ZERO_ERROR;
                char byte = static_cast<char>(entry.overlay[i].byte);
                ucnv_cbFromUWriteBytes(args, &byte, 1, 0, err);
                return;
            }
        }
    }
    UCNV_FROM_U_CALLBACK_SUBSTITUTE(nullptr, args, codeUnits, length, codePoint, reason, err);
}

UConverter* openIcu(const Entry& entry, const char* name)
{
    UErrorCode err = U_ZERO_ERROR;
    UConverter* cnv = ucnv_open(name, &err);
    if (U_FAILURE(err) || !cnv) return nullptr;
    ucnv_setToUCallBack(cnv, toUnicodeCallback, &entry, nullptr, nullptr, &err);
    if (entry.overlayCount) {
        err = U_ZERO_ERROR;
        ucnv_setFromUCallBack(cnv, fromUnicodeCallback, &entry, nullptr, nullptr, &err);
    }
    err = U_ZERO_ERROR;
    ucnv_setSubstString(cnv, encodeReplacement(entry), 1, &err);
    // Windows' best fit: use the table's fallback mappings from Unicode.
    ucnv_setFallback(cnv, true);
    return cnv;
}

// Bytes are fed to ICU in pieces of at most this size, since ICU counts in 32-bit integers.
constexpr size_t kIcuChunk = size_t{1} << 28;

void icuDecode(UConverter* cnv, const char* bytes, size_t count, std::u16string& out)
{
    ucnv_resetToUnicode(cnv);
    // One unit per byte is enough for all but a few tables; the loop grows the buffer otherwise.
    out.resize(count + 8);
    size_t used = 0;
    const char* source = bytes;
    const char* const end = bytes + count;
    for (;;) {
        const char* chunkEnd = static_cast<size_t>(end - source) > kIcuChunk ? source + kIcuChunk : end;
        bool flush = chunkEnd == end;
        UChar* start = out.data();
        UChar* target = start + used;
        UErrorCode err = U_ZERO_ERROR;
        ucnv_toUnicode(cnv, &target, start + out.size(), &source, chunkEnd, nullptr, flush, &err);
        used = static_cast<size_t>(target - start);
        if (err == U_BUFFER_OVERFLOW_ERROR) {
            out.resize(out.size() + out.size() / 2 + 16);
            continue;
        }
        if (U_FAILURE(err) || (flush && source == end)) break;
    }
    out.resize(used);
}

void icuEncode(UConverter* cnv, std::u16string_view text, std::string& out)
{
    ucnv_resetFromUnicode(cnv);
    out.resize(text.size() + text.size() / 2 + 16);
    size_t used = 0;
    const UChar* source = text.data();
    const UChar* const end = text.data() + text.size();
    for (;;) {
        const UChar* chunkEnd = static_cast<size_t>(end - source) > kIcuChunk ? source + kIcuChunk : end;
        bool flush = chunkEnd == end;
        char* start = out.data();
        char* target = start + used;
        UErrorCode err = U_ZERO_ERROR;
        ucnv_fromUnicode(cnv, &target, start + out.size(), &source, chunkEnd, nullptr, flush, &err);
        used = static_cast<size_t>(target - start);
        if (err == U_BUFFER_OVERFLOW_ERROR) {
            out.resize(out.size() * 2 + 16);
            continue;
        }
        if (U_FAILURE(err) || (flush && source == end)) break;
    }
    out.resize(used);
}

// The output cut at a character boundary at or below maxBytes: ICU reports for each byte the
// index of the character it came from, and the cut goes back to where that index changes.
void icuEncodeCapped(UConverter* cnv, std::u16string_view text, std::string& out, size_t maxBytes)
{
    if (text.size() >= kIcuChunk) {
        icuEncode(cnv, text, out);
        if (out.size() > maxBytes) out.resize(maxBytes);
        return;
    }
    ucnv_resetFromUnicode(cnv);
    // Room for a whole character, with a shift sequence, beyond the limit.
    size_t room = maxBytes + 16;
    out.resize(room);
    std::vector<int32_t> offsets(room);
    const UChar* source = text.data();
    char* target = out.data();
    UErrorCode err = U_ZERO_ERROR;
    ucnv_fromUnicode(cnv, &target, out.data() + room, &source, text.data() + text.size(), offsets.data(), true,
                     &err);
    size_t written = static_cast<size_t>(target - out.data());
    size_t keep = std::min(written, maxBytes);
    if (keep < written) {
        while (keep > 0 && offsets[keep] == offsets[keep - 1]) --keep;
    }
    out.resize(keep);
}

// ICU's ISCII converters open their output with the attribute sequence of their own script,
// which Windows leaves out: a reader of the code page starts in that script anyway.
void dropLeadingScriptCode(const Entry& entry, std::string& out)
{
    if (out.size() >= 2 && static_cast<uint8_t>(out[0]) == 0xEF && static_cast<uint8_t>(out[1]) == entry.isciiScript) {
        out.erase(0, 2);
    }
}

// ICU's HZ converter leaves its output in GB mode at the end; HZ text ends in ASCII mode.
bool hzEndsInGbMode(const std::string& out)
{
    bool gb = false;
    size_t i = 0;
    while (i < out.size()) {
        if (out[i] == '~' && i + 1 < out.size()) {
            if (!gb && out[i + 1] == '{') gb = true;
            else if (gb && out[i + 1] == '}') gb = false;
            i += 2;  // an escape, "~~" or a line continuation
            continue;
        }
        i += gb ? 2 : 1;
    }
    return gb;
}

// ---- glibc iconv ------------------------------------------------------------------------------

const char* const kUtf16Host = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";
const iconv_t kNoIconv = reinterpret_cast<iconv_t>(-1);

void iconvDecode(iconv_t cd, const Entry& entry, const char* bytes, size_t count, std::u16string& out)
{
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    out.resize(count + 8);
    size_t used = 0;
    char* in = const_cast<char*>(bytes);
    size_t inLeft = count;
    while (inLeft > 0) {
        if (used == out.size()) out.resize(out.size() * 2 + 16);
        char* outBegin = reinterpret_cast<char*>(out.data() + used);
        char* outPtr = outBegin;
        size_t outLeft = (out.size() - used) * sizeof(char16_t);
        size_t result = iconv(cd, &in, &inLeft, &outPtr, &outLeft);
        int error = errno;
        used += static_cast<size_t>(outPtr - outBegin) / sizeof(char16_t);
        if (result != static_cast<size_t>(-1)) break;
        if (error == E2BIG) {
            out.resize(out.size() * 2 + 16);
            continue;
        }
        if (error != EILSEQ && error != EINVAL) break;
        // One byte that does not decode; an incomplete sequence at the end is one replacement.
        if (used == out.size()) out.resize(out.size() * 2 + 16);
        auto byte = static_cast<uint8_t>(*in);
        char16_t unit = decodeReplacement(entry);
        if ((entry.flags & kSevenBit) && byte >= 0x80) {
            char low = static_cast<char>(byte & 0x7F);
            char* lowIn = &low;
            size_t lowLeft = 1;
            char16_t decoded = 0;
            char* decodedOut = reinterpret_cast<char*>(&decoded);
            size_t decodedLeft = sizeof(decoded);
            if (iconv(cd, &lowIn, &lowLeft, &decodedOut, &decodedLeft) != static_cast<size_t>(-1) &&
                decodedLeft == 0) {
                unit = decoded;
            }
        }
        out[used++] = unit;
        size_t skip = error == EINVAL ? inLeft : 1;
        in += skip;
        inLeft -= skip;
    }
    out.resize(used);
}

// Writes whole characters only, at most maxBytes bytes.
void iconvEncode(iconv_t cd, const std::string& replacement, std::u16string_view text, std::string& out,
                 size_t maxBytes)
{
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    size_t limit = maxBytes;
    out.resize(std::min(limit, text.size() * 2 + 16));
    size_t used = 0;
    char* in = reinterpret_cast<char*>(const_cast<char16_t*>(text.data()));
    size_t inLeft = text.size() * sizeof(char16_t);
    auto grow = [&]() {
        if (out.size() >= limit) return false;
        out.resize(std::min(limit, out.size() * 2 + 16));
        return true;
    };
    while (inLeft > 0) {
        char* outPtr = out.data() + used;
        size_t outLeft = out.size() - used;
        size_t result = iconv(cd, &in, &inLeft, &outPtr, &outLeft);
        int error = errno;
        used = static_cast<size_t>(outPtr - out.data());
        if (result != static_cast<size_t>(-1)) break;
        if (error == E2BIG) {
            if (!grow()) break;
            continue;
        }
        if (error != EILSEQ && error != EINVAL) break;
        // A character the code page lacks, or a lone surrogate: the default character.
        while (out.size() - used < replacement.size()) {
            if (!grow()) break;
        }
        if (out.size() - used < replacement.size()) break;
        out.replace(used, replacement.size(), replacement);
        used += replacement.size();
        size_t skip = sizeof(char16_t);
        if (error == EINVAL) {
            skip = inLeft;
        } else if (inLeft >= 2 * sizeof(char16_t)) {
            char16_t first, second;
            std::memcpy(&first, in, sizeof first);
            std::memcpy(&second, in + sizeof first, sizeof second);
            if (first >= 0xD800 && first < 0xDC00 && second >= 0xDC00 && second < 0xE000) skip = 2 * sizeof(char16_t);
        }
        in += skip;
        inLeft -= skip;
    }
    // Back to the initial shift state, for a stateful code page, if there is room.
    char* outPtr = out.data() + used;
    size_t outLeft = out.size() - used;
    if (iconv(cd, nullptr, nullptr, &outPtr, &outLeft) != static_cast<size_t>(-1)) {
        used = static_cast<size_t>(outPtr - out.data());
    }
    out.resize(used);
}

// ---- the per-thread converters ---------------------------------------------------------------

// ICU converters and iconv descriptors keep state and are not for two threads at once; the
// system is apartment-threaded, so each thread keeps its own, opened on first use.
struct Slot {
    UConverter* decoder = nullptr;
    UConverter* encoder = nullptr;
    iconv_t iconvDecoder = kNoIconv;
    iconv_t iconvEncoder = kNoIconv;
    std::string replacement;  // the default character in the code page, for iconv
    bool decoderFailed = false;
    bool encoderFailed = false;
};

struct ConverterCache {
    Slot slots[kEntryCount];

    ~ConverterCache()
    {
        for (Slot& slot : slots) {
            if (slot.encoder && slot.encoder != slot.decoder) ucnv_close(slot.encoder);
            if (slot.decoder) ucnv_close(slot.decoder);
            if (slot.iconvDecoder != kNoIconv) iconv_close(slot.iconvDecoder);
            if (slot.iconvEncoder != kNoIconv) iconv_close(slot.iconvEncoder);
        }
    }
};

Slot& slotFor(const Entry& entry)
{
    thread_local ConverterCache cache;
    return cache.slots[entryIndex(entry)];
}

bool decode(const Entry& entry, const char* bytes, size_t count, std::u16string& out)
{
    Slot& slot = slotFor(entry);
    if (slot.decoderFailed) return false;
    if (entry.engine == Engine::Icu) {
        if (!slot.decoder) {
            slot.decoder = openIcu(entry, entry.decoder);
            if (!slot.decoder) {
                slot.decoderFailed = true;
                return false;
            }
        }
        icuDecode(slot.decoder, bytes, count, out);
        return true;
    }
    if (slot.iconvDecoder == kNoIconv) {
        slot.iconvDecoder = iconv_open(kUtf16Host, entry.decoder);
        if (slot.iconvDecoder == kNoIconv) {
            slot.decoderFailed = true;
            return false;
        }
    }
    iconvDecode(slot.iconvDecoder, entry, bytes, count, out);
    return true;
}

constexpr size_t kNoLimit = static_cast<size_t>(-1);

bool encode(const Entry& entry, std::u16string_view text, std::string& out, size_t maxBytes)
{
    Slot& slot = slotFor(entry);
    if (slot.encoderFailed) return false;
    if (entry.engine == Engine::Icu) {
        if (!slot.encoder) {
            if (!entry.encoder || std::strcmp(entry.encoder, entry.decoder) == 0) {
                if (!slot.decoder && !slot.decoderFailed) slot.decoder = openIcu(entry, entry.decoder);
                slot.encoder = slot.decoder;
            } else {
                slot.encoder = openIcu(entry, entry.encoder);
            }
            if (!slot.encoder) {
                slot.encoderFailed = true;
                return false;
            }
        }
        if (maxBytes == kNoLimit) icuEncode(slot.encoder, text, out);
        else icuEncodeCapped(slot.encoder, text, out, maxBytes);
        if (entry.isciiScript) dropLeadingScriptCode(entry, out);
        // ICU's HZ converter, reset, opens text that starts in ASCII with a needless "~}".
        if ((entry.flags & kHz) && out.compare(0, 2, "~}") == 0) out.erase(0, 2);
        if ((entry.flags & kHz) && hzEndsInGbMode(out)) {
            if (maxBytes != kNoLimit && out.size() + 2 > maxBytes) {
                icuEncodeCapped(slot.encoder, text, out, maxBytes < 2 ? 0 : maxBytes - 2);
                if (out.compare(0, 2, "~}") == 0) out.erase(0, 2);
                if (!hzEndsInGbMode(out)) return true;
            }
            out += "~}";
        }
        return true;
    }
    if (slot.iconvEncoder == kNoIconv) {
        slot.iconvEncoder = iconv_open(entry.decoder, kUtf16Host);
        if (slot.iconvEncoder == kNoIconv) {
            slot.encoderFailed = true;
            return false;
        }
        // The default character in the code page's own bytes ("?" is 0x6F in EBCDIC).
        std::u16string_view question = encodeReplacement(entry);
        iconvEncode(slot.iconvEncoder, std::string(), question, slot.replacement, 16);
        if (slot.replacement.empty()) slot.replacement = "?";
    }
    iconvEncode(slot.iconvEncoder, slot.replacement, text, out, maxBytes);
    return true;
}

// Windows' OEM and Macintosh code pages for an ANSI code page.
uint32_t oemCodePageFor(uint32_t ansi)
{
    switch (ansi) {
    case 874: case 932: case 936: case 949: case 950: case 1258: case 65001: return ansi;
    case 1250: return 852;
    case 1251: return 866;
    case 1253: return 737;
    case 1254: return 857;
    case 1255: return 862;
    case 1256: return 720;
    case 1257: return 775;
    default: return 437;
    }
}

uint32_t macCodePageFor(uint32_t ansi)
{
    switch (ansi) {
    case 874: return 10021;
    case 932: return 10001;
    case 936: return 10008;
    case 949: return 10003;
    case 950: return 10002;
    case 1250: return 10029;
    case 1251: return 10007;
    case 1253: return 10006;
    case 1254: return 10081;
    case 1255: return 10005;
    case 1256: return 10004;
    case 1257: return 10029;
    default: return 10000;
    }
}

// Codesets that glibc locales use and the charset name table does not hold.
uint32_t codePageForCodeset(const char* codeset)
{
    if (uint32_t codePage = codePageForCharset(codeset)) return codePage;
    struct Row {
        const char* codeset;
        uint32_t codePage;
    };
    static constexpr Row kRows[] = {{"gb18030", 54936},     {"big5-hkscs", 950},    {"iso-8859-10", 28600},
                                    {"iso-8859-13", 28603}, {"iso-8859-14", 28604}, {"iso-8859-16", 28606},
                                    {"euc-jp-ms", 51932},   {"eucjp-ms", 51932}};
    for (const Row& row : kRows) {
        if (strcasecmp(codeset, row.codeset) == 0) return row.codePage;
    }
    return 0;
}

}  // namespace

uint32_t systemAnsiCodePage()
{
    const char* locale = std::setlocale(LC_CTYPE, nullptr);
    if (!locale || std::strcmp(locale, "C") == 0 || std::strcmp(locale, "POSIX") == 0) return 1252;
    const char* codeset = nl_langinfo(CODESET);
    uint32_t codePage = codeset ? codePageForCodeset(codeset) : 0;
    return codePage ? codePage : 1252;
}

uint32_t resolveCodePage(uint32_t codePage)
{
    switch (codePage) {
    case kCodePageAnsi:
    case kCodePageThreadAnsi: return systemAnsiCodePage();
    case kCodePageOem: return oemCodePageFor(systemAnsiCodePage());
    case kCodePageMac: return macCodePageFor(systemAnsiCodePage());
    default: return codePage;
    }
}

bool isCodePageSupported(uint32_t codePage) { return findEntry(resolveCodePage(codePage)) != nullptr; }

std::vector<uint32_t> supportedCodePages()
{
    std::vector<uint32_t> list;
    list.reserve(kEntryCount);
    for (const Entry& entry : kEntries) list.push_back(entry.codePage);
    return list;
}

const std::vector<uint32_t>& unmappableCodePages() { return kUnmappable; }

bool convertCodePageToWide(uint32_t codePage, const char* bytes, size_t count, std::u16string& out, uint32_t)
{
    out.clear();
    const Entry* entry = findEntry(resolveCodePage(codePage));
    if (!entry) return false;
    if (!bytes || count == 0) return true;
    if (!decode(*entry, bytes, count, out)) {
        out.clear();
        return false;
    }
    return true;
}

std::u16string bytesToWide(const char* bytes, size_t size, uint32_t codePage, bool useDefault)
{
    std::u16string out;
    if (codePage == kCodePageAnsi && !useDefault) return out;
    convertCodePageToWide(codePage, bytes, size, out);
    return out;
}

void convertToWide(std::u16string& out, const char* bytes, size_t count, const char* charset, bool useDefault)
{
    uint32_t codePage = charset ? codePageForCharset(charset) : 0;
    out = bytesToWide(bytes, count, codePage, useDefault);
}

std::string wideToBytes(std::u16string_view text, uint32_t codePage)
{
    return wideToBytes(text, codePage, kNoLimit);
}

std::string wideToBytes(std::u16string_view text, uint32_t codePage, size_t maxBytes)
{
    std::string out;
    const Entry* entry = findEntry(resolveCodePage(codePage));
    if (!entry || text.empty() || maxBytes == 0) return out;
    if (!encode(*entry, text, out, maxBytes)) out.clear();
    return out;
}

}  // namespace ty
