#include "msg/renderers.h"

#include <cstdio>
#include <memory>

#include "foundation/code_page.h"
#include "foundation/utf.h"

namespace mul {

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

FileHandle openForWriting(const std::u16string& path)
{
    return FileHandle(std::fopen(ty::wideToUtf8(path).c_str(), "wb"));
}

}  // namespace

bool IRenderer::saveUtf16(const std::u16string& path)
{
    if (text_.empty()) return false;
    FileHandle file = openForWriting(path);
    if (!file) return false;
    std::string bytes = "\xFF\xFE";
    bytes.reserve(2 + text_.size() * 2);
    for (char16_t c : text_) {
        bytes += static_cast<char>(c & 0xFF);
        bytes += static_cast<char>(c >> 8);
    }
    return std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == text_.size() * 2 + 2;
}

bool IRenderer::saveNarrow(const std::u16string& path)
{
    if (text_.empty()) return false;
    FileHandle file = openForWriting(path);
    if (!file) return false;
    std::string bytes = ty::wideToBytes(text_, ty::kCodePageAnsi);
    return std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
}

TextRenderer::TextRenderer()
{
    text_ =
        u"<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
        u"\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">"
        u"<html xmlns=\"http://www.w3.org/1999/xhtml\"><head>"
        u"<meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\" />"
        u"<title></title></head><body>";
}

const std::u16string& TextRenderer::renderedText()
{
    text_ += u"</body></html>";
    return text_;
}

void TextRenderer::bold(const std::u16string& text) { text_ += u"<b>" + text + u"</b>"; }
void TextRenderer::paragraph(const std::u16string& text) { text_ += u"<p>" + text + u"</p>"; }
void TextRenderer::preformatted(const std::u16string& text) { text_ += u"<pre>" + text + u"</pre>"; }
void TextRenderer::rule() { text_ += u"<hr/>"; }

void HtmlRenderer::bold(const std::u16string& text) { text_ += text + u"\n"; }
void HtmlRenderer::paragraph(const std::u16string& text) { text_ += text + u"\n"; }
void HtmlRenderer::preformatted(const std::u16string& text) { paragraph(text); }
void HtmlRenderer::rule() { text_ += u"\n"; }

}  // namespace mul
