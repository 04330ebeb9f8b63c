// The constructors and destructors of the base classes, to be inlined into those of their heirs.
// Protectable.cpp and SObject.cpp define what is exported; nothing is emitted for these here.
#ifndef KFL_CORE_BASES_H
#define KFL_CORE_BASES_H

#include "kfl/Protectable.h"
#include "kfl/SObject.h"

// clang takes an inline destructor for a reason to emit the virtual table once more.
#ifndef __clang__

[[gnu::gnu_inline]] inline Protectable::Protectable() : referenceCount_(0) {}
[[gnu::gnu_inline]] inline Protectable::Protectable(const Protectable& /*other*/)
    : referenceCount_(0) {}
[[gnu::gnu_inline]] inline Protectable::~Protectable() {}

namespace kfl {

[[gnu::gnu_inline]] inline SObject::SObject() {}
[[gnu::gnu_inline]] inline SObject::~SObject() {}

}  // namespace kfl

#endif

#endif
