// Arrays by index, a stack, and the block of elements beneath them.
#include <cstdio>

#include "kfl/Container.h"
#include "kfl/VoidPtrArray.h"
#include "kfl/VoidPtrStack.h"

int main() {
    int first = 1, second = 2;
    kfl::VoidPtrArray slots(4);
    slots.add(&first);
    slots[6] = &second;  // grows to exactly 7 slots
    std::printf("%u slots, second in slot %d, slot 99 is %s\n", slots.size(),
                slots.indexOfSame(&second), slots.idAt(99) ? "set" : "empty");

    kfl::VoidPtrStack stack(2);
    stack.push(&first);
    stack.push(&second);
    const int top = *static_cast<int*>(stack.pop());
    std::printf("popped %d, %d left\n", top, stack.size());

    // Raw elements of any size.
    struct Sample {
        int time;
        int level;
    };
    kfl::Container samples(0, sizeof(Sample));
    for (int i = 0; i < 3; ++i) {
        Sample sample = {i, 10 * i};
        samples.atPut(static_cast<unsigned int>(i), reinterpret_cast<char*>(&sample));
    }
    Sample last = {};
    samples.atGet(2, reinterpret_cast<char*>(&last));
    std::printf("%u samples, the last one %d\n", samples.size(), last.level);
    return 0;
}
