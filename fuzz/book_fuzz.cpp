// A book file, probed from positions that stand for all kinds of moves. The first byte of a record
// may ask for the key of one of them.
#include "board/fen.h"
#include "book/book.h"
#include "book/polyglot_key.h"
#include "movegen/legality.h"
#include "shell/startup.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

using namespace brindlemoth;

constexpr const char* FENS[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1",
    "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3",
    "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1",
    "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1",
    "3n3k/PPP5/8/8/8/8/ppp5/3N3K w - - 0 1",
    "3n3k/PPP5/8/8/8/8/ppp5/3N3K b - - 0 1",
};

// What is known of a position before the first input.
struct Probed {
    Position position;
    MoveList legal;
    std::uint64_t key;
};
static Probed probed[std::size(FENS)];

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    start_engine();
    for (std::size_t i = 0; i < std::size(FENS); ++i) {
        position_set_fen(probed[i].position, FENS[i]);
        generate_legal(probed[i].position, probed[i].legal);
        probed[i].key = polyglot_key(probed[i].position);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t RECORD_SIZE = 16;
    std::string bytes(data, data + size);
    for (std::size_t at = 0; at + RECORD_SIZE <= size; at += RECORD_SIZE) {
        for (std::size_t i = 0; data[at] < std::size(FENS) && i < 8; ++i)
            bytes[at + i] = static_cast<char>(probed[data[at]].key >> (56 - 8 * i));
    }
    const int file = memfd_create("book", 0);
    if (write(file, bytes.data(), size) != static_cast<ssize_t>(size))
        std::abort();
    book_load(("/proc/self/fd/" + std::to_string(file)).c_str());
    close(file);
    for (auto& [position, legal, key] : probed) {
        const Move move = book_probe(position);
        if (move != MOVE_NONE && std::count(legal.moves, legal.moves + legal.count, move) == 0)
            std::abort();
    }
    return 0;
}
