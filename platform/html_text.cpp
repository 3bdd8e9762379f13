#include "platform/html_text.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <cstring>

#include "foundation/utf.h"

namespace platform {

namespace {

bool isOneOf(const char* name, std::initializer_list<const char*> names)
{
    return std::any_of(names.begin(), names.end(), [&](const char* n) { return std::strcmp(name, n) == 0; });
}

// Collects text and the line breaks that blocks require; runs of required breaks collapse to
// the largest, and none are written at the very start or end.
class TextCollector {
public:
    void text(std::string_view utf8, bool preformatted)
    {
        for (char c : utf8) {
            bool space = c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
            if (preformatted || !space) {
                flushBreaks();
                if (pendingSpace_ && !out_.empty() && out_.back() != '\n' && out_.back() != '\t') out_ += ' ';
                pendingSpace_ = false;
                out_ += c;
            } else {
                pendingSpace_ = true;
            }
        }
    }
    void requireBreaks(int count) { wantedBreaks_ = std::max(wantedBreaks_, count); pendingSpace_ = false; }
    void hardBreak()
    {
        flushBreaks();
        out_ += '\n';
        pendingSpace_ = false;
    }
    void tab()
    {
        flushBreaks();
        out_ += '\t';
        pendingSpace_ = false;
    }
    std::string finish()
    {
        while (!out_.empty() && (out_.back() == '\n' || out_.back() == ' ' || out_.back() == '\t')) out_.pop_back();
        return out_;
    }

private:
    void flushBreaks()
    {
        if (!out_.empty()) {
            int present = 0;
            for (auto it = out_.rbegin(); it != out_.rend() && *it == '\n'; ++it) ++present;
            for (int i = present; i < wantedBreaks_; ++i) out_ += '\n';
        }
        wantedBreaks_ = 0;
    }

    std::string out_;
    int wantedBreaks_ = 0;
    bool pendingSpace_ = false;
};

void walk(xmlNode* node, TextCollector& out, bool preformatted, int depth)
{
    // Deeper nesting than any real page has is read as its text only, to bound the recursion.
    constexpr int kMaxDepth = 256;
    for (; node; node = node->next) {
        if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
            if (node->content) out.text(reinterpret_cast<const char*>(node->content), preformatted);
            continue;
        }
        if (node->type != XML_ELEMENT_NODE || !node->name) continue;
        const char* name = reinterpret_cast<const char*>(node->name);
        if (isOneOf(name, {"script", "style", "head", "title", "noscript", "template", "select"})) continue;
        if (std::strcmp(name, "br") == 0) {
            out.hardBreak();
            continue;
        }
        bool paragraph = isOneOf(name, {"p", "h1", "h2", "h3", "h4", "h5", "h6"});
        bool block = paragraph || isOneOf(name, {"div", "li", "ul", "ol", "dl", "dt", "dd", "tr", "table", "blockquote",
                                                 "pre", "hr", "address", "section", "article", "header", "footer",
                                                 "nav", "aside", "form", "fieldset", "center", "caption"});
        bool cell = isOneOf(name, {"td", "th"});
        if (cell && node->prev) out.tab();
        if (block) out.requireBreaks(paragraph ? 2 : 1);
        if (depth < kMaxDepth)
            walk(node->children, out, preformatted || std::strcmp(name, "pre") == 0, depth + 1);
        if (block) out.requireBreaks(paragraph ? 2 : 1);
    }
}

}  // namespace

std::u16string htmlToText(std::u16string_view html)
{
    std::string utf8 = ty::wideToUtf8(html);
    if (utf8.empty()) return {};
    htmlDocPtr document = htmlReadMemory(utf8.data(), static_cast<int>(std::min<size_t>(utf8.size(), INT32_MAX)),
                                         nullptr, "UTF-8",
                                         HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                                             HTML_PARSE_NONET | HTML_PARSE_COMPACT);
    if (!document) return {};
    TextCollector out;
    if (xmlNode* root = xmlDocGetRootElement(document)) walk(root, out, false, 0);
    xmlFreeDoc(document);
    return ty::utf8ToWide(out.finish());
}

}  // namespace platform
