#include "tvutil2/framework/sync.h"

#include "tvutil2/framework/exceptions.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// Whether another thread could have the object at once.
bool is_free(CSyncObject& object) {
    bool result = false;
    std::thread([&] {
        result = object.Lock(0) != 0;
        if (result) object.Unlock();
    }).join();
    return result;
}

TEST(Sync, ALockGivesBackAsOftenAsItLocked) {
    CMutex mutex;
    {
        CSingleLock lock(&mutex);
        EXPECT_FALSE(lock.Unlock());
        EXPECT_TRUE(lock.Lock(0));
        EXPECT_TRUE(lock.Lock(0));
        EXPECT_TRUE(lock.Unlock());
        EXPECT_TRUE(lock.IsLocked());
        EXPECT_FALSE(is_free(mutex));
        EXPECT_TRUE(lock.Unlock());
        EXPECT_FALSE(lock.IsLocked());
        EXPECT_TRUE(is_free(mutex));
        lock.Lock();
        lock.Lock();
    }
    EXPECT_TRUE(is_free(mutex));
    const CSingleLock lock(&mutex, TRUE);
    EXPECT_FALSE(is_free(mutex));
}

TEST(Sync, AStrangersUnlockChangesNothing) {
    CMutex mutex;
    CSingleLock lock(&mutex, TRUE);
    std::thread([&lock] { EXPECT_FALSE(lock.Unlock()); }).join();
    EXPECT_TRUE(lock.IsLocked());
    EXPECT_FALSE(is_free(mutex));
}

}  // namespace
