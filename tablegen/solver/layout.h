// Where the solver keeps each position of a signature: a numbering of its own, made for speed and
// unlike that of the table files. Men stand in slots: pawns first (those of the leading colour,
// then the others), the white king, the pieces, the black king. A word of 64 bits stands for all
// squares of the black king while the others stand still. A cell is the number of a position: 64
// times its word, plus the square of the black king.
//
// Like pawns count as a set, and the leading one of them folds the board: the pawns' squares choose
// a chunk of words. Without pawns the white king folds the board, to the triangle a1-d1-d4, and all
// is one chunk. Within a chunk the squares of king and pieces make the number of a word, six bits
// each, so that moving a man adds to a number. Like pieces are kept in every order, and so is a
// position that the folding leaves two images of.
#pragma once

#include "rules/geometry.h"
#include "rules/signature.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace brindlemoth::tablegen {

constexpr std::size_t MAX_SLOTS = 8;

// The square of each slot's man.
using Placement = std::array<std::uint8_t, MAX_SLOTS>;

struct Layout {
    Signature signature;
    std::size_t men = 0;
    std::size_t pawns = 0; // slots 0 to pawns - 1
    std::array<Kind, MAX_SLOTS> kind{};
    std::array<Side, MAX_SLOTS> side{};
    std::array<std::size_t, 2> king_slot{};
    std::array<int, MAX_SLOTS> shift{}; // place of a slot's square in a word's number
    std::size_t chunk_words = 0;        // words of a chunk
    // The pawns' squares, chunk by chunk. The parts of a table follow each other: its file
    // positions. Within a part the pawns that have gone furthest come first.
    std::vector<Placement> chunks;
    std::vector<std::size_t> part_start; // first chunk of each part; then the number of chunks
    // By the squares of the pawns in any order: twice the chunk, plus 1 if the board is mirrored.
    std::vector<std::uint32_t> chunk_number;
};

// Requires at most MAX_SOLVED_MEN men.
Layout make_layout(const Signature& signature);

inline std::size_t words_of(const Layout& layout) {
    return layout.chunks.size() * layout.chunk_words;
}

// The placement that a word stands for, the black king's square left out. Two men may be on one
// square, as words of no position exist too.
Placement placement_of(const Layout& layout, std::size_t word);

// The word that holds a placement, and the reflection that leads there.
struct WordPlace {
    std::size_t word;
    Reflection reflection;
};
WordPlace word_of(const Layout& layout, const Placement& placement);

// 64 times the word, plus the square of the black king there.
inline std::size_t cell_of(const Layout& layout, const Placement& placement) {
    const WordPlace place = word_of(layout, placement);
    return 64 * place.word + reflect(place.reflection, placement[layout.men - 1]);
}

// The cells of a placement by the square of the white king, whose own square in it is ignored.
std::array<std::size_t, 64> cells_by_white_king(const Layout& layout, const Placement& placement);

} // namespace brindlemoth::tablegen
