#include "tablebase/probe.h"

#include "board/bitboard.h"
#include "tablebase/decoder.h"
#include "tablebase/position_index.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"
#include "tablebase/table_file.h"

#include <algorithm>

namespace brindlemoth {

namespace {

// By WDL value - WDL_LOSS: the value map to use, and the flag that says that values are plies.
constexpr int wdl_to_map[5] = {1, 3, 0, 2, 0};
constexpr int ply_flags[5] = {DTZ_LOSS_PLIES, 0, 0, 0, DTZ_WIN_PLIES};

constexpr int NO_VALUE = WDL_LOSS - 1;  // less than every WDL value
constexpr int NO_MOVE_YET = 0x7FFFFFFF; // more than every distance

constexpr int TURN_BOARD = 0x38; // XOR mask that turns a square upside down

int fail(int& success) {
    success = PROBE_FAILED;
    return 0;
}

// Rejects boards that no game reaches but that have the material key of a table: the key does not
// count the kings, and the index has no room for pawns on the first and last rank. The other men
// are those of the signature if the keys are equal.
bool fits_tables(const ProbeBoard& board) {
    const Bitboard white_king = board.kings & board.white;
    const Bitboard black_king = board.kings & board.black;
    return white_king != 0 && !more_than_one(white_king) && black_king != 0 &&
           !more_than_one(black_king) && (board.pawns & (RANK_1 | RANK_8)) == 0;
}

// The place of a board in a table.
struct TablePlace {
    const SideEncoding* encoding;
    int file_position;
    int squares[MAX_TABLE_MEN]; // of the men, in the order of the encoding
};

// Finds the place of a board. `flip` means that the colours of the board are exchanged in the
// table, `side` is the stored side that applies. Returns PROBE_GOOD, PROBE_OTHER_SIDE or
// PROBE_FAILED.
int find_place(TablePlace& place, const ProbeBoard& board, const TableEntry& entry, TableKind kind,
               bool flip, int side) {
    const SideEncoding* const first = syzygy_first_encoding(entry, kind);
    place.file_position = 0;
    int collected = 0;
    int mask = 0;
    if (entry.has_pawns != 0) {
        // The leading pawns come first in every encoding of the table.
        mask = flip ? TURN_BOARD : 0;
        collected =
            syzygy_collect_squares(board, *first, 0, entry.lead_pawns, flip, mask, place.squares);
        place.file_position = syzygy_pick_lead_pawn(place.squares, entry.lead_pawns);
    }
    if (kind == KIND_DTZ && entry.symmetric == 0 &&
        (entry.dtz_flags[place.file_position] & DTZ_SIDE) != side)
        return PROBE_OTHER_SIDE;
    place.encoding = first + place.file_position;
    if (kind == KIND_WDL)
        place.encoding += side * PAWN_FILE_POSITIONS;
    if (place.encoding->decoder == nullptr)
        return PROBE_FAILED;
    syzygy_collect_squares(board, *place.encoding, collected, entry.men, flip, mask, place.squares);
    return PROBE_GOOD;
}

// Returns the distance that a DTZ record means for a position whose WDL value is `wdl`.
int dtz_from_record(const TableEntry& entry, const std::uint8_t* record, int file_position, int wdl,
                    int& success) {
    const int flags = entry.dtz_flags[file_position];
    int value = static_cast<int>(symbol_left(record));
    if ((flags & DTZ_MAPPED) != 0) {
        const std::uint8_t* const maps = entry.dtz_map;
        const bool wide = (flags & DTZ_WIDE_MAPS) != 0;
        const auto map_entry = [maps, wide](std::uint32_t i) {
            return static_cast<int>(wide ? load_le16(maps + 2 * i) : maps[i]);
        };
        const int map = wdl_to_map[wdl - WDL_LOSS];
        const std::uint32_t offset = entry.dtz_map_offsets[file_position][map];
        // The length of a map is stored before its first entry.
        if (value >= map_entry(offset - 1))
            return fail(success);
        value = map_entry(offset + static_cast<std::uint32_t>(value));
    }
    return (flags & ply_flags[wdl - WDL_LOSS]) != 0 ? value : 2 * value;
}

bool is_en_passant(const ProbeBoard& board, ProbeMove move) {
    return board.ep_square != 0 && probe_move_to(move) == board.ep_square &&
           board_moved_type(board, move) == PROBE_PAWN;
}

bool is_capture_move(const ProbeBoard& board, ProbeMove move) {
    return ((board.white | board.black) & square_bit(probe_move_to(move))) != 0;
}

bool has_legal_move_besides_en_passant(const ProbeBoard& board) {
    ProbeMove list[MAX_PROBE_MOVES];
    const ProbeMove* const end = board_moves(board, list);
    for (const ProbeMove* move = list; move != end; ++move) {
        ProbeBoard next;
        if (!is_en_passant(board, *move) && board_play(next, board, *move))
            return true;
    }
    return false;
}

} // namespace

int syzygy_probe_table(const ProbeBoard& board, int wdl, int& success, TableKind kind) {
    const Key key = board_material_key(board, false);
    if (kind == KIND_WDL && key == 0)
        return WDL_DRAW; // bare kings
    TableHashSlot& slot = table_slot(key);
    if (slot.entry == nullptr || slot.failed != 0 || !fits_tables(board))
        return fail(success);
    TableEntry& entry = *slot.entry;
    if (kind == KIND_DTZ && entry.has_dtz == 0)
        return fail(success);

    const bool exchanged = key != entry.key;
    if (entry.ready[kind] == 0) {
        char name[SIGNATURE_ROOM];
        board_material_name(board, name, exchanged);
        if (!syzygy_map_table(entry, name, kind)) {
            slot.failed = 1;
            return fail(success);
        }
        entry.ready[kind] = 1;
    }

    const bool symmetric = entry.symmetric != 0;
    const bool white_to_move = board.white_to_move != 0;
    const bool flip = symmetric ? !white_to_move : exchanged;
    const int side = !symmetric && white_to_move == flip ? 1 : 0;

    TablePlace place;
    const int found = find_place(place, board, entry, kind, flip, side);
    if (found != PROBE_GOOD) {
        success = found;
        return 0;
    }
    const std::uint64_t index = syzygy_position_index(place.squares, *place.encoding, entry);
    if (index == NO_INDEX)
        return fail(success);
    const std::uint8_t* const record = syzygy_decode(*place.encoding->decoder, index);
    if (record == nullptr)
        return fail(success);
    if (kind == KIND_DTZ)
        return dtz_from_record(entry, record, place.file_position, wdl, success);
    const int value = record[0] + WDL_LOSS;
    return value <= WDL_WIN ? value : fail(success);
}

// Searches captures for the WDL value within (alpha, beta). Sets `success` to PROBE_FAILED on
// failure.
static int syzygy_capture_search(const ProbeBoard& board, int alpha, int beta, int& success) {
    ProbeMove list[MAX_PROBE_CAPTURES];
    const ProbeMove* const end = board_captures(board, list);
    for (const ProbeMove* move = list; move != end; ++move) {
        ProbeBoard next;
        if (!board_play(next, board, *move))
            continue;
        const int value = -syzygy_capture_search(next, -beta, -alpha, success);
        if (success == PROBE_FAILED)
            return 0;
        if (value >= beta && value > alpha)
            return value;
        alpha = std::max(alpha, value);
    }
    const int table_value = syzygy_probe_table(board, 0, success, KIND_WDL);
    return success == PROBE_FAILED ? 0 : std::max(alpha, table_value);
}

int syzygy_wdl(const ProbeBoard& board, int& success) {
    success = PROBE_GOOD;
    int best_capture = NO_VALUE;
    int best_ep = NO_VALUE;

    ProbeMove list[MAX_PROBE_CAPTURES];
    const ProbeMove* const end = board_captures(board, list);
    for (const ProbeMove* move = list; move != end; ++move) {
        ProbeBoard next;
        if (!board_play(next, board, *move))
            continue;
        const int value = -syzygy_capture_search(next, WDL_LOSS, -best_capture, success);
        if (success == PROBE_FAILED)
            return 0;
        if (value <= best_capture)
            continue;
        if (value == WDL_WIN) {
            success = PROBE_GOOD_BY_CAPTURE;
            return WDL_WIN;
        }
        if (is_en_passant(board, *move))
            best_ep = std::max(best_ep, value);
        else
            best_capture = value;
    }

    const int table_value = syzygy_probe_table(board, 0, success, KIND_WDL);
    if (success == PROBE_FAILED)
        return 0;

    // The table assumes that there is no en-passant capture, so its value does not count if that
    // capture is better, or if it is the only legal move of a position that is stored as stalemate.
    const int best = std::max(best_capture, best_ep);
    if (best_ep > NO_VALUE) {
        const bool best_of_all = best_ep > best_capture && best_ep > table_value;
        if (best_of_all || (best < table_value && table_value == WDL_DRAW &&
                            !has_legal_move_besides_en_passant(board) && !board_in_check(board))) {
            success = PROBE_GOOD_BY_CAPTURE;
            return best_ep;
        }
    }
    // The table may hold any value up to that of the best capture.
    if (best >= table_value) {
        success = best > WDL_DRAW ? PROBE_GOOD_BY_CAPTURE : PROBE_GOOD;
        return best;
    }
    return table_value;
}

// Returns the distance by a search of one ply, for a file that stores the other side to move. It
// looks only at moves that are not zeroing moves; the caller has dealt with those.
static int dtz_by_moves(const ProbeBoard& board, int wdl, const ProbeMove* list,
                        const ProbeMove* end, int& success) {
    int best = wdl > 0 ? NO_MOVE_YET : wdl_to_dtz[wdl - WDL_LOSS];
    for (const ProbeMove* move = list; move != end; ++move) {
        ProbeBoard next;
        if (is_capture_move(board, *move) || board_moved_type(board, *move) == PROBE_PAWN ||
            !board_play(next, board, *move))
            continue;
        const int value = -syzygy_dtz(next, success);
        if (success == PROBE_FAILED)
            return 0;
        if (value == 1 && board_is_mate(next))
            best = 1;
        else if (wdl > 0 && value > 0)
            best = std::min(best, value + 1);
        else if (wdl < 0)
            best = std::min(best, value - 1);
    }
    return best;
}

// Whether a pawn move that is not a capture keeps the win of value `wdl`. Requires the legal moves.
static bool wins_by_pawn_move(const ProbeBoard& board, int wdl, const ProbeMove* list,
                              const ProbeMove* end, int& success) {
    for (const ProbeMove* move = list; move != end; ++move) {
        if (board_moved_type(board, *move) != PROBE_PAWN || is_capture_move(board, *move) ||
            is_en_passant(board, *move))
            continue;
        ProbeBoard next;
        board_play(next, board, *move);
        const int value = -syzygy_wdl(next, success);
        if (success == PROBE_FAILED)
            return false;
        if (value == wdl)
            return true;
    }
    return false;
}

int syzygy_dtz(const ProbeBoard& board, int& success) {
    const int wdl = syzygy_wdl(board, success);
    if (success == PROBE_FAILED || wdl == WDL_DRAW)
        return 0;
    const int zeroing_distance = wdl_to_dtz[wdl - WDL_LOSS];
    if (success == PROBE_GOOD_BY_CAPTURE)
        return zeroing_distance;

    ProbeMove list[MAX_PROBE_MOVES];
    const ProbeMove* end = list;
    if (wdl > 0) {
        end = board_legal_moves(board, list);
        const bool pawn_move_wins = wins_by_pawn_move(board, wdl, list, end, success);
        if (success == PROBE_FAILED)
            return 0;
        if (pawn_move_wins)
            return zeroing_distance;
    }

    const int distance = syzygy_probe_table(board, wdl, success, KIND_DTZ);
    if (success == PROBE_FAILED)
        return 0;
    if (success == PROBE_OTHER_SIDE) {
        if (wdl < 0)
            end = board_moves(board, list);
        return dtz_by_moves(board, wdl, list, end, success);
    }
    return wdl > 0 ? zeroing_distance + distance : zeroing_distance - distance;
}

} // namespace brindlemoth
