#include "foundation/error.h"

#include <cstring>

#include "foundation/utf.h"

namespace {

std::u16string joinDescription(std::u16string head, const std::u16string& source,
                               const std::u16string& text)
{
    if (!source.empty()) {
        head += source;
        head += u": ";
    }
    head += text;
    return head;
}

}  // namespace

namespace ty {

Error::Error(uint32_t code, uint32_t kind, std::u16string source, std::u16string text)
    : code_(code), kind_(kind), source_(std::move(source)), text_(std::move(text))
{
}

const std::u16string& Error::description() const
{
    if (description_.empty()) {
        const char16_t* letter = kind_ == 2 ? u"W" : kind_ == 3 ? u"E" : kind_ == 4 ? u"C" : u"?";
        char hex[16];
        std::snprintf(hex, sizeof hex, "%08X", code_);
        description_ = joinDescription(std::u16string(u"(") + letter + u":0x" + utf8ToWide(hex) + u") ",
                                       source_, text_);
    }
    return description_;
}

void ErrorKeeper::setError(std::u16string text, std::u16string source, uint32_t kind, uint32_t code)
{
    setError(Ref<Error>(new Error(code, kind, std::move(source), std::move(text))));
}

void ErrorKeeper::setSystemError(int code, std::u16string source, uint32_t kind)
{
    setError(systemErrorText(code), std::move(source), kind, static_cast<uint32_t>(code));
}

std::u16string systemErrorText(int code)
{
    // strerrordesc_np answers null for a number the system has no text for.
    const char* text = strerrordesc_np(code);
    return text ? utf8ToWide(text) : u"Unknown system error";
}

}  // namespace ty

namespace mul {

const std::u16string& ErrorRecord::getDescription() const
{
    if (description.empty()) {
        const char16_t* letter = severity == 0 ? u"W" : severity == 1 ? u"E" : severity == 2 ? u"C" : u"?";
        description = joinDescription(std::u16string(u"(") + letter + u": " +
                                          ty::utf8ToWide(std::to_string(code)) + u") ",
                                      source, text);
    }
    return description;
}

ErrorRef makeError(std::u16string text, std::u16string source, uint32_t severity, uint32_t code)
{
    auto* record = new ErrorRecord;
    record->code = code;
    record->severity = severity;
    record->source = std::move(source);
    record->text = std::move(text);
    return ErrorRef(record);
}

const ErrorRef& unknownRuntimeError()
{
    static const ErrorRef record = makeError(u"Unknown run-time error", u"", 2, E_FAIL_CODE);
    return record;
}

void ErrorKeeper::clearError()
{
    if (keepError == 0) error = nullptr;
}

void ErrorKeeper::setError(const ErrorRef& record)
{
    clearError();
    if (keepError == 0 && record) error = record;
}

void ErrorKeeper::setError(std::u16string text, std::u16string source, uint32_t severity, uint32_t code)
{
    setError(makeError(std::move(text), std::move(source), severity, code));
}

void ErrorKeeper::setSystemError(int code, std::u16string source, uint32_t severity)
{
    setError(ty::systemErrorText(code), std::move(source), severity, static_cast<uint32_t>(code));
}

}  // namespace mul
