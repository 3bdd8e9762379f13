#pragma once
// The process-wide trace log: off until a host names a file, then one line per message.
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "foundation/utf.h"

namespace ty {

enum LogLevel : uint32_t { LogDebug = 0, LogInfo = 1, LogWarning = 2, LogError = 3, LogCritical = 4 };

struct LogRecord {
    uint32_t level = LogDebug;
    std::tm time{};  // local time
    int32_t depth = 0;
    std::string scope;
    std::string text;
};

// "[dd.mm.yyyy hh:mm:ss] L <depth blanks>scope: text"; the month counts from 0.
std::string formatLogLine(const LogRecord& record);

}  // namespace ty

namespace wh {

class Writer {
public:
    virtual ~Writer() = default;
    virtual void write(const ty::LogRecord& record) = 0;
};

// Appends each line to its file, opening and closing it every time; a failed open loses the line.
class FileWriter : public Writer {
public:
    explicit FileWriter(std::string path) : path_(std::move(path)) {}
    void write(const ty::LogRecord& record) override;

private:
    std::string path_;
};

}  // namespace wh

namespace ty {

class Logger {
public:
    static Logger& instance();

    // Replaces every writer; an empty path turns logging off.
    void setLogFile(std::u16string_view path);
    void addWriter(std::unique_ptr<wh::Writer> writer);
    void disable();
    bool isEnabled() const { return disabled_ == 0; }
    int32_t& depth() { return depth_; }

    void log(uint32_t level, std::string_view scope, std::string_view text);

private:
    Logger() = default;
    uint8_t disabled_ = 1;
    int32_t depth_ = 0;
    std::vector<std::unique_ptr<wh::Writer>> writers_;
};

// Text of a trace message, built from name and value pairs.
inline void appendLogText(std::string& out, std::string_view text) { out += text; }
inline void appendLogText(std::string& out, const char* text) { out += text; }
inline void appendLogText(std::string& out, std::u16string_view text) { out += wideToUtf8(text); }
inline void appendLogText(std::string& out, const char16_t* text) { out += wideToUtf8(text); }
inline void appendLogText(std::string& out, bool value) { out += value ? '1' : '0'; }
template <class T, std::enable_if_t<std::is_arithmetic_v<T>, int> = 0>
void appendLogText(std::string& out, T value) { out += std::to_string(value); }

// A named scope on the stack: ">>>" on entry and "<<<" on exit at level 0, and one
// level of indentation for what is logged inside. Silent if logging was off at entry.
class TraceScope {
public:
    explicit TraceScope(const char* name);
    ~TraceScope();
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

    bool active() const { return active_; }

    template <class... Parts>
    void log(uint32_t level, const Parts&... parts)
    {
        if (!active_) return;
        std::string text;
        (appendLogText(text, parts), ...);
        Logger::instance().log(level, name_, text);
    }
    template <class... Parts>
    void debug(const Parts&... parts) { log(LogDebug, parts...); }

private:
    const char* name_;
    bool active_;
};

}  // namespace ty
