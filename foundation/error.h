#pragma once
// How a failure is recorded and passed upward: the records and the keepers that hold them.
#include <cstdint>
#include <string>

#include "foundation/ref.h"

namespace ty {

// Base of objects that are destroyed through a virtual call.
class Destroyable {
public:
    virtual ~Destroyable() = default;
    virtual void destroy() { delete this; }
};

class RefCounter : public Destroyable {
public:
    void addRef() { ++refCount_; }
    void release() { if (--refCount_ == 0) destroy(); }
    int32_t refCount() const { return refCount_; }

private:
    int32_t refCount_ = 0;
};

// The foundation's error: kinds 2 "W", 3 "E", 4 "C".
class Error : public RefCounter {
public:
    Error(uint32_t code, uint32_t kind, std::u16string source, std::u16string text);

    uint32_t code() const { return code_; }
    uint32_t kind() const { return kind_; }
    const std::u16string& source() const { return source_; }
    const std::u16string& text() const { return text_; }
    void setText(std::u16string text) { text_ = std::move(text); }
    // "(E:0x80004005) source: text", built on first request and kept.
    const std::u16string& description() const;

private:
    uint32_t code_;
    uint32_t kind_;
    std::u16string source_;
    std::u16string text_;
    mutable std::u16string description_;
};

class ErrorKeeper {
public:
    virtual ~ErrorKeeper() = default;

    void clearError() { error_ = nullptr; }
    bool hasError() const { return static_cast<bool>(error_); }
    const Ref<Error>& error() const { return error_; }
    void setError(const Ref<Error>& error) { error_ = error; }
    void setError(std::u16string text, std::u16string source, uint32_t kind, uint32_t code);
    // The system's text for an errno value.
    void setSystemError(int code, std::u16string source, uint32_t kind);

private:
    Ref<Error> error_;
};

// The system's message for an errno value, or "Unknown system error".
std::u16string systemErrorText(int code);

}  // namespace ty

namespace mul {

constexpr uint32_t E_FAIL_CODE = 0x80004005;
constexpr uint32_t E_UNEXPECTED_CODE = 0x8000FFFF;

// The mail core's error record: severities 0 "W", 1 "E", 2 "C".
struct ErrorRecord {
    uint32_t code = 0;
    uint32_t severity = 0;
    std::u16string source;
    std::u16string text;
    mutable std::u16string description;  // built on first request
    int32_t refCount = 0;

    void addRef() { ++refCount; }
    void release() { if (--refCount == 0) delete this; }
    // "(E: 2147500037) source: text"
    const std::u16string& getDescription() const;
};

using ErrorRef = ty::Ref<ErrorRecord>;

ErrorRef makeError(std::u16string text, std::u16string source, uint32_t severity, uint32_t code);

// The process-wide record "Unknown run-time error", severity 2, code 0x80004005.
const ErrorRef& unknownRuntimeError();

class ErrorKeeper {
public:
    virtual ~ErrorKeeper() = default;

    void clearError();
    bool hasError() const { return static_cast<bool>(error); }
    const ErrorRef& getError() const { return error; }
    // Shares the record; a null record only clears.
    void setError(const ErrorRef& record);
    void setError(std::u16string text, std::u16string source, uint32_t severity, uint32_t code);
    void setSystemError(int code, std::u16string source, uint32_t severity);

    ErrorRef error;
    uint8_t keepError = 0;
};

}  // namespace mul
