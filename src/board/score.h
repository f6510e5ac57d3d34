// The packed evaluation score: a middle-game and an end-game value in one signed 32-bit integer,
// eg * 65536 + mg, so that one addition updates both. A negative low half borrows 1 from the high
// half, and eg_value() does not correct this: eg_value(S(-5, 10)) is 9.
// Sums wrap in two's complement, so that no position causes an undefined overflow.
#pragma once

#include <cstdint>

namespace brindlemoth {

enum class Score : std::int32_t {};

constexpr std::int32_t raw(Score s) {
    return static_cast<std::int32_t>(s);
}

constexpr Score operator+(Score a, Score b) {
    return static_cast<Score>(static_cast<std::uint32_t>(raw(a)) +
                              static_cast<std::uint32_t>(raw(b)));
}
constexpr Score operator-(Score a, Score b) {
    return static_cast<Score>(static_cast<std::uint32_t>(raw(a)) -
                              static_cast<std::uint32_t>(raw(b)));
}
constexpr Score operator-(Score a) {
    return Score{} - a;
}
constexpr Score operator*(Score a, int n) {
    return static_cast<Score>(static_cast<std::uint32_t>(raw(a)) * static_cast<std::uint32_t>(n));
}
constexpr Score& operator+=(Score& a, Score b) {
    return a = a + b;
}
constexpr Score& operator-=(Score& a, Score b) {
    return a = a - b;
}

constexpr Score make_score(int mg, int eg) {
    return static_cast<Score>(static_cast<std::uint32_t>(eg) * 65536U +
                              static_cast<std::uint32_t>(mg));
}
// Short form for tables of scores.
constexpr Score S(int mg, int eg) {
    return make_score(mg, eg);
}
// The low 16 bits, signed.
constexpr int mg_value(Score s) {
    return static_cast<std::int16_t>(static_cast<std::uint32_t>(raw(s)));
}
// Bits 16 to 31, signed, with the borrow of a negative low half.
constexpr int eg_value(Score s) {
    return static_cast<std::int16_t>(static_cast<std::uint32_t>(raw(s)) >> 16);
}

} // namespace brindlemoth
