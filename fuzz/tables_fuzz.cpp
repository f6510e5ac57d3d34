// The images of a WDL and a DTZ file, probed at positions that the input chooses. The files stand
// on the heap, where AddressSanitizer sees a read beyond their end: this program has no others.
#include "board/fen.h"
#include "platform/file_mapping.h"
#include "shell/startup.h"
#include "tablebase/registry.h"
#include "tablebase/syzygy.h"

#include <algorithm>
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

// WDL and DTZ, of the input's signature alone; a handle is the number of its file plus one. While
// the registry is built, both files of each signature are there, with no content.
constexpr const char* EXTENSIONS[2] = {".rtbw", ".rtbz"};
std::string present;
std::vector<std::uint8_t> images[2] = {std::vector<std::uint8_t>(16),
                                       std::vector<std::uint8_t>(16)};

// The used slots of the registry. It is built once, because a search for the files of all
// signatures takes longer than the probes of an input.
std::vector<TableHashSlot*> slots;

void register_signatures() {
    for (const char* const signature : SIGNATURES)
        present += std::string("x/") + signature + '.';
    syzygy_init("x");
    for (TableHashSlot& slot : table_hash)
        if (slot.entry != nullptr)
            slots.push_back(&slot);
}

void forget_tables() {
    for (TableHashSlot* const slot : slots) {
        syzygy_release_entry(*slot->entry);
        slot->failed = 0;
    }
}

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
    const std::string path = name;
    const std::size_t dot = path.rfind('.');
    if (present.find(path.substr(0, dot + 1)) == std::string::npos)
        return INVALID_FILE;
    const auto* const extension = std::find(EXTENSIONS, EXTENSIONS + 2, path.substr(dot));
    return extension == EXTENSIONS + 2 ? INVALID_FILE : extension - EXTENSIONS + 1;
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
    register_signatures();
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
    present = "x/" + signature + '.';
    images[0] = image(body, body + wdl_length);
    images[1] = image(body + wdl_length, data + size);
    for (const auto& squares : head.squares)
        for (const char side : {'w', 'b'})
            probe(signature, squares, side);
    forget_tables();
    return 0;
}
