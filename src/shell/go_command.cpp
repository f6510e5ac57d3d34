#include "shell/go_command.h"

#include "book/book.h"
#include "platform/standard_output.h"
#include "search/root.h"
#include "shell/text.h"

#include <cstring>

namespace brindlemoth {

namespace {

struct LimitWord {
    const char* word;
    int SearchLimits::*field;
};

constexpr LimitWord LIMIT_WORDS[] = {
    {"wtime", &SearchLimits::wtime},         {"btime", &SearchLimits::btime},
    {"winc", &SearchLimits::winc},           {"binc", &SearchLimits::binc},
    {"movestogo", &SearchLimits::movestogo}, {"movetime", &SearchLimits::movetime},
    {"depth", &SearchLimits::depth},         {"nodes", &SearchLimits::nodes},
};

} // namespace

SearchLimits read_limits(const char* line) {
    SearchLimits limits{};
    const char* text = skip_blanks(line + std::strlen("go"));
    while (*text != '\0') {
        if (begins_with(text, "infinite"))
            limits.infinite = true;
        for (const LimitWord& limit : LIMIT_WORDS) {
            if (begins_with(text, limit.word)) {
                text += std::strlen(limit.word);
                limits.*limit.field = read_number(text);
                break;
            }
        }
        text = skip_blanks(text + std::strcspn(text, " "));
    }
    return limits;
}

void cmd_go(const char* line, Position& position) {
    const SearchLimits limits = read_limits(line);
    if (own_book && !limits.infinite) {
        if (const Move move = book_probe(position); move != MOVE_NONE) {
            print("bestmove %s\n", move_to_text(move));
            return;
        }
    }
    search_root(position, limits);
}

} // namespace brindlemoth
