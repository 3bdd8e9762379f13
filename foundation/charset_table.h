#pragma once
// The charset name table: a lower-case charset name to a Windows code page number,
// and the reverse, a code page number to a preferred charset name.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace ty {

// The code page of a charset name, 0 for a name the table does not hold. The name is
// lower-cased (ASCII) before the lookup and taken as it stands otherwise: no trimming.
uint32_t codePageForCharset(std::string_view name);
// A null name is an unknown name.
uint32_t codePageForCharset(const char* name);

// A preferred charset name for a code page number, lower case, for callers that hold a number
// (PR_INTERNET_CPID) and need a name: "windows-1252" for 1252, "utf-8" for 65001, "shift_jis"
// for 932, "iso-8859-1" for 28591. Where the name table holds a name that leads back to the same
// number, that is the name given, with few exceptions that follow the usual MIME names
// ("iso-8859-1", "us-ascii", "iso-8859-8", "iso-8859-9" lead to the Windows supersets through
// the table's odd rows). Empty for a number without a name.
std::string charsetForCodePage(uint32_t codePage);

// The whole name table, filled on first use and kept to the end of the process: 271 names.
const std::unordered_map<std::string, uint32_t>& charsetTable();

}  // namespace ty
