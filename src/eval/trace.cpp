#include "eval/attack_info.h"
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

template <int colour>
int danger_of_any_king(const Position& position, const PawnInfo& pawns,
                       const PieceInfo& attackers) {
    return position.pieces[colour][KING] == 0 ? 0 : king_danger<colour>(position, pawns, attackers);
}

} // namespace

void eval_trace(const Position& position) {
    const PawnInfo pawns = collect_pawns(position);
    const PieceInfo white_pieces = collect_pieces<WHITE>(position, pawns);
    const PieceInfo black_pieces = collect_pieces<BLACK>(position, pawns);
    print("=== Evaluation Trace ===\n");
    print("Phase: %d/%d\n", game_phase(position), MAX_GAME_PHASE);
    print_score("Material+PST", position.psq);
    print_score("Pawns", evaluate_pawns(position));
    print_score("Mobility", white_pieces.mobility - black_pieces.mobility);

    // Black's halves are negated after they are read: negating the score would move the borrow.
    const Score black_rooks = evaluate_rooks<BLACK>(position, pawns);
    print_score("RooksW", evaluate_rooks<WHITE>(position, pawns));
    print_halves("RooksB", -mg_value(black_rooks), -eg_value(black_rooks));

    print_score("Threats", evaluate_threats<WHITE>(position, pawns, white_pieces) -
                               evaluate_threats<BLACK>(position, pawns, black_pieces));
    print("%-16s  %+5d\n", "BishopPair",
          mg_value(evaluate_bishop_pair(position, WHITE)) -
              mg_value(evaluate_bishop_pair(position, BLACK)));

    const int white_danger = danger_of_any_king<WHITE>(position, pawns, black_pieces);
    const int black_danger = danger_of_any_king<BLACK>(position, pawns, white_pieces);
    print("%-16s  W: %d  B: %d  net: %+d\n", "KingSafety", white_danger, black_danger,
          black_danger - white_danger);
    print("---\n");
    print("Total (side-to-move): %+d cp\n", evaluate(position));
}

} // namespace brindlemoth
