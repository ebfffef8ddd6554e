#include "tvutil2/frame/lock_buffer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "tests/support/threads.h"

namespace {

std::string text_of(const CBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.Ptr()), buffer.Len()};
}

TEST(LockBuffer, HoldsACopyOfItsOwn) {
    CBuffer source(reinterpret_cast<const unsigned char*>("abc"), 3);
    CLockBuffer copy(source);
    source.Clear(0);
    EXPECT_EQ(text_of(copy), "abc");
    EXPECT_EQ(text_of(CLockBuffer(copy.Ptr(), 2)), "ab");
    EXPECT_EQ(CLockBuffer().Len(), 0U);
}

// Who appends in three steps isn't interrupted, and what is taken is whole. The lock is one that
// threads share: a record of it that changed outside its mutex would leave it locked for good.
TEST(LockBuffer, KeepsTheOthersOut) {
    CLockBuffer queue;
    std::atomic<int> open_ends = 0;
    tests::on_threads(4, [&](int thread) {
        for (int i = 0; i < 2000; ++i) {
            queue.Lock();
            if (queue.Len() > 300) queue.Consume(3);
            for (int n = 0; n < 3; ++n) queue.PutByte(static_cast<unsigned char>('a' + thread));
            if (queue.Len() % 3 != 0) ++open_ends;
            queue.Unlock();
        }
    });
    EXPECT_EQ(open_ends, 0);
    const auto text = text_of(queue);
    for (std::size_t i = 0; i < text.size(); i += 3) {
        EXPECT_EQ(text.substr(i, 3), std::string(3, text[i]));
    }
}

}  // namespace
