// Feeds arbitrary bytes to the MIME scanner in every parse mode, decodes every part's body and
// writes the parse back out.
#include <cstddef>
#include <cstdint>
#include <string>

#include "mime/mime.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const char* bytes = reinterpret_cast<const char*>(data);
    for (uint32_t mode : {0u, CMime::kModeSinglePass, CMime::kModeHeadersOnly}) {
        CMime mime;
        mime.parse(bytes, static_cast<uint32_t>(size), mode);
        for (CMimePart* part = mime.first(); part; part = part->next) mime.decodeBody(*part);
        std::string out(mime.serialize(nullptr, 0), '\0');
        mime.serialize(out.data(), out.size());
    }
    return 0;
}
