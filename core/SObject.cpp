#include "kfl/SObject.h"

namespace kfl {

SObject::SObject() = default;

SObject::~SObject() = default;

}  // namespace kfl
