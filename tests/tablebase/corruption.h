// Damaged tables: whatever stands in a file, a probe ends, and reads nothing outside it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace brindlemoth {

// How much damage to do to each file.
struct Damage {
    std::vector<std::uint8_t> flips; // each byte of the head is XORed with each of these in turn
    int random_changes;              // single bytes elsewhere
    std::size_t truncation_step;     // bytes; 64 for every size that a table can have
};

// The files that are damaged: all of 3 men and some of 4 men.
const std::vector<std::string>& damaged_files();

// Damages a copy of the genuine file in each of these ways, and probes it at 200 positions. The
// files stand in memory (memory_files.h).
void check_damage(const std::string& file, const Damage& damage);

} // namespace brindlemoth
