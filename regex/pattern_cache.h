#pragma once
// Compiled patterns, shared through a small process-wide cache: patterns are made where they are used,
// and the same few come back again and again, so a repeated pattern costs no compile.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace rx {

// Immutable once made (JIT included), so any number of pattern objects and threads may share it.
struct Compiled {
    void* code = nullptr;  // the pcre2_code of the width below; null when the pattern did not compile
    bool wide = false;
    int captures = 0;
    std::ptrdiff_t errorOffset = -1;
    std::string error;

    Compiled() = default;
    Compiled(const Compiled&) = delete;
    Compiled& operator=(const Compiled&) = delete;
    ~Compiled();
};

// `options` are PCRE2 compile options. A pattern that does not compile is kept too, with its error.
template <class CharT>
std::shared_ptr<const Compiled> compiledPattern(std::basic_string_view<CharT> pattern, uint32_t options);

struct CacheStats {
    uint64_t compiles = 0;  // real compilations
    uint64_t hits = 0;      // requests served without compiling
    std::size_t entries = 0;
};
CacheStats cacheStats();
void clearCache();

}  // namespace rx
