// OSThread as an already compiled host sees it: fields at offsets of a live object.
#include <errno.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "kfl/OSThread.h"

namespace {

using kfl::OSThread;

constexpr std::size_t alignUp(std::size_t offset, std::size_t alignment) {
    return (offset + alignment - 1) / alignment * alignment;
}

constexpr std::size_t mutexOffset = 0;
constexpr std::size_t conditionOffset = alignUp(sizeof(pthread_mutex_t), alignof(pthread_cond_t));
constexpr std::size_t idOffset = alignUp(conditionOffset + sizeof(pthread_cond_t), alignof(int));

static_assert(!std::is_polymorphic<OSThread>::value, "no virtual functions");
static_assert(!std::is_copy_constructible<OSThread>::value, "not to be copied");
static_assert(!std::is_copy_assignable<OSThread>::value, "not to be assigned");
static_assert(std::is_standard_layout<OSThread>::value, "fields in the order of the header");

// The storage of an object, filled so that what nobody sets is seen.
class OSThreadLayoutTest : public testing::Test {
  protected:
    OSThreadLayoutTest() { std::memset(storage_, 0x5a, sizeof storage_); }

    OSThread* make() { return new (storage_) OSThread; }
    template <class Field>
    Field* at(std::size_t offset) {
        return static_cast<Field*>(static_cast<void*>(storage_ + offset));
    }

    alignas(OSThread) unsigned char storage_[sizeof(OSThread)];
};

void nothing(void*) {}

TEST_F(OSThreadLayoutTest, EndsWithTheId) {
    EXPECT_EQ(sizeof(OSThread), alignUp(idOffset + sizeof(int), std::max(alignof(pthread_mutex_t),
                                                                         alignof(pthread_cond_t))));
}

TEST_F(OSThreadLayoutTest, BeginsWithTheMutex) {
    OSThread* const thread = make();
    auto* const mutex = at<pthread_mutex_t>(mutexOffset);
    EXPECT_EQ(pthread_mutex_trylock(mutex), 0);
    EXPECT_EQ(pthread_mutex_unlock(mutex), 0);
    EXPECT_EQ(thread->threadHasStarted(), 0);
    EXPECT_EQ(pthread_mutex_trylock(mutex), EBUSY);
    EXPECT_EQ(thread->threadIsStopping(), 0);
    EXPECT_EQ(pthread_mutex_trylock(mutex), 0);
    EXPECT_EQ(pthread_mutex_unlock(mutex), 0);
    thread->~OSThread();
}

struct Waiting {
    OSThread* thread;
    bool requested;
};

void waitOnce(void* argument) {
    auto& waiting = *static_cast<Waiting*>(argument);
    waiting.thread->threadHasStarted();
    // Whoever signals is not in time for the first wait, perhaps.
    waiting.requested = waiting.thread->isRequestedToStop(990000000);
    waiting.thread->threadIsStopping();
}

TEST_F(OSThreadLayoutTest, HasTheConditionNext) {
    OSThread* const thread = make();
    Waiting waiting = {thread, false};
    const int id = thread->create(910, waitOnce, &waiting, 0);
    auto* const mutex = at<pthread_mutex_t>(mutexOffset);
    for (bool requested = false; !requested;) {
        pthread_mutex_lock(mutex);
        pthread_cond_signal(at<pthread_cond_t>(conditionOffset));
        requested = waiting.requested;
        pthread_mutex_unlock(mutex);
    }
    EXPECT_EQ(kfl::osJoinThread(id), 0);
    thread->~OSThread();
}

TEST_F(OSThreadLayoutTest, SetsTheIdInCreateOnly) {
    OSThread* const thread = make();
    int id = 0;
    std::memcpy(&id, storage_ + idOffset, sizeof id);
    EXPECT_EQ(id, 0x5a5a5a5a);
    const int created = thread->create(910, nothing, nullptr, 0);
    std::memcpy(&id, storage_ + idOffset, sizeof id);
    EXPECT_EQ(id, created);
    EXPECT_EQ(thread->destroy(), 0);
    EXPECT_EQ(thread->create(910, nullptr, nullptr, 0), -1);
    std::memcpy(&id, storage_ + idOffset, sizeof id);
    EXPECT_EQ(id, -1);
    thread->~OSThread();
}

}  // namespace
