// A counted handle that knows the type of its object.
//
//     kfl::Ref<kfl::AString> name(new kfl::AString("eth0"));
//     name->append(".1");
//     const ProtectionElement& handle = name.element();        // for what takes any object
//
// A Ref is a ProtectionElement with a type: both kinds share objects, and the same rules hold, for
// threads too.
#ifndef KFL_CONVENIENCE_REF_H
#define KFL_CONVENIENCE_REF_H

#include "kfl/Protectable.h"

namespace kfl {

// `T` derives from Protectable, not virtually.
template <class T>
class Ref {
  public:
    // Holds nothing.
    Ref() {}
    // Takes `object`, which may be null and must come from `new`: the last handle deletes it.
    explicit Ref(T* object) : element_(object) {}
    // Takes the object of a handle to the same type, or to one derived from it.
    template <class U>
    Ref(const Ref<U>& other) {
        T* const object = other.get();
        element_ = object;
    }

    // Lets go of the object held and takes `object`, as the constructor does.
    Ref& operator=(T* object) {
        element_ = object;
        return *this;
    }

    // The object held, or null.
    T* get() const { return static_cast<T*>(element_.get()); }
    // Requires: an object is held.
    T& operator*() const { return *get(); }
    // Reaches a member. Requires: an object is held.
    T* operator->() const { return get(); }
    // Whether an object is held.
    explicit operator bool() const { return get() != nullptr; }
    // The handle itself.
    const ProtectionElement& element() const { return element_; }
    // The handles to the object, of both kinds; 0 where there is none.
    unsigned int referenceCount() const { return get() ? get()->referenceCount() : 0; }

  private:
    ProtectionElement element_;
};

// Whether both hold the same object, or nothing.
template <class T, class U>
bool operator==(const Ref<T>& a, const Ref<U>& b) {
    return a.get() == b.get();
}
// Whether they hold different objects.
template <class T, class U>
bool operator!=(const Ref<T>& a, const Ref<U>& b) {
    return a.get() != b.get();
}

}  // namespace kfl

#endif
