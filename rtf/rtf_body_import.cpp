#include "rtf/rtf_body_import.h"

#include <stdexcept>

#include "foundation/log.h"
#include "rtf/compressed_rtf.h"
#include "rtf/rtf_to_html.h"

namespace mcl {
namespace {

// Only the first "\from" word decides: a document is HTML-wrapping when that word is
// "\fromhtml", whatever stands later.
bool wrapsHtml(const std::string& rtf)
{
    size_t from = rtf.find("\\from");
    return from != std::string::npos && rtf.compare(from, 9, "\\fromhtml") == 0;
}

}  // namespace

// Bodies are always decoded here: there is no MAPI provider on this platform to hand the
// stream to.
std::string readRtfBodyStream(ty::IOS& stream)
{
    int64_t size = stream.getSize();
    if (size < 0) return {};  // a stream that cannot tell its size cannot be read either
    if (size == 0) throw std::out_of_range("the RTF body stream is empty");
    std::string compressed(size_t(size), '\0');
    if (stream._read(compressed.data(), size) < 0) return {};
    return decompressRtf(std::move(compressed));
}

void importRtfBody(ty::IOS& stream, uint32_t parentId, const std::u16string& name, MailProperties& properties)
{
    ty::TraceScope trace("mcl::importRtfBody");
    std::string rtf = readRtfBodyStream(stream);
    trace.debug("rtf size = ", rtf.size());
    if (rtf.empty()) return;

    if (wrapsHtml(rtf)) {
        std::u16string html;
        rtfToHtml(rtf, html);
        trace.debug("html length = ", html.size());
        properties.addProperty(kHtmlFromRtfTag, parentId, name, html);
        return;
    }
    if (!properties.findProperty(kRtfInSyncTag)) {
        const uint32_t inSync = 1;
        properties.addProperty(kRtfInSyncTag, parentId, u"PidTagRtfInSync", &inSync, sizeof inSync);
    }
    properties.addProperty(kRtfBodyTag, parentId, name, rtf.data(), rtf.size());
}

}  // namespace mcl
