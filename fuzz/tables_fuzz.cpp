// The images of a WDL and a DTZ file, probed at positions that the input chooses. The files stand
// on the heap, where AddressSanitizer sees a read beyond their end: this program has no others.
#include "board/fen.h"
#include "platform/file_mapping.h"
#include "shell/startup.h"
#include "tablebase/syzygy.h"

#include <cstring>
#include <string>
#include <vector>

using namespace brindlemoth;

namespace {

constexpr const char* SIGNATURES[] = {"KQvK", "KPvK", "KBNvK", "KRvKR", "KNNvK", "KPPvK", "KPvKP"};
constexpr std::size_t PROBES = 8, MOST_MEN = 4;

// How an input begins; the images follow.
struct Head {
    std::uint8_t signature, wdl_length[2], squares[PROBES][MOST_MEN];
};

// WDL and DTZ; a handle is the number of its file plus one.
std::string names[2];
std::vector<std::uint8_t> images[2];

// Of the length that whole files have: 16 more than a multiple of 64.
std::vector<std::uint8_t> image(const std::uint8_t* begin, const std::uint8_t* end) {
    std::vector<std::uint8_t> bytes(begin, end);
    bytes.resize(bytes.size() / 64 * 64 + 64 + 16);
    bytes.shrink_to_fit();
    return bytes;
}

void probe(const std::string& signature, const std::uint8_t* squares, char side) {
    std::string board(64, '1');
    for (std::size_t i = 0, middle = signature.find('v'); i < signature.size(); ++i)
        if (i != middle)
            board[*squares++ % 64] = static_cast<char>(signature[i] | (i > middle ? 'a' - 'A' : 0));
    for (std::size_t rank = 7; rank > 0; --rank)
        board.insert(rank * 8, "/");
    Position position;
    position_set_fen(position, (board + ' ' + side + " - - 0 1").c_str());
    ProbeBoard probe_board;
    board_from_position(position, probe_board);
    int success;
    syzygy_wdl(probe_board, success);
    syzygy_dtz(probe_board, success);
}

} // namespace

namespace brindlemoth {

const char path_separator = '/';

FileHandle open_file(const char* name) {
    return name == names[0] ? 1 : name == names[1] ? 2 : INVALID_FILE;
}
bool file_size(FileHandle file, std::uint64_t& size) {
    size = images[file - 1].size();
    return true;
}
bool close_file(FileHandle) {
    return true;
}
MapResult map_file(FileHandle file, MappingHandle& mapping, const std::uint8_t*& view,
                   std::uint64_t& size) {
    mapping = static_cast<MappingHandle>(file);
    view = images[file - 1].data();
    size = images[file - 1].size();
    return MapResult::MAPPED;
}
bool unmap_view(const std::uint8_t*, MappingHandle) {
    return true;
}
bool close_mapping(MappingHandle) {
    return true;
}
unsigned long last_file_error() {
    return 0;
}

} // namespace brindlemoth

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    start_engine();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < sizeof(Head))
        return -1;
    Head head;
    std::memcpy(&head, data, sizeof head);
    const std::uint8_t* const body = data + sizeof head;
    const std::size_t wdl_length =
        std::min(head.wdl_length[0] + std::size_t{256} * head.wdl_length[1], size - sizeof head);
    const std::string signature = SIGNATURES[head.signature % std::size(SIGNATURES)];
    names[0] = "x/" + signature + ".rtbw";
    names[1] = "x/" + signature + ".rtbz";
    images[0] = image(body, body + wdl_length);
    images[1] = image(body + wdl_length, data + size);
    syzygy_init("x");
    for (const auto& squares : head.squares)
        for (const char side : {'w', 'b'})
            probe(signature, squares, side);
    syzygy_init("");
    return 0;
}
