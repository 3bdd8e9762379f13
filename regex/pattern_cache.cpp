#include "regex/pattern_cache.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <mutex>
#include <vector>

#include "regex/matchable_text.h"
#include "regex/pcre2_api.h"

namespace rx {

Compiled::~Compiled()
{
    if (wide)
        pcre2::Api<char16_t>::freeCode(static_cast<pcre2::Api<char16_t>::Code*>(code));
    else
        pcre2::Api<char>::freeCode(static_cast<pcre2::Api<char>::Code*>(code));
}

namespace {

template <class CharT>
std::shared_ptr<const Compiled> compile(std::basic_string_view<CharT> pattern, uint32_t options)
{
    using Api = pcre2::Api<CharT>;
    auto compiled = std::make_shared<Compiled>();
    compiled->wide = sizeof(CharT) == 2;
    int error = 0;
    size_t offset = 0;
    // A wide pattern built from hostile text may hold an unpaired surrogate: it then stands for U+FFFD.
    auto* code = Api::compile(matchableText(pattern, 0), pattern.size(), options, &error, &offset);
    if (!code) {
        PCRE2_UCHAR8 message[256];
        if (pcre2_get_error_message_8(error, message, sizeof message) < 0)
            std::strcpy(reinterpret_cast<char*>(message), "unknown compile error");
        compiled->error = reinterpret_cast<const char*>(message);
        compiled->errorOffset = std::ptrdiff_t(offset);
        return compiled;
    }
    compiled->code = code;
    Api::jit(code, PCRE2_JIT_COMPLETE);  // fails where JIT is unavailable; matching then interprets
    uint32_t captures = 0;
    Api::info(code, PCRE2_INFO_CAPTURECOUNT, &captures);
    compiled->captures = int(captures);
    return compiled;
}

// Least recently used out. Small enough that a linear scan beats any index.
class Cache {
public:
    template <class CharT>
    std::shared_ptr<const Compiled> get(std::basic_string_view<CharT> pattern, uint32_t options)
    {
        std::string_view key(reinterpret_cast<const char*>(pattern.data()), pattern.size() * sizeof(CharT));
        size_t hash = std::hash<std::string_view>()(key) ^ (options * 0x9E3779B97F4A7C15ull) ^ sizeof(CharT);
        std::lock_guard<std::mutex> lock(mutex_);
        ++tick_;
        for (Entry& e : entries_)
            if (e.hash == hash && e.options == options && e.width == sizeof(CharT) && e.key == key) {
                e.used = tick_;
                ++hits_;
                return e.compiled;
            }
        ++compiles_;
        Entry fresh{hash, options, sizeof(CharT), std::string(key), compile(pattern, options), tick_};
        if (entries_.size() < kCapacity)
            return entries_.emplace_back(std::move(fresh)).compiled;
        Entry& oldest = *std::min_element(entries_.begin(), entries_.end(),
                                          [](const Entry& a, const Entry& b) { return a.used < b.used; });
        oldest = std::move(fresh);
        return oldest.compiled;
    }

    CacheStats stats()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return {compiles_, hits_, entries_.size()};
    }

    void clear()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        entries_.clear();
    }

private:
    static constexpr size_t kCapacity = 64;
    struct Entry {
        size_t hash;
        uint32_t options;
        size_t width;
        std::string key;
        std::shared_ptr<const Compiled> compiled;
        uint64_t used;
    };
    std::mutex mutex_;
    std::vector<Entry> entries_;
    uint64_t tick_ = 0, compiles_ = 0, hits_ = 0;
};

Cache& cache()
{
    static Cache instance;
    return instance;
}

}  // namespace

template <class CharT>
std::shared_ptr<const Compiled> compiledPattern(std::basic_string_view<CharT> pattern, uint32_t options)
{
    return cache().get(pattern, options);
}

template std::shared_ptr<const Compiled> compiledPattern(std::string_view, uint32_t);
template std::shared_ptr<const Compiled> compiledPattern(std::u16string_view, uint32_t);

CacheStats cacheStats() { return cache().stats(); }
void clearCache() { cache().clear(); }

}  // namespace rx
