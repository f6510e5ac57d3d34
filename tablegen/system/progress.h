// How much of some work is done. All pieces of the work add to one counter, from any thread.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace brindlemoth::tablegen {

// The work as a whole. It must outlive its pieces.
struct TotalProgress {
    std::function<void(double)>
        show; // takes the share that is done; called by one thread at a time
    std::atomic<double> done{0};
    std::mutex showing{};

    void add(double share) {
        done.fetch_add(share, std::memory_order_relaxed);
        const std::unique_lock<std::mutex> lock(showing, std::try_to_lock);
        if (lock)
            show(std::min(done.load(std::memory_order_relaxed), 1.0));
    }
};

// A piece of the work, for one thread at a time. What was not reported counts as done when the
// piece is destroyed.
class Progress {
public:
    Progress() = default; // of work that nobody watches
    explicit Progress(TotalProgress& whole) : total(&whole) {}
    Progress(Progress&& other) noexcept
        : total(std::exchange(other.total, nullptr)), size(other.size), done(other.done) {}
    Progress& operator=(Progress&&) = delete;
    ~Progress() { report(1); }

    // How much of this piece is done, from 0 to 1. A smaller share than before changes nothing.
    void report(double share) {
        if (total == nullptr || share <= done)
            return;
        total->add(size * (share - done));
        done = share;
    }
    // Makes a share of this piece a piece of its own.
    Progress part(double share) {
        Progress made;
        made.total = total;
        made.size = size * share;
        done += share;
        return made;
    }
    // Divides a share of this piece into equal pieces.
    std::vector<Progress> parts(std::size_t count, double share = 1) {
        std::vector<Progress> made;
        for (std::size_t i = 0; i < count; ++i)
            made.push_back(part(share / static_cast<double>(count)));
        return made;
    }

private:
    TotalProgress* total = nullptr;
    double size = 1; // of the whole work
    double done = 0; // of this piece
};

} // namespace brindlemoth::tablegen
