// How much of some work is done, from 0 to 1, and the sharing of it among several threads.
#pragma once

#include <functional>
#include <mutex>
#include <numeric>
#include <vector>

namespace brindlemoth::tablegen {

// Called from one thread at a time.
using Progress = std::function<void(double)>;

// Work in pieces of the same size that are done side by side. It must outlive what reports to it.
struct SharedProgress {
    Progress whole;
    std::vector<double> done;
    std::mutex reporting;
};

// What one of the pieces reports to.
inline Progress progress_of_piece(SharedProgress& shared, std::size_t piece) {
    return [&shared, piece](double share) {
        const std::lock_guard<std::mutex> lock(shared.reporting);
        shared.done[piece] = share;
        if (shared.whole)
            shared.whole(std::accumulate(shared.done.begin(), shared.done.end(), 0.0) /
                         static_cast<double>(shared.done.size()));
    };
}

} // namespace brindlemoth::tablegen
