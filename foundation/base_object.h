#pragma once
// Base of the mail core's objects: an error keeper with a parent, children and a count.
#include <cstdint>
#include <set>
#include <string>

#include "foundation/error.h"

namespace mcl {

class BaseObject : public mul::ErrorKeeper {
public:
    // Starts with a count of one, held by whoever made the object.
    explicit BaseObject(std::u16string className, BaseObject* parent = nullptr);
    ~BaseObject() override;
    BaseObject(const BaseObject&) = delete;
    BaseObject& operator=(const BaseObject&) = delete;

    // A reference on a child keeps its ancestors alive: both walk up the parent chain.
    void addRef();
    void release();

    BaseObject* getParent() const { return parent; }
    // Moves the object under another parent (or none).
    void setParent(BaseObject* newParent);
    const std::set<BaseObject*>& getChildren() const { return children; }
    int32_t getRefCount() const { return refCount; }
    const std::u16string& getClassName() const { return className; }

    // Shares another keeper's error record, as errors move upward.
    void copyError(const mul::ErrorKeeper& from) { setError(from.getError()); }

private:
    void traceLife(const char* scopeName) const;

    BaseObject* parent;
    std::set<BaseObject*> children;
    int32_t refCount = 0;
    std::u16string className;
};

}  // namespace mcl
