#include "shell/position_command.h"

#include "board/fen.h"
#include "board/make_move.h"
#include "movegen/legality.h"
#include "search/score_scale.h"
#include "shell/text.h"

#include <cstring>

namespace brindlemoth {

namespace {

// The undo stack must keep room for the moves of the search and for the legality test of a move at
// its last ply. No line of input is long enough to reach this limit.
constexpr int MAX_GAME_MOVES = MAX_UNDO - MAX_PLY - 2;

constexpr int FEN_FIELDS = 6;

constexpr int SQUARES_LENGTH = 4; // of the two squares of a move, as in "e2e4"

// Whether the text begins with the move in coordinate notation. What follows the letter of a
// promotion does not matter; any other move must end there.
bool matches(const char* text, Move move) {
    const char* const notation = move_to_text(move);
    if (std::strncmp(text, notation, SQUARES_LENGTH) != 0)
        return false;
    const char next = text[SQUARES_LENGTH];
    return is_promotion(move) ? next == notation[SQUARES_LENGTH] : next == ' ' || next == '\0';
}

void play_move(const char* token, Position& position) {
    MoveList legal;
    generate_legal(position, legal);
    for (int i = 0; i < legal.count; ++i) {
        if (matches(token, legal.moves[i])) {
            make_move(position, legal.moves[i]);
            return;
        }
    }
}

void play_moves(const char* text, Position& position) {
    text = skip_blanks(text);
    while (*text != '\0' && position.undo_count < MAX_GAME_MOVES) {
        play_move(text, position);
        text = skip_blanks(text + std::strcspn(text, " "));
    }
}

// Where the search for the word "moves" begins: at the blank after the sixth field of the FEN, or
// at the last character if the line has fewer fields.
const char* find_end_of_fen(const char* fen) {
    const char* text = fen;
    for (int blanks = 0; *text != '\0' && blanks < FEN_FIELDS; ++text)
        blanks += *text == ' ' ? 1 : 0;
    return text - 1;
}

} // namespace

void cmd_position(const char* line, Position& position) {
    const char* text = skip_blanks(line + std::strlen("position"));
    if (begins_with(text, "startpos")) {
        position_set_fen(position, starting_fen);
        text += std::strlen("startpos");
    } else if (begins_with(text, "fen")) {
        text = skip_blanks(text + std::strlen("fen"));
        position_set_fen(position, text);
        text = find_end_of_fen(text);
    } else {
        return;
    }
    if (const char* const moves = std::strstr(text, "moves"))
        play_moves(moves + std::strlen("moves"), position);
}

} // namespace brindlemoth
