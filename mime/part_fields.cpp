#include "mime/part_fields.h"

#include <cstdint>
#include <string>

#include "mime/ascii.h"
#include "mime/mime_param_list.h"

namespace mime {

namespace {

void readContentType(CMimePart& part, std::string_view value)
{
    size_t token = 0;
    while (token < value.size() && token < CMimePart::kFieldSize && value[token] != ';' &&
           static_cast<uint8_t>(value[token]) >= 33)
        ++token;
    part.contentType = value.substr(0, token);

    // A parameter that the field doesn't name leaves what an earlier "Content-Type" gave.
    size_t rest = token;
    while (rest < value.size() && !isPrintable(value[rest])) ++rest;
    CMimeParamList params(';');
    params.parse(value.data() + rest, value.size() - rest);
    std::string text;
    if (params.getValue("", "charset", text, CMimePart::kFieldSize)) part.charset = text;
    if (params.getValue("", "name", text, CMimePart::kFieldSize)) part.name = text;
    if (params.getValue("", "boundary", text, CMimePart::kFieldSize)) part.boundary = text;

    std::string_view boundary = part.boundary;
    size_t kept = boundary.find_last_not_of(" \r\n\t");
    part.boundary = boundary.substr(0, kept == std::string_view::npos ? 0 : kept + 1);
}

void readTransferEncoding(CMimePart& part, std::string_view value)
{
    if (startsWithIgnoreCase(value, "base64"))
        part.encoding |= CMimePart::kBase64;
    else if (startsWithIgnoreCase(value, "quoted-printable"))
        part.encoding |= CMimePart::kQuotedPrintable;
}

void readDisposition(CMimePart& part, std::string_view value)
{
    // Disposition types are case-insensitive tokens, as transfer encodings are.
    if (startsWithIgnoreCase(value, "attachment")) part.flags |= CMimePart::kAttachment;
    // With CR as the delimiter the whole line is one entry: only a value that starts with
    // "filename=" names the file here.
    CMimeParamList params('\r');
    params.parse(value.data(), value.size());
    std::string text;
    if (params.getValue("", "filename", text, CMimePart::kFieldSize)) part.name = text;
}

void readContentId(CMimePart& part, std::string_view value)
{
    size_t open = value.find('<');
    if (open == std::string_view::npos) return;
    std::string_view id = value.substr(open + 1);
    // An id longer than the field's room is cut there, as every field is.
    part.contentId = id.substr(0, id.find('>'));
}

}  // namespace

void readSpecialField(CMimePart& part, std::string_view name, std::string_view value)
{
    if (equalsIgnoreCase(name, "Content-Type"))
        readContentType(part, value);
    else if (equalsIgnoreCase(name, "Content-Transfer-Encoding"))
        readTransferEncoding(part, value);
    else if (equalsIgnoreCase(name, "Content-Disposition"))
        readDisposition(part, value);
    else if (equalsIgnoreCase(name, "Content-ID"))
        readContentId(part, value);
}

}  // namespace mime
