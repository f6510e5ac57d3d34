#include "eval/survey.h"

#include "board/attacks.h"
#include "eval/geometry.h"

namespace brindlemoth {

namespace {

// Mobility by the number of squares reached in the mobility area. No piece reaches more squares
// than its table has entries for.
constexpr Score KNIGHT_MOBILITY[9] = {S(-62, -79), S(-53, -57), S(-12, -31), S(-3, -17), S(3, 7),
                                      S(12, 13),   S(21, 16),   S(28, 21),   S(37, 25)};
constexpr Score BISHOP_MOBILITY[14] = {S(-47, -59), S(-20, -25), S(14, -8), S(29, 12), S(39, 21),
                                       S(53, 40),   S(53, 56),   S(60, 58), S(62, 65), S(69, 72),
                                       S(78, 78),   S(83, 87),   S(91, 88), S(96, 98)};
constexpr Score ROOK_MOBILITY[15] = {S(-60, -82), S(-24, -15), S(0, 17),   S(3, 43),   S(4, 72),
                                     S(14, 100),  S(20, 102),  S(30, 122), S(41, 133), S(41, 139),
                                     S(41, 153),  S(45, 160),  S(57, 165), S(58, 170), S(67, 175)};
constexpr Score QUEEN_MOBILITY[28] = {
    S(-29, -18), S(-16, -5), S(-8, 8), S(-8, 13), S(-7, 16), S(-7, 23), S(-4, 20),
    S(0, 21),    S(2, 21),   S(4, 28), S(6, 25),  S(6, 28),  S(7, 25),  S(7, 28),
    S(7, 28),    S(7, 28),   S(7, 28), S(7, 28),  S(7, 28),  S(7, 28),  S(7, 28),
    S(7, 28),    S(7, 28),   S(7, 28), S(7, 28),  S(7, 28),  S(7, 28),  S(7, 28)};

constexpr Score MINOR_ATTACKS_ROOK = S(45, 20);
constexpr Score MINOR_ATTACKS_QUEEN = S(50, 25);

// What a piece that bears on the enemy king's zone weighs.
constexpr int MINOR_ZONE_UNITS = 2;
constexpr int ROOK_ZONE_UNITS = 3;
constexpr int QUEEN_ZONE_UNITS = 5;

template <int us> void survey_pawns(const Position& position, Survey& survey) {
    const Bitboard pawns = position.pieces[us][PAWN];
    survey.pawn_reach[us] = pawn_attack_set(pawns, us);
    survey.pawn_span[us] = fill_forward<us>(survey.pawn_reach[us]);
    survey.pawn_files[us] = fill_files(pawns);
}

// Needs the pawn sets of both colours.
template <int us> void survey_pieces(const Position& position, Survey& survey) {
    constexpr int them = us ^ 1;
    const Bitboard* const own = position.pieces[us];
    const Bitboard* const enemy = position.pieces[them];
    const Bitboard occupancy = position.all_pieces;
    const Bitboard area = ~(own[KING] | own[PAWN] | survey.pawn_reach[them]);
    const Bitboard zone = enemy[KING] != 0 ? king_attacks[lowest_square(enemy[KING])] : 0;

    Score mobility{};
    Score threats{};
    int units = 0;

    const auto add_minor_threats = [&](Bitboard reach) {
        threats += MINOR_ATTACKS_ROOK * static_cast<int>((reach & enemy[ROOK]) != 0);
        threats += MINOR_ATTACKS_QUEEN * static_cast<int>((reach & enemy[QUEEN]) != 0);
    };
    const auto zone_units = [zone](Bitboard reach, int weight) {
        return (reach & zone) != 0 ? weight : 0;
    };

    survey.knight_reach[us] = 0;
    for (Bitboard rest = own[KNIGHT]; rest != 0;) {
        const Bitboard reach = knight_attacks[pop_lowest(rest)];
        survey.knight_reach[us] |= reach;
        mobility += KNIGHT_MOBILITY[popcount(reach & area)];
        units += zone_units(reach, MINOR_ZONE_UNITS);
        add_minor_threats(reach);
    }

    survey.bishop_reach[us] = 0;
    for (Bitboard rest = own[BISHOP]; rest != 0;) {
        const Bitboard reach = bishop_attacks(pop_lowest(rest), occupancy);
        survey.bishop_reach[us] |= reach;
        mobility += BISHOP_MOBILITY[popcount(reach & area)];
        units += zone_units(reach, MINOR_ZONE_UNITS);
        add_minor_threats(reach);
    }

    survey.rook_reach[us] = 0;
    for (Bitboard rest = own[ROOK]; rest != 0;) {
        const Bitboard reach = rook_attacks(pop_lowest(rest), occupancy);
        survey.rook_reach[us] |= reach;
        mobility += ROOK_MOBILITY[popcount(reach & area)];
        units += zone_units(reach, ROOK_ZONE_UNITS);
    }

    survey.first_queen_reach[us] = 0;
    for (Bitboard rest = own[QUEEN]; rest != 0;) {
        const bool first = rest == own[QUEEN];
        const Bitboard reach = queen_attacks(pop_lowest(rest), occupancy);
        if (first)
            survey.first_queen_reach[us] = reach;
        mobility += QUEEN_MOBILITY[popcount(reach & area)];
        units += zone_units(reach, QUEEN_ZONE_UNITS);
    }

    survey.mobility[us] = mobility;
    survey.minor_threats[us] = threats;
    survey.king_zone_units[us] = units;
}

} // namespace

Survey survey_board(const Position& position) {
    Survey survey;
    survey_pawns<WHITE>(position, survey);
    survey_pawns<BLACK>(position, survey);
    survey_pieces<WHITE>(position, survey);
    survey_pieces<BLACK>(position, survey);
    return survey;
}

} // namespace brindlemoth
