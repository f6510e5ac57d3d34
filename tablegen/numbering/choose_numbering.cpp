#include "numbering/choose_numbering.h"

#include <algorithm>
#include <cmath>

namespace brindlemoth::tablegen {

// The numberings are compared in rounds. Each round drops the worse half, and the next one takes
// more samples.
constexpr double FIRST_SAMPLES = 16;
constexpr double SAMPLES_GROWTH = 1.7;
constexpr std::uint64_t SAMPLE_LENGTH = 256; // indices

// Multiples of the golden ratio, modulo 1, spread the samples evenly however many there are.
constexpr double GOLDEN_RATIO = 0.6180339887498949;

NumberedSide choose_numbering(const Signature& signature, int file_position,
                              std::span<const Side> sides, const CountRuns& count_runs) {
    struct Candidate {
        NumberedSide numbered;
        std::size_t runs;
    };
    std::vector<Candidate> candidates;
    for (const StreamOrder& order : possible_orders(signature))
        for (const Side side : sides)
            candidates.push_back({{side, make_numbering(signature, file_position, order)}, 0});
    double place = 0; // of a sample, modulo 1
    for (double samples = FIRST_SAMPLES; candidates.size() > 1; samples *= SAMPLES_GROWTH) {
        for (int sample = 0; sample < samples; ++sample, place += GOLDEN_RATIO) {
            for (auto& [numbered, runs] : candidates) {
                const std::uint64_t positions = numbered.numbering.positions;
                const auto first = static_cast<std::uint64_t>((place - std::floor(place)) *
                                                              static_cast<double>(positions));
                runs += count_runs(numbered, first, std::min(positions, first + SAMPLE_LENGTH));
            }
        }
        std::stable_sort(candidates.begin(), candidates.end(),
                         [](const auto& a, const auto& b) { return a.runs < b.runs; });
        candidates.erase(candidates.begin() + static_cast<long>((candidates.size() + 1) / 2),
                         candidates.end());
    }
    return candidates[0].numbered;
}

} // namespace brindlemoth::tablegen
