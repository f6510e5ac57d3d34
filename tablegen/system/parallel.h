// Runs independent pieces of work on several threads; the caller's thread is one of them.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace brindlemoth::tablegen {

// Calls work(i) once for each i below `count`, in no fixed order, and returns when all are done.
// With one thread, or one piece, everything runs on the caller's thread in rising order. Where
// the system has no thread left to give, fewer do the work. What a piece throws comes out here,
// once every piece that was begun has ended; pieces not begun by then are skipped.
template <typename Work> void parallel_for(int threads, std::size_t count, const Work& work) {
    std::atomic<std::size_t> next{0};
    std::vector<std::exception_ptr> thrown(threads > 1 ? static_cast<std::size_t>(threads) : 1);
    auto run = [&](std::size_t worker) noexcept {
        try {
            for (std::size_t i = next++; i < count; i = next++)
                work(i);
        } catch (...) {
            thrown[worker] = std::current_exception();
            next = count;
        }
    };
    std::vector<std::thread> helpers;
    helpers.reserve(thrown.size());
    for (std::size_t worker = 1; worker < thrown.size() && worker < count; ++worker) {
        try {
            helpers.emplace_back(run, worker);
        } catch (const std::system_error&) {
            break;
        } catch (const std::bad_alloc&) {
            break;
        }
    }
    run(0);
    for (std::thread& helper : helpers)
        helper.join();
    for (const std::exception_ptr& exception : thrown)
        if (exception != nullptr)
            std::rethrow_exception(exception);
}

// Like parallel_for(), for many short pieces of work: a thread takes a stretch of them at a time,
// and works through it in rising order.
template <typename Work> void for_range(int threads, std::size_t count, const Work& work) {
    constexpr std::size_t MOST_STRETCHES = 64;
    constexpr std::size_t LEAST_LENGTH = 64;
    const std::size_t length =
        threads == 1 ? count : std::max(count / MOST_STRETCHES, LEAST_LENGTH);
    const auto stretch = [&](std::size_t number) {
        const std::size_t end = std::min((number + 1) * length, count);
        for (std::size_t i = number * length; i < end; ++i)
            work(i);
    };
    if (threads == 1)
        stretch(0);
    else
        parallel_for(threads, (count + length - 1) / length, stretch);
}

} // namespace brindlemoth::tablegen
