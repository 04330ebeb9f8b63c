// The common base of everything that the object collections hold.
#ifndef KFL_SOBJECT_H
#define KFL_SOBJECT_H

#include "kfl/export.h"

namespace kfl {

// Carries nothing but a virtual destructor: collections find their items by address, and delete
// them through this class where they are asked to.
class KFL_EXPORT SObject {
  public:
    SObject();
    virtual ~SObject();
};

}  // namespace kfl

#endif
