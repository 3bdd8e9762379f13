#pragma once
// A small family of writers of simple documents: paragraphs, bold and preformatted text, rules.
// The names run against the output on purpose: TextRenderer writes XHTML, and HtmlRenderer
// writes plain text.
#include <string>

namespace mul {

class IRenderer {
public:
    virtual ~IRenderer() = default;

    virtual const std::u16string& renderedText() = 0;
    virtual void bold(const std::u16string& text) = 0;
    virtual void paragraph(const std::u16string& text) = 0;
    virtual void preformatted(const std::u16string& text) = 0;
    virtual void rule() = 0;
    // The text as it stands, with a byte order mark and as UTF-16 little-endian. False for an
    // empty text, a file that can't be made, or a short write.
    virtual bool saveUtf16(const std::u16string& path);
    // The text in the system's code page. False as above.
    virtual bool saveNarrow(const std::u16string& path);

protected:
    std::u16string text_;
};

// XHTML 1.0 Strict. Text goes in as it is, markup and all.
class TextRenderer : public IRenderer {
public:
    TextRenderer();

    // Closes the document: each call adds the closing tags again, so take the text once, at the end.
    const std::u16string& renderedText() override;
    void bold(const std::u16string& text) override;
    void paragraph(const std::u16string& text) override;
    void preformatted(const std::u16string& text) override;
    void rule() override;
};

// Plain text: one line for each piece.
class HtmlRenderer : public IRenderer {
public:
    const std::u16string& renderedText() override { return text_; }
    void bold(const std::u16string& text) override;
    void paragraph(const std::u16string& text) override;
    void preformatted(const std::u16string& text) override;
    void rule() override;
};

}  // namespace mul
