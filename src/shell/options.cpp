#include "shell/options.h"

#include "book/book.h"
#include "eval/evaluate.h"
#include "platform/standard_output.h"
#include "search/root.h"
#include "search/transposition.h"
#include "shell/text.h"
#include "tablebase/syzygy.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace brindlemoth {

namespace {

void set_hash(int megabytes) {
    tt_resize(megabytes);
}

void set_multipv(int lines) {
    multipv_count = lines;
}

void set_own_book(const char* value) {
    own_book = begins_with(value, "true");
}

// A book that can be read turns itself on; any other path turns the book off.
void set_book_file(const char* path) {
    book_load(path);
}

void set_style(const char* value) {
    eval_style = begins_with(value, "Linear") ? 1 : 0;
    init_eval_tables();
}

// An empty value or the announced default leaves the present tables in use.
void set_syzygy_path(const char* path) {
    if (*path == '\0' || begins_with(path, "<empty>"))
        return;
    syzygy_init(path);
    syzygy_probe_limit = static_cast<std::int32_t>(syzygy_max_men);
}

// What a spin, an option whose value is a number, announces.
struct Spin {
    int initial, min, max;
};

// A spin has `spin` and set_number, every other option has `type` and set_text. An option without
// either function ignores its value.
struct Option {
    const char* name;
    Spin spin = {};
    void (*set_number)(int value) = nullptr;       // gets the value, clamped to min and max
    const char* type = nullptr;                    // the UCI type with its default and choices
    void (*set_text)(const char* value) = nullptr; // gets the rest of the line
};

// In the order in which they are announced.
constexpr Option OPTIONS[] = {
    {.name = "Hash", .spin = {DEFAULT_HASH_MEGABYTES, 1, 2048}, .set_number = set_hash},
    {.name = "Threads", .spin = {1, 1, 1}}, // the engine always runs on one thread
    {.name = "MultiPV", .spin = {1, 1, MAX_MOVES}, .set_number = set_multipv},
    {.name = "OwnBook", .type = "check default false", .set_text = set_own_book},
    {.name = "BookFile", .type = "string default champions.bin", .set_text = set_book_file},
    {.name = "Style", .type = "combo default PeSTO var PeSTO var Linear", .set_text = set_style},
    {.name = "SyzygyPath", .type = "string default <empty>", .set_text = set_syzygy_path},
};

// Writes the line that announces the option and returns its length.
int format_option(const Option& option, char* text, std::size_t size) {
    if (option.type != nullptr)
        return std::snprintf(text, size, "option name %s type %s\n", option.name, option.type);
    const Spin& spin = option.spin;
    return std::snprintf(text, size, "option name %s type spin default %d min %d max %d\n",
                         option.name, spin.initial, spin.min, spin.max);
}

// `value` is the text behind the word "value".
void set_option(const Option& option, const char* value) {
    if (option.set_number != nullptr)
        option.set_number(std::clamp(read_number(value), option.spin.min, option.spin.max));
    else if (option.set_text != nullptr)
        option.set_text(skip_blanks(value));
}

} // namespace

void cmd_uci() {
    char options[MAX_PRINT];
    std::size_t length = 0;
    for (const Option& option : OPTIONS)
        length += static_cast<std::size_t>(
            format_option(option, options + length, sizeof options - length));
    print("id name Brindlemoth\n"
          "id author You\n"
          "%suciok\n",
          options);
}

void cmd_setoption(const char* line) {
    const char* const name_word = std::strstr(line, "name");
    const char* const value_word = std::strstr(line, "value");
    if (name_word == nullptr || value_word == nullptr)
        return;
    const char* const name = skip_blanks(name_word + std::strlen("name"));
    for (const Option& option : OPTIONS) {
        if (begins_with(name, option.name)) {
            set_option(option, value_word + std::strlen("value"));
            return;
        }
    }
}

} // namespace brindlemoth
