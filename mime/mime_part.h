#pragma once
// One entity of a parsed Internet message: its header fields, the few fields the parser reads
// for itself, and its body.
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "mime/ascii.h"
#include "mime/fixed_text.h"

struct CMimePart {
    // flags
    static constexpr uint32_t kAttachment = 1;    // the disposition said attachment
    static constexpr uint32_t kDecoded = 2;       // the body has been through decodeBody
    static constexpr uint32_t kInlineBinary = 4;  // named, or of a type that is no text
    // encoding
    static constexpr uint32_t kBase64 = 1;
    static constexpr uint32_t kQuotedPrintable = 2;

    static constexpr size_t kFieldSize = 1024;
    static constexpr size_t kMaxHeaderName = 1023;

    using Field = mime::FixedText<kFieldSize>;

    // Keys compare without regard to ASCII case; a later field of a name replaces the earlier.
    std::map<std::string, std::string, mime::LessIgnoreCase> headers;
    uint32_t flags = 0;
    uint32_t encoding = 0;
    Field contentType;  // the type token as written
    Field charset;
    Field name;         // "name" of the type, or "filename" of the disposition
    Field boundary;
    Field contentId;    // between "<" and ">"
    // Where the content starts inside `body`: past the stored header block for the root and for
    // nested multiparts, 0 for the others.
    uint32_t bodyOffset = 0;
    std::string body;
    CMimePart* next = nullptr;
    // The part before in the list; the boundary search follows it back to the root.
    CMimePart* prev = nullptr;

    uint32_t bodySize() const { return static_cast<uint32_t>(body.size()); }
    // The entity's content: `body` from `bodyOffset` on (empty while the offset lies beyond it).
    std::string_view content() const
    {
        return bodyOffset < body.size() ? std::string_view(body).substr(bodyOffset) : std::string_view();
    }
};
