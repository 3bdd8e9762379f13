// ty::CodePageManager: conversion by code page number, and the charset alias table.
#include "foundation/code_page_manager.h"

#include <unicode/uclean.h>
#include <unicode/ucnv.h>
#include <unicode/utypes.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "foundation/code_page.h"
#include "foundation/log.h"
#include "foundation/utf.h"

namespace ty {

namespace {

constexpr size_t kNoClass = static_cast<size_t>(-1);

// The service is ready when ICU's data loads: a table-driven converter opens.
bool defaultServiceProbe(std::u16string& failure)
{
    UErrorCode err = U_ZERO_ERROR;
    u_init(&err);
    if (U_SUCCESS(err)) {
        UConverter* cnv = ucnv_open("ibm-5348_P100-1997", &err);
        if (cnv) ucnv_close(cnv);
    }
    if (U_SUCCESS(err)) return true;
    failure = u"Can't load the conversion tables: " + utf8ToWide(u_errorName(err));
    return false;
}

struct AliasPair {
    const char* key;
    const char* value;
};

constexpr AliasPair kAliasPairs[] = {
    {"FCHARSET222", "CP874"},   {"FCHARSET128", "CP932"},   {"FCHARSET134", "CP936"},
    {"FCHARSET129", "CP949"},   {"FCHARSET130", "CP950"},   {"FCHARSET136", "CP950"},
    {"FCHARSET238", "CP1250"},  {"FCHARSET204", "CP1251"},  {"FCHARSET0", "CP1252"},
    {"FCHARSET161", "CP1253"},  {"FCHARSET162", "CP1254"},  {"FCHARSET177", "CP1255"},
    {"FCHARSET178", "CP1256"},  {"FCHARSET186", "CP1257"},  {"FCHARSET163", "CP1258"},
    {"WINDOWS-874", "CP874"},   {"WINDOWS-932", "CP932"},   {"WINDOWS-936", "CP936"},
    {"WINDOWS-949", "CP949"},   {"WINDOWS-950", "CP950"},   {"WINDOWS-1250", "CP1250"},
    {"WINDOWS-1251", "CP1251"}, {"WINDOWS-1252", "CP1252"}, {"WINDOWS-1253", "CP1253"},
    {"WINDOWS-1254", "CP1254"}, {"WINDOWS-1255", "CP1255"}, {"WINDOWS-1256", "CP1256"},
    {"WINDOWS-1257", "CP1257"}, {"WINDOWS-1258", "CP1258"}, {"ISO-8859-15", "WINDOWS-1252"},
    {"SHIFT_JIS", "SHIFT_JIS"}, {"SHIFT_JIS", "CP932"},
};
static_assert(std::size(kAliasPairs) == 32, "the alias table starts with 32 pairs");

}  // namespace

// ---- AliasTable ---------------------------------------------------------------------------------

std::string AliasTable::normalize(std::string_view name)
{
    std::string upper(name);
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return upper;
}

size_t AliasTable::classIdOf(const std::string& name) const
{
    auto it = classIds_.find(name);
    return it == classIds_.end() ? kNoClass : it->second;
}

void AliasTable::add(std::string_view key, std::string_view value)
{
    std::string a = normalize(key);
    std::string b = normalize(value);
    size_t classA = classIdOf(a);
    size_t classB = classIdOf(b);
    if (classA == kNoClass && classB == kNoClass) {
        size_t id = classes_.size();
        classes_.emplace_back();
        classes_[id].push_back(a);
        classIds_.emplace(a, id);
        if (b != a) {
            classes_[id].push_back(b);
            classIds_.emplace(b, id);
        }
        return;
    }
    if (classA == kNoClass) {
        classes_[classB].push_back(a);
        classIds_.emplace(a, classB);
        return;
    }
    if (classB == kNoClass) {
        classes_[classA].push_back(b);
        classIds_.emplace(b, classA);
        return;
    }
    if (classA == classB) return;
    // Two known strings of two classes: the smaller class joins the larger.
    size_t into = classes_[classA].size() >= classes_[classB].size() ? classA : classB;
    size_t from = into == classA ? classB : classA;
    for (std::string& member : classes_[from]) {
        classIds_[member] = into;
        classes_[into].push_back(std::move(member));
    }
    classes_[from].clear();
}

void AliasTable::clear()
{
    classIds_.clear();
    classes_.clear();
}

bool AliasTable::contains(std::string_view name) const { return classIdOf(normalize(name)) != kNoClass; }

bool AliasTable::same(std::string_view a, std::string_view b) const
{
    size_t classA = classIdOf(normalize(a));
    return classA != kNoClass && classA == classIdOf(normalize(b));
}

std::vector<std::string> AliasTable::classOf(std::string_view name) const
{
    size_t id = classIdOf(normalize(name));
    if (id == kNoClass) return {};
    std::vector<std::string> members = classes_[id];
    std::sort(members.begin(), members.end());
    return members;
}

size_t AliasTable::classCount() const
{
    return static_cast<size_t>(
        std::count_if(classes_.begin(), classes_.end(), [](const auto& members) { return !members.empty(); }));
}

// ---- CodePageManager ----------------------------------------------------------------------------

CodePageManager::CodePageManager(ServiceProbe probe) : probe_(probe ? probe : defaultServiceProbe) {}

CodePageManager& CodePageManager::instance()
{
    static CodePageManager* manager = new CodePageManager();
    return *manager;
}

void CodePageManager::fillAliases()
{
    for (const AliasPair& pair : kAliasPairs) aliases_.add(pair.key, pair.value);
}

bool CodePageManager::_init()
{
    if (ready_) return true;
    TraceScope scope("ty::CodePageManager::_init");
    std::u16string failure;
    if (!probe_(failure)) {
        setError(failure.empty() ? std::u16string(u"Can't create the conversion service") : failure,
                 u"ty::CodePageManager::_init", 3, 0x80004005);
        return false;
    }
    clearError();
    ready_ = true;
    fillAliases();
    return true;
}

void CodePageManager::convertToUnicode(int32_t codePage, const char* bytes, size_t count, std::u16string& out)
{
    bool ready = _init();
    if (codePage < 0) {
        convertCodePageToWide(systemAnsiCodePage(), bytes, count, out);
        return;
    }
    if (!ready) return;
    convertCodePageToWide(static_cast<uint32_t>(codePage), bytes, count, out);
}

void CodePageManager::convertFromUnicode(int32_t codePage, const char16_t* text, size_t byteLength, std::string& out)
{
    bool ready = _init();
    if (codePage >= 0 && !ready) return;
    size_t units = text ? byteLength / sizeof(char16_t) : 0;
    uint32_t target = codePage < 0 ? systemAnsiCodePage() : static_cast<uint32_t>(codePage);
    out = wideToBytes(std::u16string_view(text ? text : u"", units), target, byteLength / 2);
}

}  // namespace ty
