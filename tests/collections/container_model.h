// Containers beside plain vectors of bytes, and steps that both take together.
#ifndef KFL_TESTS_COLLECTIONS_CONTAINER_MODEL_H
#define KFL_TESTS_COLLECTIONS_CONTAINER_MODEL_H

#include <algorithm>
#include <cstddef>
#include <vector>

#include "kfl/Container.h"
#include "tests/support/choices.h"

namespace kfl_test {

// The promise, byte by byte. `bytes` is empty exactly while there is no storage, but for elements
// of no bytes.
struct ContainerModel {
    unsigned int capacity;
    unsigned int elementSize;
    std::vector<char> bytes = std::vector<char>(std::size_t{capacity} * elementSize);

    void expandTo(unsigned int n) {
        capacity = n;
        bytes.resize(std::size_t{n} * elementSize);
    }
    void expand() { expandTo(capacity + (capacity > 1 ? capacity / 2 : 10)); }
    unsigned int put(unsigned int index, const char* source, unsigned int n) {
        if (capacity < index + n) expandTo(index + n);
        for (std::size_t i = 0; i < std::size_t{n} * elementSize; ++i)
            bytes[std::size_t{index} * elementSize + i] = source[i];
        return capacity == 0 ? 0 : n;
    }
    unsigned int put(unsigned int index, const ContainerModel& source, unsigned int n) {
        if (capacity < index + source.capacity) expandTo(index + source.capacity);
        for (std::size_t i = 0; i < std::size_t{n} * elementSize; ++i)
            bytes[std::size_t{index} * elementSize + i] = source.bytes[i];
        return n;
    }
    unsigned int available(unsigned int index, unsigned int n) const {
        return std::min(n, capacity - index);
    }
    unsigned int get(unsigned int index, char* destination, unsigned int n) const {
        const unsigned int k = index < capacity ? available(index, n) : 0;
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(index < capacity ? index : 0) *
                                        static_cast<std::ptrdiff_t>(elementSize),
                    std::size_t{k} * elementSize, destination);
        return k;
    }
    unsigned int get(unsigned int index, ContainerModel& destination, unsigned int n) const {
        const unsigned int k = available(index, n);
        if (destination.capacity < k) destination.expandTo(k);
        if (capacity == 0 || destination.capacity == 0) return 0;
        for (std::size_t i = 0; i < std::size_t{k} * elementSize; ++i)
            destination.bytes[i] = bytes[std::size_t{index} * elementSize + i];
        return k;
    }
};

// A container and its model, which are always told the same.
struct ContainerPair {
    ContainerPair(unsigned int capacity, unsigned int elementSize)
        : container(capacity, elementSize), model{capacity, elementSize} {}

    bool agrees() const {
        return container.size() == model.capacity && container.capacity() == model.capacity &&
               container.elementSize() == model.elementSize &&
               (container.data() == nullptr) == (model.capacity == 0) &&
               (model.bytes.empty() ||
                std::equal(model.bytes.begin(), model.bytes.end(), container.data()));
    }

    kfl::Container container;
    ContainerModel model;
};

constexpr unsigned int mostElements = 24;

inline std::vector<char> randomBytes(Choices& random) {
    std::vector<char> bytes(std::size_t{mostElements} * 16);
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

inline void resize(Choices& random, ContainerPair& pair) {
    const unsigned int n = random.below(mostElements);
    switch (random.below(4)) {
        case 0:
            pair.container.expandTo(n);
            pair.model.expandTo(n);
            break;
        case 1:
            pair.container.expand();
            pair.model.expand();
            break;
        case 2:
            pair.container.expand(n / 4);
            pair.model.expandTo(pair.model.capacity + n / 4);
            break;
        default: pair.container.reset(); pair.model.expandTo(0);
    }
}

inline bool bytesAgree(Choices& random, ContainerPair& pair) {
    std::vector<char> source = randomBytes(random);
    const unsigned int index = random.below(mostElements);
    const unsigned int n = random.below(mostElements);
    if (random.oneIn(2))
        return pair.container.atPut(index, source.data(), n) ==
               pair.model.put(index, source.data(), n);
    std::vector<char> copied = source;
    std::vector<char> expected = source;
    return pair.container.atGet(index, copied.data(), n) ==
               pair.model.get(index, expected.data(), n) &&
           copied == expected;
}

inline bool singleElementsAgree(Choices& random, ContainerPair& pair) {
    std::vector<char> source = randomBytes(random);
    const unsigned int index = random.below(mostElements);
    if (random.oneIn(2))
        return pair.container.atPut(index, source.data()) ==
               pair.model.put(index, source.data(), 1);
    std::vector<char> expected = source;
    return pair.container.atGet(index, source.data()) ==
               pair.model.get(index, expected.data(), 1) &&
           source == expected;
}

inline bool containersAgree(Choices& random, ContainerPair& pair, ContainerPair& other) {
    if (random.oneIn(2)) {
        const unsigned int index = random.below(mostElements);
        const unsigned int n = random.below(other.model.capacity + 1);
        return pair.container.atPut(index, &other.container, n) ==
               pair.model.put(index, other.model, n);
    }
    const unsigned int index = random.below(pair.model.capacity + 1);
    const unsigned int n = random.below(mostElements);
    return pair.container.atGet(index, &other.container, n) ==
           pair.model.get(index, other.model, n);
}

// A step of one of two containers; whether its result and both containers are as the models say.
inline bool stepAgrees(Choices& random, ContainerPair& pair, ContainerPair& other) {
    bool results = true;
    switch (random.below(5)) {
        case 0: results = bytesAgree(random, pair); break;
        case 1: results = singleElementsAgree(random, pair); break;
        case 2:
        case 3: results = containersAgree(random, pair, other); break;
        default: resize(random, pair);
    }
    const bool agreed = results && pair.agrees() && other.agrees();
    // Puts of whole containers grow without end: start small again.
    if (pair.model.capacity > 4 * mostElements) pair.container.reset(), pair.model.expandTo(0);
    return agreed;
}

}  // namespace kfl_test

#endif
