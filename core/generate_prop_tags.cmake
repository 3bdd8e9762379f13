# Turns core/prop_tags.tsv into the PropTags enumeration and two sorted lookup tables.
# Run as: cmake -DINPUT=<prop_tags.tsv> -DOUTPUT=<prop_tags_gen.h> -P generate_prop_tags.cmake
cmake_minimum_required(VERSION 3.20)

if(NOT DEFINED INPUT OR NOT DEFINED OUTPUT)
  message(FATAL_ERROR "generate_prop_tags.cmake needs -DINPUT=... and -DOUTPUT=...")
endif()

file(STRINGS "${INPUT}" lines ENCODING UTF-8)

set(by_name_keys "")
set(by_tag_keys "")
set(enum_body "")
set(line_number 0)
foreach(line IN LISTS lines)
  math(EXPR line_number "${line_number} + 1")
  if(line MATCHES "^[ \t]*$" OR line MATCHES "^#")
    continue()
  endif()
  if(NOT line MATCHES "^((PR_|ptag)[A-Za-z0-9_]+)\t0x([0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f][0-9A-Fa-f])$")
    message(FATAL_ERROR "${INPUT}:${line_number}: expected 'PR_...|ptag...<TAB>0xXXXXXXXX', got '${line}'")
  endif()
  set(name "${CMAKE_MATCH_1}")
  string(TOUPPER "${CMAKE_MATCH_3}" tag)
  string(SUBSTRING "${tag}" 4 4 type)

  # Which of the names sharing a tag propTagName() returns: a PR_ name before a ptag name;
  # for wide text (0x1F, 0x101F) the _W form, otherwise the bare form; then by name.
  if(name MATCHES "^ptag")
    set(rank 3)
  elseif(type STREQUAL "001F" OR type STREQUAL "101F")
    if(name MATCHES "_W$")
      set(rank 0)
    elseif(NOT name MATCHES "_[ATO]$")
      set(rank 1)
    else()
      set(rank 2)
    endif()
  elseif(NOT name MATCHES "_[AWTO]$")
    set(rank 0)
  else()
    set(rank 2)
  endif()

  # A blank sorts below every character of a name, so "PR_X" comes before "PR_X_A" as in
  # std::string_view's ordering.
  list(APPEND by_name_keys "${name} ${tag}")
  list(APPEND by_tag_keys "${tag} ${rank} ${name}")
  string(APPEND enum_body "    ${name} = 0x${tag}u,\n")
endforeach()

list(SORT by_name_keys)
list(SORT by_tag_keys)

set(by_name_body "")
set(previous_name "")
foreach(key IN LISTS by_name_keys)
  string(REPLACE " " ";" fields "${key}")
  list(GET fields 0 name)
  list(GET fields 1 tag)
  if(name STREQUAL previous_name)
    message(FATAL_ERROR "${INPUT}: the name ${name} appears more than once")
  endif()
  set(previous_name "${name}")
  string(APPEND by_name_body "    {\"${name}\", 0x${tag}u},\n")
endforeach()

set(by_tag_body "")
foreach(key IN LISTS by_tag_keys)
  string(REPLACE " " ";" fields "${key}")
  list(GET fields 0 tag)
  list(GET fields 2 name)
  string(APPEND by_tag_body "    {0x${tag}u, \"${name}\"},\n")
endforeach()

list(LENGTH by_name_keys count)

set(content "// Generated from core/prop_tags.tsv by core/generate_prop_tags.cmake; edit the data file instead.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string_view>

// The MAPI property tag names published to hosts. Several names may carry the same tag.
enum PropTags : uint32_t {
${enum_body}};

namespace mcl::prop_tags_data {

struct NameEntry {
    std::string_view name;
    uint32_t tag;
};

struct TagEntry {
    uint32_t tag;
    std::string_view name;
};

inline constexpr std::size_t kCount = ${count};

// Sorted by name.
inline constexpr NameEntry kByName[kCount] = {
${by_name_body}};

// Sorted by tag; among the names of one tag the preferred one comes first.
inline constexpr TagEntry kByTag[kCount] = {
${by_tag_body}};

} // namespace mcl::prop_tags_data
")

# Rewrite only on change, so that a touched but unchanged data file rebuilds nothing.
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" old_content)
  if(old_content STREQUAL content)
    return()
  endif()
endif()
file(WRITE "${OUTPUT}" "${content}")
