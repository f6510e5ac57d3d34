// What several terms ask of the board, gathered in one walk over the pieces of each colour, so
// that every attack set is looked up once per evaluation. evaluate() takes one survey and hands
// it to the terms; whoever wants a single term takes one of his own.
#pragma once

#include "board/position.h"

namespace brindlemoth {

// All members are by colour.
struct Survey {
    Bitboard pawn_reach[2]; // squares that its pawns attack
    Bitboard pawn_span[2];  // ... or could attack after advancing on their files
    Bitboard pawn_files[2]; // all squares of the files with a pawn of the colour

    // Squares that its pieces attack, the own ones on them included.
    Bitboard knight_reach[2];
    Bitboard bishop_reach[2];
    Bitboard rook_reach[2];
    Bitboard first_queen_reach[2]; // of the queen on the lowest square alone

    Score mobility[2];
    Score minor_threats[2]; // of its knights and bishops on enemy rooks and queens
    int king_zone_units[2]; // the weight of its pieces that bear on the enemy king's zone
};

Survey survey_board(const Position& position);

} // namespace brindlemoth
