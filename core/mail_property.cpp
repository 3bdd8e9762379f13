#include "core/mail_property.h"

#include <algorithm>
#include <cstring>

#include "core/context.h"
#include "core/types.h"
#include "foundation/text.h"
#include "foundation/utf.h"
#include "foundation/time_picture.h"

namespace mcl {

namespace {

// Reads up to sizeof(T) bytes of a value; the three zero bytes after every value make short
// values read as zero-extended, and a value of size 0 reads as 0.
template <class T>
T readNumber(const uint8_t* bytes, uint64_t size)
{
    T number{};
    if (bytes) std::memcpy(&number, bytes, static_cast<size_t>(std::min<uint64_t>(sizeof(T), size + 3)));
    return number;
}

std::u16string hexText(const uint8_t* bytes, uint64_t size)
{
    static const char16_t digits[] = u"0123456789ABCDEF";
    std::u16string text(static_cast<size_t>(size) * 2, u'0');
    for (uint64_t i = 0; i < size; ++i) {
        text[2 * i] = digits[bytes[i] >> 4];
        text[2 * i + 1] = digits[bytes[i] & 15];
    }
    return text;
}

std::u16string trimNuls(std::u16string text)
{
    size_t first = text.find_first_not_of(u'\0');
    if (first == std::u16string::npos) return {};
    size_t last = text.find_last_not_of(u'\0');
    return text.substr(first, last - first + 1);
}

}  // namespace

MailProperty::MailProperty(MailProperties* table, uint32_t tag, uint32_t id, uint32_t parentId,
                           std::u16string name)
    : BaseObject(u"MailProperty", table), tag_(tag), id_(id), parentId_(parentId), name_(std::move(name))
{
}

void MailProperty::setValue(const void* bytes, uint64_t size)
{
    value_.reset();
    auto block = std::make_unique<uint8_t[]>(static_cast<size_t>(size) + 3);  // zeroed
    if (bytes && size) std::memcpy(block.get(), bytes, static_cast<size_t>(size));
    value_ = std::move(block);
    size_ = size;
}

void MailProperty::setValue(std::u16string_view text)
{
    std::u16string terminated(text);
    setValue(terminated.c_str(), (terminated.size() + 1) * 2);
}

void MailProperty::setTag(uint32_t tag)
{
    if (auto* table = dynamic_cast<MailProperties*>(getParent()))
        table->retag(this, tag);
    else
        tag_ = tag;
}

uint16_t MailProperty::valueU16() const { return readNumber<uint16_t>(bytes(), size_); }
uint32_t MailProperty::valueU32() const { return readNumber<uint32_t>(bytes(), size_); }
uint64_t MailProperty::valueU64() const { return readNumber<uint64_t>(bytes(), size_); }

std::u16string MailProperty::toString() const
{
    const uint8_t* data = bytes();
    if (!data) return {};
    std::u16string text;
    switch (propType(tag_)) {
    case PT_SHORT:
    case PT_BOOLEAN: text = ty::utf8ToWide(std::to_string(valueU16())); break;
    case PT_LONG: text = ty::utf8ToWide(std::to_string(valueU32())); break;
    case PT_STRING8: {
        const auto* begin = reinterpret_cast<const char*>(data);
        return ty::widenBytes(std::string(begin, strnlen(begin, static_cast<size_t>(size_))));
    }
    case PT_UNICODE: {
        size_t limit = static_cast<size_t>(size_ / 2);
        std::u16string_view chars(reinterpret_cast<const char16_t*>(data), limit);
        return std::u16string(chars.substr(0, std::min(limit, chars.find(u'\0'))));
    }
    case PT_SYSTIME: {
        ty::SystemTime time = readNumber<ty::SystemTime>(data, size_);
        text = ty::formatDate(time, Context::dateFormatOrDefault()) + u" " +
               ty::formatTime(time, Context::timeFormatOrDefault());
        break;
    }
    default: text = hexText(data, size_); break;
    }
    return trimNuls(std::move(text));
}

MailProperties::MailProperties(BaseObject* owner) : BaseObject(u"MailProperties", owner) {}

MailProperties::~MailProperties()
{
    byParent_.clear();
    byTag_.clear();
    for (MailProperty* property : all_) delete property;
}

MailProperty* MailProperties::insert(MailProperty* property)
{
    all_.push_back(property);
    byParent_.emplace(property->parentId(), property);
    byTag_.emplace(property->tag(), property);
    return property;
}

MailProperty* MailProperties::addProperty(uint32_t tag, uint32_t parentId, std::u16string name, const void* bytes,
                                          uint64_t size)
{
    auto* property = new MailProperty(this, tag, ++lastId_, parentId, std::move(name));
    property->setValue(bytes, size);
    return insert(property);
}

MailProperty* MailProperties::addProperty(uint32_t tag, uint32_t parentId, std::u16string name,
                                          std::u16string_view text)
{
    return addProperty(tag, parentId, std::move(name), text.data(), text.size() * 2);
}

MailProperty* MailProperties::addProperty(uint32_t tag, uint32_t parentId, std::u16string name)
{
    return insert(new MailProperty(this, tag, ++lastId_, parentId, std::move(name)));
}

MailProperty* MailProperties::findProperty(uint32_t tag) const
{
    auto found = byTag_.find(tag);
    if (found == byTag_.end()) {
        if (propType(tag) == PT_STRING8)
            found = byTag_.find((tag & 0xFFFF0000) | PT_UNICODE);
        else if (propType(tag) == PT_UNICODE)
            found = byTag_.find((tag & 0xFFFF0000) | PT_STRING8);
    }
    return found == byTag_.end() ? nullptr : found->second;
}

MailProperty* MailProperties::findProperty(uint32_t tag, uint32_t parentId) const
{
    std::vector<MailProperty*> out;
    collect(out, tag, parentId, false, 1, 0xFFFFFFFF);
    if (out.empty()) collect(out, tag, parentId, false, 1, 0xFFFF0000);
    return out.empty() ? nullptr : out.front();
}

MailProperty* MailProperties::findMasked(uint32_t tag, uint32_t mask, uint32_t parentId) const
{
    std::vector<MailProperty*> out;
    collect(out, tag, parentId, false, 1, mask);
    return out.empty() ? nullptr : out.front();
}

int64_t MailProperties::collect(std::vector<MailProperty*>& out, uint32_t tag, int64_t parentId, bool recursive,
                                int64_t maxCount, uint32_t mask) const
{
    if (maxCount <= 0) maxCount = static_cast<int64_t>(all_.size());
    auto matches = [&](const MailProperty* p) { return tag == 0 || (p->tag() & mask) == (tag & mask); };
    int64_t added = 0;
    if (parentId < 0) {
        for (MailProperty* property : all_) {
            if (added >= maxCount) break;
            if (!matches(property)) continue;
            out.push_back(property);
            ++added;
        }
        return added;
    }
    auto [begin, end] = byParent_.equal_range(static_cast<uint32_t>(parentId));
    for (auto it = begin; it != end; ++it) {
        if (added >= maxCount) break;
        MailProperty* property = it->second;
        if (matches(property)) {
            out.push_back(property);
            ++added;
        }
        // Rows only ever hang below earlier rows, so descending to higher ids cannot loop.
        if (recursive && added < maxCount && property->id() > parentId)
            collect(out, tag, property->id(), recursive, maxCount, mask);
    }
    return added;
}

std::u16string MailProperties::getString(uint32_t tag) const
{
    MailProperty* property = findProperty(tag);
    return property ? property->toString() : std::u16string();
}

std::u16string MailProperties::getString(uint32_t tag, uint32_t parentId) const
{
    MailProperty* property = findProperty(tag, parentId);
    return property ? property->toString() : std::u16string();
}

std::u16string MailProperties::getStringOrAny(uint32_t tag, int64_t parentId) const
{
    return parentId < 0 ? getString(tag) : getString(tag, static_cast<uint32_t>(parentId));
}

void MailProperties::retag(MailProperty* property, uint32_t tag)
{
    auto [begin, end] = byTag_.equal_range(property->tag());
    auto entry = std::find_if(begin, end, [&](const auto& e) { return e.second == property; });
    bool indexed = entry != end;  // a removed record stays out of tag lookup
    if (indexed) byTag_.erase(entry);
    property->tag_ = tag;
    if (!indexed) return;
    auto [first, last] = byTag_.equal_range(tag);
    auto later = std::find_if(first, last, [&](const auto& e) { return e.second->id() > property->id(); });
    byTag_.insert(later, {tag, property});
}

void MailProperties::removeProperty(MailProperty* property)
{
    auto it = std::find(all_.begin(), all_.end(), property);
    if (it != all_.end()) all_.erase(it);
    byTag_.erase(property->tag());
    auto [begin, end] = byParent_.equal_range(property->parentId());
    for (auto entry = begin; entry != end;) {
        if (entry->second == property)
            entry = byParent_.erase(entry);
        else
            ++entry;
    }
}

}  // namespace mcl
