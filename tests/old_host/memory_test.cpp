// Byte queues and block pools.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/old_host/old_kfl.h"

namespace {

unsigned char bytes[] = {'a', 'b', 'c', 'd'};

TEST(OldHost, BuffersAreQueuesOfBytes) {
    Buffer queue(3, 4);
    EXPECT_EQ(queue.increment, 4U);
    EXPECT_EQ(queue.Write(bytes, 4), 4U);
    EXPECT_EQ(queue.maxSize, 11U);
    EXPECT_EQ(queue.MaxSize(), 11U);
    EXPECT_EQ(queue.writeCount, 4U);
    unsigned char read[2];
    EXPECT_EQ(queue.Read(read, 2), 2U);
    EXPECT_EQ(queue.readIndex, 2U);
    EXPECT_EQ(queue[3], 'd');
    EXPECT_EQ(queue.data[0], 'a');
    queue.Unread(1);
    EXPECT_EQ(queue.readIndex, 1U);
    queue.Unwrite(1);
    EXPECT_EQ(queue.Size(), 3U);
    Buffer copy(queue);
    copy += queue;
    EXPECT_EQ(copy.writeCount, 6U);
    EXPECT_FALSE(copy == queue);
    copy = queue;
    EXPECT_EQ(queue.ReadWrite(copy, queue, 9), 2U);
    EXPECT_EQ(copy.OneLocationRead(read, 1), 1U);
    EXPECT_EQ(copy.OneLocationWrite(bytes, 1), 1U);
    copy.SetWriteCount(1);
    EXPECT_EQ(copy.writeCount, 1U);
    copy.Reset();
    EXPECT_EQ(copy.readIndex, 0U);
    copy.Clear();
    EXPECT_EQ(copy.writeCount, 0U);
    EXPECT_EQ(copy.count, 0U);
}

// A queue of the host's own that hides its first byte: the library must ask it for its size.
class Hiding : public Buffer {
  public:
    Hiding() : Buffer(4, 0) {}
    unsigned Size() override { return writeCount > 0 ? writeCount - 1 : 0; }
};

TEST(OldHost, TheLibraryAsksTheHostsBufferForItsSize) {
    Hiding hiding;
    Buffer plain(4, 0);
    hiding.Write(bytes, 4);
    plain.Write(bytes, 3);
    EXPECT_TRUE(plain == hiding);
    EXPECT_TRUE(hiding == plain);
}

TEST(OldHost, StringsTakeBuffers) {
    Buffer queue(4, 0);
    queue.Write(bytes, 4);
    kfl::AString text(&queue);
    EXPECT_STREQ(text.data, "abcd");
    queue.Reset();
    EXPECT_EQ(text.append(&queue), 1);
    EXPECT_STREQ(text.data, "abcdabcd");
}

TEST(OldHost, PoolsHandOutBlocks) {
    LocalHeap heap(2, 16, LocalHeap::AllocateMethod{1});
    EXPECT_EQ(heap.method, 1);
    EXPECT_EQ(heap.blocksPerPool, 2U);
    EXPECT_EQ(heap.blockSize, 16U);
    EXPECT_NE(heap.firstPool, nullptr);
    EXPECT_EQ(heap.firstPool, heap.lastPool);
    void* const first = heap.allocateBlock(16);
    void* const second = heap.allocateBlock(16);
    EXPECT_EQ(static_cast<char*>(second) - static_cast<char*>(first),
              static_cast<std::ptrdiff_t>(16 + sizeof(void*)));
    EXPECT_EQ(heap.freeList, nullptr);
    EXPECT_EQ(heap.blocksInUse, 2U);
    heap.deallocateBlock(second, 16);
    heap.deallocateBlock(first, 16);
    EXPECT_EQ(heap.blocksInUse, 0U);
    EXPECT_EQ(heap.maxBlocksInUse, 2U);
    EXPECT_NE(heap.freeList, nullptr);
}

}  // namespace
