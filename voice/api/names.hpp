// RTP names are ASCII, and their letter case does not matter.
#pragma once

#include <algorithm>
#include <string_view>

namespace zsp::voice {

/// A letter in lower case, without the locale, which belongs to the program.
constexpr char lower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether two names are the same but for letter case.
constexpr bool sameName(std::string_view a, std::string_view b) noexcept
{
    return std::ranges::equal(a, b, [](char x, char y) { return lower(x) == lower(y); });
}

} // namespace zsp::voice
