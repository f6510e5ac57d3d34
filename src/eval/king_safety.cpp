#include "eval/king_safety.h"

#include "board/attacks.h"
#include "eval/geometry.h"

#include <algorithm>
#include <array>

namespace brindlemoth {

namespace {

constexpr int MAX_UNITS = 99;

// Attack units to danger: a slow start, then ten for each unit. More units than the table has are
// worth no more than its end.
constexpr std::array<int, MAX_UNITS + 1> DANGER = [] {
    std::array<int, MAX_UNITS + 1> table = {0,  0,  1,  2,  3,  5,  7,  10, 13, 16, 20, 24,
                                            28, 33, 38, 44, 50, 56, 62, 68, 75, 83, 91, 100};
    for (std::size_t units = 24; units < table.size(); ++units) {
        table[units] = table[units - 1] + 10;
    }
    return table;
}();
static_assert(DANGER[24] == 110 && DANGER[99] == 860);

// Weights of a safe check, each paid at most once.
constexpr int QUEEN_CHECK_UNITS = 6;
constexpr int ROOK_CHECK_UNITS = 3;
constexpr int MINOR_CHECK_UNITS = 2;

// For each file at the king without a pawn of the defender.
constexpr int OPEN_FILE_DANGER = 20;
constexpr int HALF_OPEN_FILE_DANGER = 10; // with a pawn of the attacker

} // namespace

template <int colour> int king_danger(const Position& position, const Survey& survey) {
    constexpr int attacker = colour ^ 1;
    if (position.pieces[colour][KING] == 0)
        return 0;
    const int king = lowest_square(position.pieces[colour][KING]);

    int units = survey.king_zone_units[attacker];

    // A defender's piece does not make a square unsafe: the checker would capture there.
    const Bitboard safe = ~(survey.pawn_reach[colour] | position.occupied[attacker]);
    const Bitboard bishop_checks = bishop_attacks(king, position.all_pieces) & safe;
    const Bitboard rook_checks = rook_attacks(king, position.all_pieces) & safe;
    const Bitboard knight_checks = knight_attacks[king] & safe;
    if ((survey.first_queen_reach[attacker] & (bishop_checks | rook_checks)) != 0)
        units += QUEEN_CHECK_UNITS;
    if ((survey.rook_reach[attacker] & rook_checks) != 0)
        units += ROOK_CHECK_UNITS;
    if ((survey.bishop_reach[attacker] & bishop_checks) != 0)
        units += MINOR_CHECK_UNITS;
    if ((survey.knight_reach[attacker] & knight_checks) != 0)
        units += MINOR_CHECK_UNITS;

    // One square stands for each of the two or three files.
    const Bitboard own_file = file_mask(file_of(king));
    const Bitboard files = (own_file | adjacent_files_mask(file_of(king))) & RANK_1;
    const Bitboard bare_files = files & ~survey.pawn_files[colour];
    return DANGER[static_cast<std::size_t>(std::min(units, MAX_UNITS))] +
           OPEN_FILE_DANGER * popcount(bare_files & ~survey.pawn_files[attacker]) +
           HALF_OPEN_FILE_DANGER * popcount(bare_files & survey.pawn_files[attacker]);
}

template int king_danger<WHITE>(const Position& position, const Survey& survey);
template int king_danger<BLACK>(const Position& position, const Survey& survey);

int king_danger(const Position& position, int colour) {
    const Survey survey = survey_board(position);
    return colour == WHITE ? king_danger<WHITE>(position, survey)
                           : king_danger<BLACK>(position, survey);
}

} // namespace brindlemoth
