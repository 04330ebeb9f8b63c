// Intrusive reference counting: the counted base and the handle that keeps its object alive.
//
//     ProtectionElement first(new kfl::AString("shared"));   // count 1
//     ProtectionElement second(first);                       // count 2, the same object
//     first = nullptr;                                       // count 1
//     // the string is deleted when `second` goes
//
// An object that no handle ever takes keeps count 0 and belongs to whoever made it. Once handles
// hold it, the last handle deletes it. Counts are plain numbers: handles to one object must not be
// made, assigned or destroyed on two threads at once.
#ifndef KFL_PROTECTABLE_H
#define KFL_PROTECTABLE_H

#include "kfl/export.h"

class ProtectionElement;

// The base of every object whose lifetime counted handles share.
class KFL_EXPORT Protectable {
  public:
    // Starts with count 0: being built is no reference.
    Protectable();
    // Kept on purpose: the count is never copied, so a copy starts unshared, with count 0.
    Protectable(const Protectable& other);
    // Does not look at the count.
    virtual ~Protectable();

    Protectable& operator=(const Protectable&) = delete;

    // The number of handles that hold this object.
    unsigned int referenceCount() const { return referenceCount_; }

  private:
    friend class ProtectionElement;
    unsigned int referenceCount_;
};

// A counted handle: holds one unit of its object's count, or nothing.
class KFL_EXPORT ProtectionElement {
  public:
    // Holds nothing.
    ProtectionElement();
    // Takes `object`, which may be null. The object must come from `new`: the last handle deletes
    // it.
    ProtectionElement(Protectable* object);
    // Takes the object of `other`, if any.
    ProtectionElement(const ProtectionElement& other);
    // Lets the object go, and deletes it when this was the last handle.
    virtual ~ProtectionElement();

    // Takes the new object before it lets the old one go, so assigning a handle to itself, or the
    // object that it holds already, is safe. The other handle is read once, at the start: it may
    // itself be destroyed by the release of the old object.
    ProtectionElement& operator=(const ProtectionElement& other);
    // The same for an object, or for null.
    ProtectionElement& operator=(Protectable* object);

    // The object held, or null.
    Protectable* get() const { return object_; }

  private:
    Protectable* object_;
};

#endif
