#pragma once
// PCRE2 by code unit width, so that one template serves narrow and wide text.
#define PCRE2_CODE_UNIT_WIDTH 0
#include <pcre2.h>

#include <cstddef>
#include <cstdint>

namespace rx::pcre2 {

template <class CharT>
struct Api;

#define RX_PCRE2_API(W, CHAR, UTF)                                                                    \
    template <>                                                                                       \
    struct Api<CHAR> {                                                                                \
        using Code = pcre2_code_##W;                                                                  \
        using Data = pcre2_match_data_##W;                                                            \
        using Unit = PCRE2_UCHAR##W;                                                                  \
        static constexpr uint32_t utfOptions = UTF ? PCRE2_UTF | PCRE2_MATCH_INVALID_UTF : 0;         \
        static Code* compile(const CHAR* pattern, size_t length, uint32_t options, int* error,        \
                             size_t* offset)                                                          \
        {                                                                                             \
            pcre2_compile_context_##W* context = pcre2_compile_context_create_##W(nullptr);           \
            if (context)                                                                              \
                pcre2_set_newline_##W(context, PCRE2_NEWLINE_LF);                                     \
            Code* code = pcre2_compile_##W(reinterpret_cast<PCRE2_SPTR##W>(pattern), length,          \
                                           options | utfOptions, error, offset, context);             \
            pcre2_compile_context_free_##W(context);                                                  \
            return code;                                                                              \
        }                                                                                             \
        static int match(const Code* code, const CHAR* subject, size_t length, size_t start,         \
                         uint32_t options, Data* data)                                                \
        {                                                                                             \
            return pcre2_match_##W(code, reinterpret_cast<PCRE2_SPTR##W>(subject), length, start,    \
                                   options, data, nullptr);                                           \
        }                                                                                             \
        static constexpr auto jit = pcre2_jit_compile_##W;                                            \
        static constexpr auto info = pcre2_pattern_info_##W;                                          \
        static constexpr auto freeCode = pcre2_code_free_##W;                                         \
        static constexpr auto newData = pcre2_match_data_create_##W;                                  \
        static constexpr auto freeData = pcre2_match_data_free_##W;                                   \
        static constexpr auto ovector = pcre2_get_ovector_pointer_##W;                                \
    };

RX_PCRE2_API(8, char, false)
RX_PCRE2_API(16, char16_t, true)
#undef RX_PCRE2_API

}  // namespace rx::pcre2
