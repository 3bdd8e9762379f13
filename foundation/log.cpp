#include "foundation/log.h"

#include <cstdio>

namespace ty {

std::string formatLogLine(const LogRecord& record)
{
    static const char letters[] = {'D', 'I', 'W', 'E', 'C'};
    char stamp[64];
    std::snprintf(stamp, sizeof stamp, "[%02d.%02d.%04d %02d:%02d:%02d] %c ", record.time.tm_mday,
                  record.time.tm_mon, record.time.tm_year + 1900, record.time.tm_hour, record.time.tm_min,
                  record.time.tm_sec, record.level < 5 ? letters[record.level] : '?');
    std::string line = stamp;
    line.append(static_cast<size_t>(record.depth > 0 ? record.depth : 0), ' ');
    line += record.scope;
    line += ": ";
    line += record.text;
    return line;
}

Logger& Logger::instance()
{
    static Logger logger;
    return logger;
}

void Logger::setLogFile(std::u16string_view path)
{
    writers_.clear();
    if (path.empty()) {
        disabled_ = 1;
        return;
    }
    addWriter(std::make_unique<wh::FileWriter>(wideToUtf8(path)));
}

void Logger::addWriter(std::unique_ptr<wh::Writer> writer)
{
    writers_.push_back(std::move(writer));
    disabled_ = 0;
}

void Logger::disable()
{
    disabled_ = 1;
}

void Logger::log(uint32_t level, std::string_view scope, std::string_view text)
{
    if (disabled_) return;
    LogRecord record;
    record.level = level;
    std::time_t now = std::time(nullptr);
    localtime_r(&now, &record.time);
    record.depth = depth_ < 0 ? 0 : depth_;
    record.scope = scope;
    record.text = text;
    for (auto& writer : writers_) writer->write(record);
}

TraceScope::TraceScope(const char* name) : name_(name), active_(Logger::instance().isEnabled())
{
    if (active_) Logger::instance().log(LogDebug, name_, ">>>");
    ++Logger::instance().depth();
}

TraceScope::~TraceScope()
{
    --Logger::instance().depth();
    if (active_) Logger::instance().log(LogDebug, name_, "<<<");
}

}  // namespace ty

namespace wh {

void FileWriter::write(const ty::LogRecord& record)
{
    std::FILE* file = std::fopen(path_.c_str(), "ab");
    if (!file) return;
    std::string line = ty::formatLogLine(record);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), file);
    std::fflush(file);
    std::fclose(file);
}

}  // namespace wh
