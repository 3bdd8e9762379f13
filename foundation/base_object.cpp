#include "foundation/base_object.h"

#include <cstdio>

#include "foundation/log.h"

namespace mcl {

namespace {

std::string addressText(const void* address)
{
    char text[32];
    std::snprintf(text, sizeof text, "%llx",
                  static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(address)));
    return text;
}

}  // namespace

BaseObject::BaseObject(std::u16string name, BaseObject* parentObject)
    : parent(parentObject), className(std::move(name))
{
    if (parent) parent->children.insert(this);
    ++refCount;
    traceLife("mcl::BaseObject::BaseObject");
}

BaseObject::~BaseObject()
{
    traceLife("mcl::BaseObject::~BaseObject");
    for (BaseObject* child : children) child->parent = nullptr;
    children.clear();
    if (parent) parent->children.erase(this);
    clearError();
}

void BaseObject::traceLife(const char* scopeName) const
{
    if (!ty::Logger::instance().isEnabled()) return;
    ty::TraceScope trace(scopeName);
    if (parent)
        trace.debug("class: ", className, "; address: 0x", addressText(this), "; parent: ", parent->className,
                    "; parent address: 0x", addressText(parent));
    else
        trace.debug("class: ", className, "; address: 0x", addressText(this));
}

void BaseObject::addRef()
{
    for (BaseObject* object = this; object; object = object->parent) ++object->refCount;
}

void BaseObject::release()
{
    BaseObject* object = this;
    while (object) {
        int32_t count = --object->refCount;
        if (count == 0) {
            delete object;
            return;
        }
        if (count < 0) return;
        object = object->parent;
    }
}

void BaseObject::setParent(BaseObject* newParent)
{
    if (parent) parent->children.erase(this);
    parent = newParent;
    if (parent) parent->children.insert(this);
}

}  // namespace mcl
