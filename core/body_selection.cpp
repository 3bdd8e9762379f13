// Which body an item reports, how each is fetched as text, how an HTML body's links are
// pointed at its attachments, and how a body is exported.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "core/base_reader.h"
#include "core/mail_item.h"
#include "foundation/code_page.h"
#include "foundation/log.h"
#include "foundation/text.h"
#include "platform/html_text.h"
#include "regex/pattern.h"

namespace mcl {

namespace {

constexpr uint32_t kPlainBody = 0x1000001F;
constexpr uint32_t kHtmlBodyW = 0x1013001F;
constexpr uint32_t kHtmlBodyA = 0x1013001E;
constexpr uint32_t kHtmlBodyBinary = 0x10130102;
constexpr uint32_t kRtfBody = 0xF1000102;
constexpr uint32_t kHtmlFromRtf = 0xF101001F;
constexpr uint32_t kRtfInSync = 0x0E1F000B;
constexpr uint32_t kInternetCodePage = 0x3FDE0003;

// The URL form the mail client leaves in a message for an attachment linked by name.
constexpr char16_t kLinkMarker[] = u"http://outlook/";

std::u16string replaceAllIn(std::u16string text, const std::u16string& pattern, const std::u16string& replacement,
                            uint32_t flags)
{
    return ty::replaceAll(text, pattern, replacement, flags);
}

}  // namespace

std::u16string fileExtension(const std::u16string& name)
{
    size_t dot = name.rfind(u'.');
    return dot == std::u16string::npos ? std::u16string() : name.substr(dot);
}

std::u16string attachmentLinkName(const std::u16string& fileName, const std::u16string& cid, uint32_t index)
{
    if (cid.empty() && !fileName.empty()) return fileName;
    return u"t_file_at" + ty::utf8ToWide(std::to_string(index)) + fileExtension(fileName);
}

std::u16string quoteForPattern(const std::u16string& text)
{
    return replaceAllIn(text, u"[\\[\\\\^\\$\\.\\|\\?\\*\\+\\(\\)\\{\\}\\#\\ \t]", uR"(\$+)", rx::MultiLine);
}

std::u16string MailItem::htmlBodyText(MailProperty* property) const
{
    const auto* bytes = reinterpret_cast<const char*>(property->bytes());
    if (property->tag() == kHtmlBodyBinary) {
        std::u16string text;
        ty::convertToWide(text, bytes, static_cast<size_t>(property->size()), "", true);
        return text;
    }
    if (property->tag() == kHtmlBodyA) {
        MailProperty* cpid = properties->findProperty(kInternetCodePage, 0);
        uint32_t codePage = cpid && cpid->size() == 4 ? cpid->valueU32() : 0;
        return ty::bytesToWide(bytes, strnlen(bytes, static_cast<size_t>(property->size())), codePage, true);
    }
    return property->toString();
}

MailProperty* MailItem::getBodyProp(int32_t type)
{
    ty::TraceScope trace("mcl::MailItem::getBodyProp");
    loadBody();
    MailProperty* body = nullptr;
    if (type == BodyPlainText) body = properties->findProperty(kPlainBody, 0);
    if (type == BodyRTF) body = properties->findProperty(kRtfBody, 0);
    if (type == BodyHTML) {
        body = properties->findProperty(kHtmlFromRtf, 0);
        if (!body) body = properties->findProperty(kHtmlBodyW, 0);
    }
    if (body && type == BodyHTML && htmlLinksPending && (loaded & LoadBody) && (loaded & LoadAttachments)) {
        std::u16string html = htmlBodyText(body);
        if (!html.empty()) {
            body->setValue(formatHtmlBodyLinks(html));
            body->setTag(kHtmlBodyW);
            htmlLinksPending = 0;
        }
    }
    return body;
}

int32_t MailItem::getProperBodyType()
{
    loadBody();
    if (presentationKind() != 0) return BodyHTML;
    MailProperty* sync = properties->findProperty(kRtfInSync);
    bool inSync = !(sync && sync->valueU16() == 0);
    if (properties->findProperty(kRtfBody) && inSync) return BodyRTF;
    if (properties->findProperty(kHtmlFromRtf)) return BodyHTML;
    if (properties->findProperty(kHtmlBodyW)) return BodyHTML;
    if (properties->findProperty(kPlainBody)) return BodyPlainText;
    return BodyNone;
}

std::u16string MailItem::getBodyText(int32_t type)
{
    clearError();
    if (MailProperty* body = getBodyProp(type)) {
        if (body->tag() == kRtfBody) {
            // The RTF as stored, one character a byte; objects are not rendered into it here.
            if (rtfText.empty() && body->bytes())
                rtfText = ty::widenBytes(std::string(reinterpret_cast<const char*>(body->bytes()),
                                                     static_cast<size_t>(body->size())));
            return rtfText;
        }
        if (body->tag() == kHtmlBodyBinary || body->tag() == kHtmlBodyA) {
            body->setValue(htmlBodyText(body));
            body->setTag(kHtmlBodyW);
        }
        return body->bytes() ? body->toString() : std::u16string();
    }
    if (type != BodyPlainText) return {};
    MailProperty* html = getBodyProp(BodyHTML);
    if (!html) return {};
    if (html->tag() == kHtmlBodyBinary) {
        html->setValue(htmlBodyText(html));
        html->setTag(kHtmlBodyW);
    }
    return platform::htmlToText(html->toString());
}

std::u16string& MailItem::formatHtmlBodyLinks(std::u16string& html)
{
    ty::TraceScope trace("mcl::MailItem::formatHtmlBodyLinks");
    bool outlookLinkSeen = false;
    Attachments* list = getAttachments();
    for (uint32_t index = 0; list && index < list->count(); ++index) {
        Attachment* attachment = list->getAttachment(index);
        const std::u16string& cid = attachment->getCid();
        if (attachment->getType() != AttachEmbeddedMsg && attachment->getType() != AttachOLE && cid.empty()) continue;
        std::u16string link = attachmentLinkName(attachment->getFileName(false), cid, index);
        size_t compared = std::min<size_t>(cid.size(), 15);
        if (cid.compare(0, compared, kLinkMarker, compared) == 0) {
            outlookLinkSeen = true;
            ty::replaceAll(html, uR"(\bsrc\s*=\s*")" + quoteForPattern(attachment->getName(false)) + u"\"",
                           u"src=\"" + link + u"\"", rx::IgnoreCase);
        } else {
            std::u16string quoted = quoteForPattern(cid);
            ty::replaceAll(html, uR"(\bsrc\s*=\s*"?(cid:)?)" + quoted + u"\"?", u"src=\"" + link + u"\"",
                           rx::IgnoreCase);
            ty::replaceAll(html, uR"(url\s*\(\s*(cid:)?)" + quoted + uR"(\))", u"url(" + link + u")",
                           rx::IgnoreCase);
        }
    }
    if (outlookLinkSeen) ty::replaceAll(html, uR"(<BASE\s+[^>]*>)", u"", rx::IgnoreCase);
    return html;
}

