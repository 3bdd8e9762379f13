#pragma once
// Helpers for building messages and reading parse results in the MIME tests.
#include <string>
#include <string_view>
#include <vector>

#include "mime/mime.h"

namespace mime_test {

// The text with every LF turned into CRLF, so that messages can be written with "\n".
inline std::string crlf(std::string_view text)
{
    std::string out;
    for (char c : text) out += c == '\n' ? std::string_view("\r\n") : std::string_view(&c, 1);
    return out;
}

inline int parse(CMime& mime, const std::string& message, uint32_t mode = 0)
{
    return mime.parse(message.data(), uint32_t(message.size()), mode);
}

inline std::vector<const CMimePart*> partsOf(const CMime& mime)
{
    std::vector<const CMimePart*> parts;
    for (const CMimePart* part = mime.first(); part; part = part->next) parts.push_back(part);
    return parts;
}

// A header field's stored value, or "<absent>".
inline std::string header(const CMimePart& part, const std::string& name)
{
    auto it = part.headers.find(name);
    return it == part.headers.end() ? "<absent>" : it->second;
}

inline std::string str(std::string_view text)
{
    return std::string(text);
}

}  // namespace mime_test
