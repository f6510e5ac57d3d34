#include "rules/signature.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace brindlemoth::tablegen {

static constexpr std::string_view LETTERS = " PNBRQK";

int men_of(const Signature& signature) {
    int men = 0;
    for (const auto& side : signature.count)
        for (const int count : side)
            men += count;
    return men;
}

int pawns_of(const Signature& signature) {
    return signature.count[WHITE][PAWN] + signature.count[BLACK][PAWN];
}

Signature exchange_sides(const Signature& signature) {
    return {{signature.count[BLACK], signature.count[WHITE]}};
}

bool is_symmetric(const Signature& signature) {
    return signature.count[WHITE] == signature.count[BLACK];
}

Side leading_colour(const Signature& signature) {
    const int white = signature.count[WHITE][PAWN];
    const int black = signature.count[BLACK][PAWN];
    return black > 0 && (white == 0 || black < white) ? BLACK : WHITE;
}

int file_positions(const Signature& signature) {
    return pawns_of(signature) == 0 ? 1 : 4;
}

std::string name_of(const Signature& signature) {
    std::string name;
    for (const Side side : {WHITE, BLACK}) {
        for (int kind = KING; kind >= PAWN; --kind) {
            const auto letter = LETTERS[static_cast<std::size_t>(kind)];
            name.append(signature.count[side][static_cast<std::size_t>(kind)], letter);
        }
        name += side == WHITE ? "v" : "";
    }
    return name;
}

Signature canonical(const Signature& signature) {
    // Men in all, then queens, rooks and so on: the larger list names the first side.
    auto strength = [&](Side side) {
        const auto& count = signature.count[side];
        int men = 0;
        for (const int number : count)
            men += number;
        return std::array<int, 6>{men,           count[QUEEN],  count[ROOK],
                                  count[BISHOP], count[KNIGHT], count[PAWN]};
    };
    return strength(WHITE) < strength(BLACK) ? exchange_sides(signature) : signature;
}

std::optional<Signature> parse_signature(std::string_view text) {
    Signature signature;
    Side side = WHITE;
    for (const char letter : text) {
        if (letter == 'v' && side == WHITE) {
            side = BLACK;
            continue;
        }
        const auto kind = LETTERS.find(letter);
        if (kind == std::string_view::npos || kind == NO_KIND ||
            signature.count[side][kind] == MAX_FILE_MEN)
            return std::nullopt;
        ++signature.count[side][kind];
    }
    const int men = men_of(signature);
    if (signature.count[WHITE][KING] != 1 || signature.count[BLACK][KING] != 1 || men < 3 ||
        men > MAX_FILE_MEN)
        return std::nullopt;
    return canonical(signature);
}

std::vector<Signature> all_signatures(int men) {
    std::vector<Signature> result;
    // Deal the men beside the kings over the ten kinds; keep what is canonical.
    Signature signature;
    signature.count[WHITE][KING] = signature.count[BLACK][KING] = 1;
    const std::function<void(int, int)> deal = [&](int place, int left) {
        if (left == 0) {
            if (canonical(signature) == signature)
                result.push_back(signature);
            return;
        }
        for (int next = place; next < 10; ++next) {
            auto& count = signature.count[static_cast<std::size_t>(next / 5)]
                                         [static_cast<std::size_t>(QUEEN - next % 5)];
            ++count;
            deal(next, left - 1);
            --count;
        }
    };
    deal(0, men - 2);
    std::stable_sort(result.begin(), result.end(), [](const Signature& a, const Signature& b) {
        return pawns_of(a) < pawns_of(b);
    });
    return result;
}

std::vector<Signature> conversions(const Signature& signature) {
    std::vector<Signature> result;
    auto add = [&](const Signature& after) {
        const Signature form = canonical(after);
        if (std::find(result.begin(), result.end(), form) == result.end())
            result.push_back(form);
    };
    for (const Side mover : {WHITE, BLACK}) {
        const Side other = opponent(mover);
        // Capturing nothing comes first, then each kind the other side has but its king.
        for (std::size_t victim = NO_KIND; victim < KING; ++victim) {
            Signature after = signature;
            if (victim != NO_KIND) {
                if (after.count[other][victim] == 0)
                    continue;
                --after.count[other][victim];
                add(after);
            }
            if (after.count[mover][PAWN] != 0) {
                --after.count[mover][PAWN];
                for (std::size_t promoted = KNIGHT; promoted <= QUEEN; ++promoted) {
                    ++after.count[mover][promoted];
                    add(after);
                    --after.count[mover][promoted];
                }
            }
        }
    }
    return result;
}

std::vector<Signature> closure(const std::vector<Signature>& wanted) {
    std::vector<Signature> result;
    const std::function<void(const Signature&)> add = [&](const Signature& signature) {
        if (std::find(result.begin(), result.end(), signature) != result.end())
            return;
        for (const Signature& next : conversions(signature))
            add(next);
        result.push_back(signature);
    };
    for (const Signature& signature : wanted)
        add(signature);
    return result;
}

} // namespace brindlemoth::tablegen
