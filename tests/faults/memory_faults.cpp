// Buffers and pools.
#include <gtest/gtest.h>

#include "kfl/AString.h"
#include "kfl/Buffer.h"
#include "kfl/LocalHeap.h"
#include "tests/faults/steps.h"

namespace {

using kfl_test::Attempt;
using kfl_test::exhaust;
using kfl_test::exhaustMaking;
using kfl_test::exhaustSteps;
using kfl_test::Steps;

unsigned char bytes[] = "0123456789";

std::string stateOf(Buffer& buffer) {
    return std::string(reinterpret_cast<const char*>(buffer.bytes()), buffer.Size()) + '/' +
           std::to_string(buffer.MaxSize()) + '/' + std::to_string(buffer.readPosition());
}

TEST(MemoryFaults, Buffer) {
    exhaustSteps(
        "buffer: grown by all its ways",
        Steps<Buffer>{[] {
                          auto buffer = std::make_unique<Buffer>(4, 3);
                          buffer->Write(bytes, 4);
                          return buffer;
                      },
                      {[](Buffer& b) { b.Write(bytes, 5); },
                       [](Buffer& b) { b.OneLocationWrite(bytes, 5); }, [](Buffer& b) { b += b; }},
                      stateOf});
    exhaustMaking("buffer: made, copied, made a string", [] {
        Buffer buffer(10, 0);
        buffer.Write(bytes, 10);
        Buffer copy(buffer);
        const kfl::AString text(&copy);
        EXPECT_STREQ(text.c_str(), "0123456789");
        EXPECT_TRUE(buffer == copy);
    });
    exhaust("buffer: moved to another, appended to a string", [](Attempt& attempt) {
        Buffer from(10, 0);
        Buffer to(2, 8);
        kfl::AString text("x", 1);
        from.Write(bytes, 10);
        attempt([&] { from.ReadWrite(to, from, 10); });
        if (attempt.threw()) {
            EXPECT_EQ(from.unread(), 10U);
            EXPECT_EQ(to.Size(), 0U);
            from.ReadWrite(to, from, 10);
        }
        EXPECT_EQ(to.Size(), 10U);
        text.append(&to);
        EXPECT_STREQ(text.c_str(), "x0123456789");
    });
    exhaust("buffer: appended to a string", [](Attempt& attempt) {
        Buffer from(10, 0);
        kfl::AString text("x", 1);
        from.Write(bytes, 10);
        attempt([&] { text.append(&from); });
        if (attempt.threw()) {
            EXPECT_STREQ(text.c_str(), "x");
            EXPECT_EQ(from.unread(), 10U);
            text.append(&from);
        }
        EXPECT_STREQ(text.c_str(), "x0123456789");
    });
}

// Kept on purpose: the old block goes before the new one is asked for.
TEST(MemoryFaults, AssignmentEmptiesABufferThatGetsNothing) {
    exhaust("buffer: assigned", [](Attempt& attempt) {
        Buffer from(10, 7);
        Buffer to(4, 3);
        from.Write(bytes, 10);
        to.Write(bytes, 4);
        attempt([&] { to = from; });
        if (attempt.threw()) {
            EXPECT_EQ(to.Size(), 0U);
            EXPECT_EQ(to.MaxSize(), 0U);
            EXPECT_EQ(to.growthIncrement(), 7U);
            to = from;
        }
        EXPECT_TRUE(to == from);
    });
}

TEST(MemoryFaults, LocalHeap) {
    exhaust("pool: preallocated", [](Attempt& attempt) {
        std::unique_ptr<LocalHeap> heap;
        alignas(LocalHeap) char place[sizeof(LocalHeap)];
        attempt([&] { heap.reset(new (place) LocalHeap(4, 16, LocalHeap::Preallocate)); });
        EXPECT_FALSE(attempt.threw());
        void* const block = heap->allocateBlock(16);
        EXPECT_NE(block, nullptr) << "the first block makes the pool, if there is none";
        EXPECT_EQ(heap->inUse(), 1U);
        heap->deallocateBlock(block, 16);
        heap.release()->~LocalHeap();
    });
    exhaust("pool: one that is not linked, a block of another size", [](Attempt& attempt) {
        LocalHeap heap(4, 16, LocalHeap::GrowOnDemand);
        void* pool = nullptr;
        void* foreign = nullptr;
        attempt([&] {
            pool = heap.createPool();
            foreign = heap.allocateBlock(17);
        });
        if (!attempt.threw()) {
            EXPECT_EQ(pool == nullptr, attempt.failed("malloc"));
        }
        EXPECT_EQ(heap.inUse(), 0U);
        free(pool);
        delete[] static_cast<char*>(foreign);
    });
}

}  // namespace
