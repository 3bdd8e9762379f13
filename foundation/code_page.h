#pragma once
// The conversion layer: bytes in a Windows code page to wide (UTF-16) text and back.
//
// On Linux the Windows conversion services (MultiByteToWideChar, IMultiLanguage2) are replaced by
// one table from a Windows code page number to a converter: an ICU converter where ICU has the
// table (its Windows tables decode as Windows does, e.g. "windows-1252" maps the unassigned bytes
// 0x81, 0x8D, 0x8F, 0x90, 0x9D to U+0081...), glibc iconv for the few code pages ICU lacks. A code
// page that neither engine has gives an empty output, never guessed text: see
// unmappableCodePages(). Converters are opened on first use and kept per thread.
//
// Decoding follows MultiByteToWideChar with flags 0: an invalid or unassigned sequence is
// replaced, the rest of the text goes on. The replacement is U+FFFD for the Unicode forms (1200,
// 1201, 12000, 12001, 65000, 65001), U+30FB (katakana middle dot) for 932 and "?" for every other
// code page, as Windows' tables have it. Embedded NUL bytes are converted like any other byte.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ty {

// Pseudo code pages that MultiByteToWideChar accepts, resolved through the system code page.
constexpr uint32_t kCodePageAnsi = 0;       // CP_ACP
constexpr uint32_t kCodePageOem = 1;        // CP_OEMCP
constexpr uint32_t kCodePageMac = 2;        // CP_MACCP
constexpr uint32_t kCodePageThreadAnsi = 3; // CP_THREAD_ACP

// The system's ANSI code page, asked of the process locale as it stands (no setlocale here):
// the codeset of LC_CTYPE (nl_langinfo(CODESET)) through the charset name table, 1252 when the
// locale is "C" or "POSIX" or the codeset is not known. Never 0.
uint32_t systemAnsiCodePage();

// 0 and 3 give systemAnsiCodePage(); 1 the OEM and 2 the Macintosh code page that Windows pairs
// with it (1252: 437 and 10000, 1251: 866 and 10007, ...); any other number stands.
uint32_t resolveCodePage(uint32_t codePage);

// Whether bytes in this code page (after resolveCodePage) can be converted.
bool isCodePageSupported(uint32_t codePage);
// Every code page number of the conversion table, ascending.
std::vector<uint32_t> supportedCodePages();
// Windows code page numbers (and those the charset name table yields) that no engine here can
// convert: they give an empty output.
const std::vector<uint32_t>& unmappableCodePages();

// Code page 0 with useDefault false gives the empty string; with useDefault true code
// page 0 means the system's ANSI code page. Otherwise the bytes are decoded by the code page; a
// code page that cannot be converted gives the empty string.
std::u16string bytesToWide(const char* bytes, size_t size, uint32_t codePage, bool useDefault);

// The one road from bytes and a charset name to wide text. The code page comes from
// codePageForCharset (0 for an absent or unknown name); code page 0 with the flag clear gives
// the empty string, with the flag set the system's ANSI code page; then as bytesToWide.
void convertToWide(std::u16string& out, const char* bytes, size_t count, const char* charset, bool useDefault);

// WideCharToMultiByte with flags 0: a character the code page lacks becomes a near equivalent
// where the table has a fallback, otherwise the code page's default character ("?", U+FFFD for
// the Unicode forms). Code page 0 is the system's ANSI code page; a code page that cannot be
// converted gives the empty string.
std::string wideToBytes(std::u16string_view text, uint32_t codePage);
// The same, with the output cut to at most maxBytes bytes at a character boundary: the bytes of
// a character that does not fit whole are left out.
std::string wideToBytes(std::u16string_view text, uint32_t codePage, size_t maxBytes);

// IMultiLanguage2::ConvertStringToUnicode for the callers that hold a code page number: decodes
// into `out` and returns true, or empties `out` and returns false when the code page cannot be
// converted. Code page 0 is the system's ANSI code page. `mode` is the conversion state of the
// Windows service; each call here converts a whole string from the initial state, so it is not
// read.
bool convertCodePageToWide(uint32_t codePage, const char* bytes, size_t count, std::u16string& out,
                           uint32_t mode = 0);

}  // namespace ty
