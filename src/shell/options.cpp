#include "shell/options.h"

#include "book/book.h"
#include "eval/evaluate.h"
#include "search/root.h"
#include "search/transposition.h"
#include "shell/text.h"
#include "tablebase/syzygy.h"

#include <algorithm>
#include <cstring>

namespace brindlemoth {

// The setters get the text right behind the word "value".

namespace {

void set_hash(const char* value) {
    tt_resize(std::clamp(read_number(value), 1, 2048));
}

void set_multipv(const char* value) {
    multipv_count = std::clamp(read_number(value), 1, 256);
}

void set_own_book(const char* value) {
    own_book = begins_with(skip_blanks(value), "true");
}

// A book that can be read switches itself on, any other path switches the book off.
void set_book_file(const char* value) {
    book_load(skip_blanks(value));
}

void set_style(const char* value) {
    eval_style = begins_with(skip_blanks(value), "Linear") ? 1 : 0;
    init_eval_tables();
}

// No value, or the announced default, leaves the tables in force that there are.
void set_syzygy_path(const char* value) {
    const char* const path = skip_blanks(value);
    if (*path == '\0' || begins_with(path, "<empty>"))
        return;
    syzygy_init(path);
    syzygy_probe_limit = static_cast<std::int32_t>(syzygy_max_men);
}

struct Option {
    const char* name;
    void (*set)(const char* value);
};

// Threads is announced, but there is only the one: nothing to set.
constexpr Option OPTIONS[] = {
    {"Hash", set_hash},          {"MultiPV", set_multipv}, {"OwnBook", set_own_book},
    {"BookFile", set_book_file}, {"Style", set_style},     {"SyzygyPath", set_syzygy_path},
};

} // namespace

void cmd_setoption(const char* line) {
    const char* const name_word = std::strstr(line, "name");
    const char* const value_word = std::strstr(line, "value");
    if (name_word == nullptr || value_word == nullptr)
        return;
    const char* const name = skip_blanks(name_word + std::strlen("name"));
    const char* const value = value_word + std::strlen("value");
    for (const Option& option : OPTIONS) {
        if (begins_with(name, option.name)) {
            option.set(value);
            return;
        }
    }
}

} // namespace brindlemoth
