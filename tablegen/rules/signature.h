// The material of an endgame: which men each side has. The first-named side is White to the
// solver and the first colour to the table files. Files and the command line use the canonical
// form, in which the side with more (then with stronger) men is named first. Tables in memory may
// be there in either form.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brindlemoth::tablegen {

// The numbers are those of the piece codes in table files.
enum Kind : std::uint8_t { NO_KIND, PAWN, KNIGHT, BISHOP, ROOK, QUEEN, KING };
enum Side : std::uint8_t { WHITE, BLACK };
constexpr std::size_t KINDS = 7; // with NO_KIND

constexpr Side opponent(Side side) {
    return side == WHITE ? BLACK : WHITE;
}

constexpr int MAX_SOLVED_MEN = 5; // what fits into memory
constexpr int MAX_FILE_MEN = 7;   // what the file format provides for

struct Signature {
    // Men by side and kind, both kings included.
    std::array<std::array<std::uint8_t, KINDS>, 2> count{};

    bool operator==(const Signature&) const = default;
};

int men_of(const Signature& signature);
int pawns_of(const Signature& signature);
Signature exchange_sides(const Signature& signature);
bool is_symmetric(const Signature& signature);

// The colour whose pawns lead: the one with fewer, but some; White if both have as many.
Side leading_colour(const Signature& signature);

// How many file positions a table has, by the file of its leading pawn: 1 without pawns, 4 with.
int file_positions(const Signature& signature);

// The text of a signature as tables are called, KRPvKR, in the given order of sides.
std::string name_of(const Signature& signature);

// The same material with the sides in canonical order.
Signature canonical(const Signature& signature);

// Reads a text such as KRPvKR: one king for each side, pieces in any order. Nothing on text that
// is no signature, names bare kings, or has more than MAX_FILE_MEN men. The result is canonical.
std::optional<Signature> parse_signature(std::string_view text);

// All canonical signatures of that many men, those without pawns first.
std::vector<Signature> all_signatures(int men);

// The canonical signatures that one capture, promotion, or both at once lead to.
std::vector<Signature> conversions(const Signature& signature);

// The wanted signatures with everything they convert into, each after what it converts into.
// Bare kings are among them: they are solved like the others, but no table stands for them.
std::vector<Signature> closure(const std::vector<Signature>& wanted);

} // namespace brindlemoth::tablegen
