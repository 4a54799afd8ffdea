#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace plenvorith::test {

/// Texts that begin with no number, and how many of their characters belong to the token that is none.
constexpr std::array<std::pair<std::string_view, std::size_t>, 18> kNoNumbers = {{
    {"", 0},
    {")", 0},
    {",", 0},
    {"$", 0},
    {"#1", 0},
    {"A", 0},
    {"-", 1},
    {"+", 1},
    {"+-1", 1},
    {".", 1},
    {"-.E5", 4},
    {"E5", 2},
    {"-e+5,", 4},
    {".T.", 1},
    {"inf", 0},
    {"nan", 0},
    {"-inf", 1},
    {"\f1", 0},
}};

}  // namespace plenvorith::test
