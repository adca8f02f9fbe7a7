#include "cli/internal/near_words.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace framewright {

namespace {

/// Lower case, without hyphens and underscores.
std::string bare(std::string_view word)
{
    std::string result;
    for (char const c : word) {
        if (c != '-' && c != '_')
            result += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
}

/// How many letters have to be put in, taken out or exchanged to get from one to the other.
std::size_t distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t(0));
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            std::size_t const replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::optional<std::string> nearestWord(std::string_view word, std::span<std::string const> words)
{
    constexpr std::size_t longestWord = 40;
    std::string const meant = bare(word);
    if (meant.empty() || meant.size() > longestWord)
        return std::nullopt;

    std::optional<std::string> nearest;
    // Of a short word a slip is already a large part.
    std::size_t best = std::min<std::size_t>(3, (meant.size() + 2) / 3 + 1);
    for (std::string const& candidate : words) {
        std::size_t const apart = distance(meant, bare(candidate));
        if (apart < best) {
            best = apart;
            nearest = candidate;
        }
    }
    return nearest;
}

} // namespace framewright
