#pragma once
// Counted pointer for objects that keep their own count (addRef/release).
#include <utility>

namespace ty {

template <class T>
class Ref {
public:
    Ref() = default;
    Ref(std::nullptr_t) {}
    // Takes a new reference on the object.
    explicit Ref(T* object) : object_(object) { if (object_) object_->addRef(); }
    Ref(const Ref& other) : Ref(other.object_) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <class U>
    Ref(const Ref<U>& other) : Ref(other.get()) {}
    ~Ref() { reset(); }

    // Takes over a reference the caller already holds.
    static Ref adopt(T* object) { Ref r; r.object_ = object; return r; }

    Ref& operator=(const Ref& other) { Ref(other).swap(*this); return *this; }
    Ref& operator=(Ref&& other) noexcept { Ref(std::move(other)).swap(*this); return *this; }
    Ref& operator=(std::nullptr_t) { reset(); return *this; }

    void reset() { if (T* o = std::exchange(object_, nullptr)) o->release(); }
    void swap(Ref& other) noexcept { std::swap(object_, other.object_); }
    // Hands the reference to the caller.
    T* detach() { return std::exchange(object_, nullptr); }

    T* get() const { return object_; }
    T* operator->() const { return object_; }
    T& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }
    friend bool operator==(const Ref& a, const Ref& b) { return a.object_ == b.object_; }
    friend bool operator==(const Ref& a, std::nullptr_t) { return a.object_ == nullptr; }

private:
    T* object_ = nullptr;
};

}  // namespace ty
