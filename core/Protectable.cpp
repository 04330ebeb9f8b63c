#include "kfl/Protectable.h"

Protectable::Protectable() : referenceCount_(0) {}

Protectable::Protectable(const Protectable& /*other*/) : referenceCount_(0) {}

Protectable::~Protectable() = default;

ProtectionElement::ProtectionElement() : object_(nullptr) {}

ProtectionElement::ProtectionElement(Protectable* object) : object_(object) {
    if (object_) ++object_->referenceCount_;
}

ProtectionElement::ProtectionElement(const ProtectionElement& other)
    : ProtectionElement(other.object_) {}

ProtectionElement::~ProtectionElement() {
    if (object_ && --object_->referenceCount_ == 0) delete object_;
}

// Taking before releasing is what handles self-assignment.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment, cert-oop54-cpp)
ProtectionElement& ProtectionElement::operator=(const ProtectionElement& other) {
    return *this = other.object_;
}

ProtectionElement& ProtectionElement::operator=(Protectable* object) {
    if (object) ++object->referenceCount_;
    if (object_ && --object_->referenceCount_ == 0) delete object_;
    object_ = object;
    return *this;
}
