#include "server/config/Spelling.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <numeric>
#include <utility>

namespace zan::server {

namespace {

// How many letters have to be changed, added or left out to make one word of the other.
std::size_t spellingDistance(std::string_view left, std::string_view right) {
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < left.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < right.size(); ++j) {
            std::size_t const replaced = diagonal + (sameLetter(left[i], right[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

bool sameLetter(char left, char right) {
    return std::tolower(static_cast<unsigned char>(left)) ==
           std::tolower(static_cast<unsigned char>(right));
}

std::string_view nearestWord(std::string_view word, std::vector<std::string_view> const& known) {
    // Long words are no misspelling of any other, and the search is quadratic in their length.
    if (word.size() > 60) {
        return {};
    }
    std::string_view nearest;
    std::size_t least = std::max<std::size_t>(word.size() / 3, 1) + 1;
    for (std::string_view const each : known) {
        std::size_t const distance = spellingDistance(each, word);
        if (distance < least) {
            least = distance;
            nearest = each;
        }
    }
    return nearest;
}

} // namespace zan::server
