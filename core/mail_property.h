#pragma once
// One stored property and the flat table every reader reduces a message to.
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/types.h"
#include "foundation/base_object.h"

namespace mcl {

class MailProperties;

class MailProperty : public BaseObject {
public:
    MailProperty(MailProperties* table, uint32_t tag, uint32_t id, uint32_t parentId, std::u16string name);

    uint32_t tag() const { return tag_; }
    uint32_t id() const { return id_; }
    uint32_t parentId() const { return parentId_; }
    const std::u16string& name() const { return name_; }
    uint64_t size() const { return size_; }
    // Null when no value was stored; otherwise size() bytes followed by three zero bytes.
    const uint8_t* bytes() const { return value_.get(); }
    bool hasValue() const { return value_ != nullptr; }

    void setValue(const void* bytes, uint64_t size);
    // Stores the text with its terminator: size is twice the length, plus 2.
    void setValue(std::u16string_view text);
    // Changes the tag in place, as the late conversion of narrow text does; tag lookups follow.
    void setTag(uint32_t tag);

    // Numbers read from the value; missing bytes read as zero.
    uint16_t valueU16() const;
    uint32_t valueU32() const;
    uint64_t valueU64() const;
    // The value as text by its type (dates by the context's pictures, unknown types as hex).
    std::u16string toString() const;

private:
    friend class MailProperties;

    uint32_t tag_;
    uint32_t id_;
    uint32_t parentId_;
    std::u16string name_;
    uint64_t size_ = 0;
    std::unique_ptr<uint8_t[]> value_;
};

class MailProperties : public BaseObject {
public:
    explicit MailProperties(BaseObject* owner = nullptr);
    ~MailProperties() override;

    MailProperty* addProperty(uint32_t tag, uint32_t parentId, std::u16string name, const void* bytes,
                              uint64_t size);
    // Stores the text without a terminator: size is twice the length.
    MailProperty* addProperty(uint32_t tag, uint32_t parentId, std::u16string name, std::u16string_view text);
    MailProperty* addProperty(uint32_t tag, uint32_t parentId, std::u16string name);

    // Under any parent; the record added first wins, and narrow and wide forms stand in for each other.
    MailProperty* findProperty(uint32_t tag) const;
    // Under one row; any value type of the number is accepted when the exact tag is absent.
    MailProperty* findProperty(uint32_t tag, uint32_t parentId) const;
    MailProperty* findMasked(uint32_t tag, uint32_t mask, uint32_t parentId) const;
    // Adds matching records to `out`; a negative parentId walks the whole table, tag 0 takes
    // every tag. Returns the count this level added (nested levels are not counted).
    int64_t collect(std::vector<MailProperty*>& out, uint32_t tag, int64_t parentId, bool recursive,
                    int64_t maxCount, uint32_t mask) const;

    std::u16string getString(uint32_t tag) const;
    std::u16string getString(uint32_t tag, uint32_t parentId) const;
    // A negative parentId means any parent.
    std::u16string getStringOrAny(uint32_t tag, int64_t parentId) const;

    // Takes the record out of every lookup (all records of its tag leave tag lookup);
    // the caller owns it afterwards.
    void removeProperty(MailProperty* property);
    // Gives a record a new tag and files it under that tag, in the order records were added.
    void retag(MailProperty* property, uint32_t tag);

    size_t count() const { return all_.size(); }
    MailProperty* at(size_t index) const { return all_[index]; }
    MailProperty* last() const { return all_.empty() ? nullptr : all_.back(); }
    uint32_t lastId() const { return lastId_; }

private:
    MailProperty* insert(MailProperty* property);

    std::multimap<uint32_t, MailProperty*> byParent_;
    std::multimap<uint32_t, MailProperty*> byTag_;
    std::vector<MailProperty*> all_;
    uint32_t lastId_ = 0;
};

}  // namespace mcl
