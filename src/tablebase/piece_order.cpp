#include "tablebase/position_index.h"
#include "tablebase/table_setup.h"

#include <algorithm>

namespace brindlemoth {

namespace {

constexpr int BOARD_SQUARES = 64;
constexpr int PAWN_SQUARES = 48; // ranks 2 to 7
constexpr int NO_TURN = 15;      // a turn that the set-up never reaches
constexpr int NIBBLE_BITS = 4;
constexpr int NIBBLE_MASK = 0x0F;

// The men must be those of the signature. All men of a kind must be neighbours, because their
// squares are collected together.
bool order_fits_signature(const SideEncoding& encoding, const TableSetup& setup) {
    int left[PIECE_CODES];
    std::copy(setup.counts, setup.counts + PIECE_CODES, left);
    for (int i = 0; i < setup.entry.men;) {
        const int code = encoding.piece_order[i];
        const int count = left[code];
        if (count == 0)
            return false;
        for (const int end = i + count; i < end; ++i)
            if (encoding.piece_order[i] != code)
                return false;
        left[code] = 0;
    }
    return true;
}

// The first men must be those that the index formulas expect: the leading pawns and then the other
// pawns, or the two kings, or three men of different kinds.
bool leading_men_fit(const SideEncoding& encoding, const TableSetup& setup) {
    const TableEntry& entry = setup.entry;
    const std::uint8_t* const order = encoding.piece_order;
    if (entry.has_pawns != 0) {
        if ((order[0] & PIECE_TYPE_MASK) != PROBE_PAWN ||
            setup.counts[order[0]] != entry.lead_pawns)
            return false;
        // The first encoding of the file serves to collect the leading pawns for all encodings.
        if (order[0] != setup.streams[0].encoding->piece_order[0])
            return false;
        return entry.other_pawns == 0 || (order[entry.lead_pawns] & PIECE_TYPE_MASK) == PROBE_PAWN;
    }
    if (entry.two_king_scheme != 0)
        return (order[0] & PIECE_TYPE_MASK) == PROBE_KING &&
               (order[1] & PIECE_TYPE_MASK) == PROBE_KING;
    return std::all_of(order, order + 3, [&setup](int code) { return setup.counts[code] == 1; });
}

bool has_two_pawn_groups(const TableEntry& entry) {
    return entry.has_pawns != 0 && entry.other_pawns > 0;
}

// The number of men in the first group.
int first_group_size(const TableEntry& entry) {
    if (entry.has_pawns != 0)
        return entry.lead_pawns;
    return entry.two_king_scheme != 0 ? 2 : 3;
}

std::uint64_t first_group_placements(const TableEntry& entry, int file_position) {
    if (entry.has_pawns != 0)
        return pawn_factor[entry.lead_pawns - 1][file_position];
    return entry.two_king_scheme != 0 ? TWO_KING_PLACEMENTS : THREE_MEN_PLACEMENTS;
}

// Divides the men into groups: the leading pawns or leading men, then the other pawns, then the men
// of each kind. Returns the place where the groups of the last sort start.
int set_groups(SideEncoding& encoding, const TableEntry& entry) {
    std::fill(encoding.group_size, encoding.group_size + MAX_TABLE_MEN, std::uint8_t{0});
    int grouped = first_group_size(entry);
    encoding.group_size[0] = static_cast<std::uint8_t>(grouped);
    if (has_two_pawn_groups(entry)) {
        encoding.group_size[grouped] = entry.other_pawns;
        grouped += entry.other_pawns;
    }
    const std::uint8_t* const order = encoding.piece_order;
    for (int place = grouped, end; place < entry.men; place = end) {
        end = place + 1;
        while (end < entry.men && order[end] == order[place])
            ++end;
        encoding.group_size[place] = static_cast<std::uint8_t>(end - place);
    }
    return grouped;
}

// The index is a mixed radix number with one digit for each group. The groups enter it in turns,
// the lowest digit first. The header gives the turn of the first group (`order`) and that of the
// other pawns (`order2`, or NO_TURN). The groups of one kind take the remaining turns by their
// place. Sets the weights of the digits. Returns the number of index values, or 0 if the header
// leaves out a group.
std::uint64_t set_multipliers(SideEncoding& encoding, const TableEntry& entry, int file_position,
                              int next, int order, int order2) {
    std::fill(encoding.multiplier, encoding.multiplier + MAX_TABLE_MEN, 0);
    bool first_group_placed = false;
    bool other_pawns_placed = !has_two_pawn_groups(entry);
    std::uint64_t factor = 1;
    int free_squares = BOARD_SQUARES - next;
    for (int turn = 0; next < entry.men || turn == order || turn == order2; ++turn) {
        if (turn == order) {
            encoding.multiplier[0] = factor;
            factor *= first_group_placements(entry, file_position);
            first_group_placed = true;
        } else if (turn == order2) {
            encoding.multiplier[entry.lead_pawns] = factor;
            factor *= binomial[entry.other_pawns][PAWN_SQUARES - entry.lead_pawns];
            other_pawns_placed = true;
        } else {
            const int size = encoding.group_size[next];
            encoding.multiplier[next] = factor;
            factor *= binomial[size][free_squares];
            free_squares -= size;
            next += size;
        }
    }
    return first_group_placed && other_pawns_placed ? factor : 0;
}

// Sets up the numbering of one stream from the piece header of its file position. `side` selects
// the low or high nibbles. False if the header is wrong.
bool set_up_encoding(const TableSetup& setup, StreamSetup& stream, const std::uint8_t* header,
                     int side, int file_position) {
    const TableEntry& entry = setup.entry;
    SideEncoding& encoding = *stream.encoding;
    const bool two_pawn_groups = has_two_pawn_groups(entry);
    const auto nibble = [header, side](int i) {
        return header[i] >> (NIBBLE_BITS * side) & NIBBLE_MASK;
    };
    const int order = nibble(0);
    const int order2 = two_pawn_groups ? nibble(1) : NO_TURN;
    const int first_man = two_pawn_groups ? 2 : 1;
    for (int i = 0; i < entry.men; ++i)
        encoding.piece_order[i] = static_cast<std::uint8_t>(nibble(first_man + i));
    if (!order_fits_signature(encoding, setup) || !leading_men_fit(encoding, setup))
        return false;

    const int grouped = set_groups(encoding, entry);
    stream.positions = set_multipliers(encoding, entry, file_position, grouped, order, order2);
    return stream.positions != 0;
}

} // namespace

bool read_piece_headers(TableSetup& setup, bool split) {
    const TableEntry& entry = setup.entry;
    SideEncoding* const first = syzygy_first_encoding(setup.entry, setup.kind);
    const unsigned header_bytes = entry.men + (has_two_pawn_groups(entry) ? 2U : 1U);
    for (int position = 0; position < file_positions(entry); ++position) {
        const std::uint8_t* const header = take(setup.file, header_bytes);
        if (header == nullptr)
            return false;
        for (int side = 0; side < (split ? 2 : 1); ++side) {
            StreamSetup& stream = setup.streams[setup.stream_count++];
            stream.encoding = first + position + side * PAWN_FILE_POSITIONS;
            if (!set_up_encoding(setup, stream, header, side, position))
                return false;
        }
    }
    return align(setup.file, HEADER_ALIGNMENT);
}

} // namespace brindlemoth
