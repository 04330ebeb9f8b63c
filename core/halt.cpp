#include "core/halt.h"

#include <unistd.h>

namespace kfl::detail {

void haltForever() {
    for (;;) pause();
}

}  // namespace kfl::detail