bool MailItem::exportBody(int32_t type, const std::u16string& fullPath)
{
    getAttachments();
    std::u16string dir, name, ext;
    ty::splitPath(fullPath, dir, name, ext);
    if (dir.empty()) {
        setError(u"Absolute path with file name required.", u"", 0, mul::E_FAIL_CODE);
        return false;
    }
    std::FILE* file = std::fopen(ty::wideToUtf8(fullPath).c_str(), "wb");
    if (!file) {
        setError(u"Can't open file for writing.", u"", 0, mul::E_FAIL_CODE);
        return false;
    }
    if (type == BodyRTF) {
        MailProperty* rtf = getBodyProp(BodyRTF);
        if (rtf && rtf->bytes()) std::fwrite(rtf->bytes(), 1, static_cast<size_t>(rtf->size()), file);
        std::fclose(file);
        return true;
    }
    if (type == BodyHTML) {
        Attachments* list = getAttachments();
        std::u16string html = getBodyText(BodyHTML);
        for (uint32_t index = 0; list && index < list->count(); ++index) {
            Attachment* attachment = list->getAttachment(index);
            std::u16string link = attachmentLinkName(attachment->getFileName(false), attachment->getCid(), index);
            bool wanted = attachment->getType() == AttachEmbeddedByValue || attachment->getType() == AttachOLE ||
                          !attachment->getCid().empty();
            if (!wanted) {
                rx::WPattern linked(uR"(src\s*=\s*")" + link + uR"("\s+)", rx::Global | rx::IgnoreCase);
                wanted = linked.match(html).matched();
            }
            // The folder part keeps its closing separator, so the path holds two in a row; the
            // separator added is this system's own, since a backslash is no separator here.
            if (wanted) attachment->save(dir + u"/" + link);
        }
    } else if (type != BodyPlainText) {
        std::fclose(file);  // created, and left empty
        return false;
    }
    std::u16string text = getBodyText(type);
    std::fwrite("\xFF\xFE", 1, 2, file);
    for (char16_t c : text) {
        const unsigned char pair[2] = {static_cast<unsigned char>(c & 0xFF), static_cast<unsigned char>(c >> 8)};
        std::fwrite(pair, 1, 2, file);
    }
    std::fclose(file);
    return true;
}

}  // namespace mcl
