// Runs independent pieces of work on several threads; the caller's thread is one of them.
#pragma once

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace brindlemoth::tablegen {

// Calls work(i) once for each i below `count`, in no fixed order, and returns when all are done.
// With one thread, or one piece, everything runs on the caller's thread in rising order.
template <typename Work> void parallel_for(int threads, std::size_t count, const Work& work) {
    std::atomic<std::size_t> next{0};
    auto run = [&] {
        for (std::size_t i = next++; i < count; i = next++)
            work(i);
    };
    std::vector<std::thread> helpers;
    for (int i = 1; i < threads && static_cast<std::size_t>(i) < count; ++i)
        helpers.emplace_back(run);
    run();
    for (std::thread& helper : helpers)
        helper.join();
}

} // namespace brindlemoth::tablegen
