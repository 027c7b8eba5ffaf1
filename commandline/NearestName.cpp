#include "commandline/NearestName.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <numeric>

namespace velotrine {

namespace {

char lower(char character)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
}

/// Letters to change, insert or remove to get from one text to the other (the Levenshtein distance).
std::size_t editDistance(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        auto diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const auto changed = diagonal + (lower(from[i]) == lower(to[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string nearestName(std::string_view typed, const std::vector<std::string>& names)
{
    std::string nearest;
    // More than a third of the letters wrong is another word.
    auto smallest = std::max<std::size_t>(2, typed.size() / 3) + 1;
    for (const auto& name : names) {
        const auto distance = editDistance(typed, name);
        if (distance < smallest) {
            smallest = distance;
            nearest = name;
        }
    }
    return nearest;
}

std::string suggestion(std::string_view typed, const std::vector<std::string>& names)
{
    const auto nearest = nearestName(typed, names);
    return nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?";
}

} // namespace velotrine
