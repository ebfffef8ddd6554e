#include "tvutil2/frame/lock_buffer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

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

// Who appends in three steps isn't interrupted, and what is taken is whole.
TEST(LockBuffer, KeepsTheOthersOut) {
    CLockBuffer queue;
    std::atomic<int> open_ends = 0;
    std::vector<std::thread> threads;
    for (const char mark : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back([&queue, &open_ends, mark] {
            for (int i = 0; i < 2000; ++i) {
                queue.Lock();
                if (queue.Len() > 300) queue.Consume(3);
                for (int n = 0; n < 3; ++n) queue.PutByte(static_cast<unsigned char>(mark));
                if (queue.Len() % 3 != 0) ++open_ends;
                queue.Unlock();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(open_ends, 0);
    const auto text = text_of(queue);
    for (std::size_t i = 0; i < text.size(); i += 3) {
        EXPECT_EQ(text.substr(i, 3), std::string(3, text[i]));
    }
}

}  // namespace
