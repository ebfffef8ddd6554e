// The same work on several threads at once.
#pragma once

#include <functional>
#include <thread>
#include <vector>

namespace tests {

/// Runs `work(0)` to `work(count - 1)`, each on a thread of its own, to their end.
template <class Work>
void on_threads(int count, Work work) {
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) threads.emplace_back(std::ref(work), i);
    for (auto& thread : threads) thread.join();
}

}  // namespace tests
