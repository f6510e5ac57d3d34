#include "shell/position_command.h"

#include "board/make_move.h"
#include "movegen/legality.h"
#include "search/scores.h"
#include "shell/text.h"

#include <cstring>

namespace brindlemoth {

namespace {

// Room that the search, and a test of a move at its last ply, need on the undo stack. A line of
// input is too short to hold as many moves as are left.
constexpr int MAX_GAME_MOVES = MAX_UNDO - MAX_PLY - 2;

constexpr int FEN_FIELDS = 6;

// Whether the text begins with the move as it is written in coordinates.
bool matches(const char* text, Move move) {
    const char* const written = move_to_text(move);
    if (std::strncmp(text, written, 4) != 0)
        return false;
    return is_promotion(move) ? text[4] == written[4] : text[4] == ' ' || text[4] == '\0';
}

void play_token(const char* token, Position& position) {
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
        play_token(text, position);
        text = skip_blanks(text + std::strcspn(text, " "));
    }
}

// Where the word "moves" may begin: the blank behind the last field of a whole FEN, or the last
// character of a shorter one.
const char* end_of_fen(const char* fen) {
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
        text = end_of_fen(text);
    } else {
        return;
    }
    if (const char* const moves = std::strstr(text, "moves"))
        play_moves(moves + std::strlen("moves"), position);
}

} // namespace brindlemoth
