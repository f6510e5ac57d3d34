#include "tablegen/plain_table.h"

#include "tablebase/table_support.h"

namespace brindlemoth {

std::string bytes_of(const tablegen::TableFile& file) {
    const std::vector<std::uint8_t> bytes = lay_out(file);
    return {bytes.begin(), bytes.end()};
}

tablegen::TableFile constant_table(const std::string& signature,
                                   const std::vector<std::uint16_t>& values,
                                   const tablegen::StreamOrder* order) {
    tablegen::TableFile file;
    file.signature = *tablegen::parse_signature(signature);
    const auto orders = tablegen::possible_orders(file.signature);
    tablegen::FilePosition position;
    for (const std::uint16_t value : values)
        position.streams.push_back(
            {order != nullptr ? *order : orders.front(), tablegen::compress({{value, 1}})});
    file.positions.assign(static_cast<std::size_t>(file_positions(file.signature)), position);
    return file;
}

ProbeBoard board_at(const tablegen::Walk& walk) {
    ProbeBoard board = empty_board(true);
    for (std::size_t man = 0; man < walk.numbering->men; ++man) {
        const std::uint8_t piece = walk.numbering->order.piece[man];
        put_man(board, {piece < 8 ? 1 : 0, piece % 8}, walk.squares[man]);
    }
    return board;
}

} // namespace brindlemoth
