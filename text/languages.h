// The languages: what is read as each number, and what each number writes.
//
// Rows follow their numbers, so that a number is its row but for the last one. The columns disagree where callers
// depend on it: Spanish writes "SE", Slovak "KLS" and "KS", and numbers 0 and 23 have nothing to read.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace kv::text {

struct Language {
    std::uint32_t number;
    std::array<std::string_view, 4> read;
    std::string_view threeLetters;
    std::string_view twoLetters;
};

// clang-format off
inline constexpr Language kLanguages[] = {
    {0,     {},                           "ENG", "EN"},
    {1,     {"AR", "ARA"},                "ARA", "AR"},
    {2,     {"BG", "BUL"},                "BUL", "BG"},
    {3,     {"CA", "CAT"},                "CAT", "CA"},
    {4,     {"ZH", "ZHO"},                "ZHO", "ZH"},
    {5,     {"CS", "CES"},                "CES", "CS"},
    {6,     {"DA", "DAN"},                "DAN", "DA"},
    {7,     {"DE", "DEU"},                "DEU", "DE"},
    {8,     {"EL", "ELL"},                "ELL", "EL"},
    {9,     {"EN", "ENG"},                "ENG", "EN"},
    {10,    {"ES", "ESP", "SPA"},         "SPA", "SE"},
    {11,    {"FI", "FIN"},                "FIN", "FI"},
    {12,    {"FR", "FRA"},                "FRA", "FR"},
    {13,    {"HE", "HEB"},                "HEB", "HE"},
    {14,    {"HU", "HUN"},                "HUN", "HU"},
    {15,    {"IS", "ISL"},                "ISL", "IS"},
    {16,    {"IT", "ITA"},                "ITA", "IT"},
    {17,    {"JA", "JPN"},                "JPN", "JA"},
    {18,    {"KO", "KOR"},                "KOR", "KO"},
    {19,    {"NL", "NLD"},                "NLD", "NL"},
    {20,    {"NN", "NB", "NNO", "NOB"},   "NOB", "NB"},
    {21,    {"PL", "POL"},                "POL", "PL"},
    {22,    {"PT", "POR", "PRT"},         "POR", "PT"},
    {23,    {},                           "POR", "PT"},
    {24,    {"RO", "RON"},                "RON", "RO"},
    {25,    {"RU", "RUS"},                "RUS", "RU"},
    {26,    {"SR", "SRP"},                "SRP", "SR"},
    {27,    {"SK", "SLK"},                "KLS", "KS"},
    {28,    {"SQ", "SQI"},                "SQI", "SQ"},
    {29,    {"SV", "SWE"},                "SWE", "SV"},
    {30,    {"TH", "THA"},                "THA", "TH"},
    {31,    {"TK", "TUK"},                "TUK", "TK"},
    {32,    {"UR", "URD"},                "URD", "UR"},
    {33,    {"ID", "IND"},                "IND", "ID"},
    {20044, {"NOL"},                      "NOL", "NOL"},
};
// clang-format on

static_assert(std::size(kLanguages) == 35);
static_assert(std::ranges::all_of(kLanguages, [](const Language& row) {
    return (&row == std::end(kLanguages) - 1 || row.number == static_cast<std::size_t>(&row - kLanguages)) &&
           row.threeLetters.size() == 3 && row.twoLetters.size() >= 2;
}));

}  // namespace kv::text
