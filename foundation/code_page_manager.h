#pragma once
// ty::CodePageManager: conversion for the callers that hold a code page number, in the
// shape of the Windows language service (IMultiLanguage2), and the table of charset aliases.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/error.h"

namespace ty {

// An equivalence table of strings: entering a pair places both strings in one class, and an
// entry with a string that is already known joins that class (two known strings of two classes
// join the classes). Strings are compared without regard to ASCII case and kept in upper case.
class AliasTable {
public:
    void add(std::string_view key, std::string_view value);
    void clear();

    bool contains(std::string_view name) const;
    // Whether both strings are known and in one class.
    bool same(std::string_view a, std::string_view b) const;
    // The class of a string, sorted, in upper case; empty for an unknown string.
    std::vector<std::string> classOf(std::string_view name) const;
    // How many strings, and how many classes.
    size_t size() const { return classIds_.size(); }
    size_t classCount() const;

private:
    static std::string normalize(std::string_view name);
    size_t classIdOf(const std::string& name) const;

    std::unordered_map<std::string, size_t> classIds_;
    std::vector<std::vector<std::string>> classes_;  // a class joined into another is left empty
};

// The process's code page manager: made on first use of instance(), never freed, not locked (the
// system is apartment-threaded). On Windows the manager holds the language service
// (IMultiLanguage2); here the conversion service is the conversion layer of
// foundation/code_page.h, and _init checks that its tables load. The manager's error keeper holds
// the one failure it records: the service could not be made ready.
class CodePageManager : public ErrorKeeper {
public:
    // Makes the conversion service ready, or says why it cannot: a test may pass its own.
    using ServiceProbe = bool (*)(std::u16string& failure);

    explicit CodePageManager(ServiceProbe probe = nullptr);
    CodePageManager(const CodePageManager&) = delete;
    CodePageManager& operator=(const CodePageManager&) = delete;

    static CodePageManager& instance();

    // Called at the start of each conversion. While the service is not ready: traces
    // "ty::CodePageManager::_init", makes it ready and fills the alias table with its 32 pairs
    // (FCHARSETn and WINDOWS-n to CPn, ISO-8859-15, SHIFT_JIS), or records the failure (kind 3,
    // code 0x80004005). Returns whether the service is ready.
    bool _init();
    bool serviceReady() const { return ready_; }

    // Bytes in a code page to wide text.
    // - Code page 0 or above: with the service ready, `out` becomes the decoded text, or empty if
    //   the code page cannot be converted (0 is the system's ANSI code page); without the service
    //   `out` is left as it was.
    // - Negative code page, the C runtime's locale (mbstowcs_s on Windows). Decision for Linux:
    //   the process locale's codeset (LC_CTYPE) through the same road as code page 0,
    //   that is systemAnsiCodePage(), so "C" and "POSIX" read as 1252 rather than failing on every
    //   byte above 0x7F. It does not depend on the service.
    void convertToUnicode(int32_t codePage, const char* bytes, size_t count, std::u16string& out);

    // Wide text to bytes. `byteLength` is the length of the wide text in bytes: byteLength / 2
    // characters are converted and the output is sized to half the given length, so at most
    // byteLength / 2 bytes come out, cut at a character boundary (a multi-byte character that
    // does not fit whole is left out). Code page 0 and above need the service, as above; a
    // negative code page is the process locale's codeset, as above. Callers that need the whole
    // text whatever its length use wideToBytes of foundation/code_page.h.
    void convertFromUnicode(int32_t codePage, const char16_t* text, size_t byteLength, std::string& out);

    const AliasTable& aliases() const { return aliases_; }

private:
    void fillAliases();

    ServiceProbe probe_;
    bool ready_ = false;
    // The Windows manager has two more small tables that _init does not touch; nothing reads
    // them, so they are left out.
    AliasTable aliases_;
};

}  // namespace ty
