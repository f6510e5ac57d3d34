#include "board/bitboard.h"
#include "eval/evaluate.h"
#include "eval/king_safety.h"
#include "eval/pawns.h"
#include "eval/piece_terms.h"
#include "platform/standard_output.h"

namespace brindlemoth {

namespace {

void print_halves(const char* label, int middle_game, int end_game) {
    print("%-16s  MG: %+5d  EG: %+5d\n", label, middle_game, end_game);
}

void print_score(const char* label, Score score) {
    print_halves(label, mg_value(score), eg_value(score));
}

} // namespace

void eval_trace(const Position& position) {
    print("=== Evaluation Trace ===\n");
    print("Phase: %d/%d\n", game_phase(position), MAX_GAME_PHASE);
    print_score("Material+PST", position.psq);
    print_score("Pawns", evaluate_pawns(position));
    print_score("Mobility",
                evaluate_mobility(position, WHITE) - evaluate_mobility(position, BLACK));

    // Black's halves are turned after they are read: turning the score would move the borrow.
    const Score black_rooks = evaluate_rooks(position, BLACK);
    print_score("RooksW", evaluate_rooks(position, WHITE));
    print_halves("RooksB", -mg_value(black_rooks), -eg_value(black_rooks));

    print_score("Threats", evaluate_threats(position, WHITE) - evaluate_threats(position, BLACK));

    const auto pair = [&](int colour) {
        return more_than_one(position.pieces[colour][BISHOP]) ? mg_value(BISHOP_PAIR) : 0;
    };
    print("%-16s  %+5d\n", "BishopPair", pair(WHITE) - pair(BLACK));

    const int white_danger = king_danger(position, WHITE);
    const int black_danger = king_danger(position, BLACK);
    print("%-16s  W: %d  B: %d  net: %+d\n", "KingSafety", white_danger, black_danger,
          black_danger - white_danger);
    print("---\n");
    print("Total (side-to-move): %+d cp\n", evaluate(position));
}

} // namespace brindlemoth
