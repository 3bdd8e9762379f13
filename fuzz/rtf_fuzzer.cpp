// Feeds arbitrary bytes to the RTF body path twice: as a compressed RTF container, whose result
// then goes through the HTML scan, and straight to the HTML scan as RTF text.
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "rtf/compressed_rtf.h"
#include "rtf/rtf_to_html.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string bytes(reinterpret_cast<const char*>(data), size);
    std::u16string html;
    try {
        std::string rtf = mcl::decompressRtf(bytes);
        mcl::rtfToHtml(rtf, html);
    } catch (const std::out_of_range&) {
        // Input that ends inside a token: the reader frame reports it as an error.
    }
    html.clear();
    mcl::rtfToHtml(bytes, html);
    return 0;
}
