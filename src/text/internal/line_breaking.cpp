#include "text/internal/line_breaking.h"

#include <algorithm>
#include <limits>

namespace framewright {

namespace {

/// For rounding errors in sums of widths.
constexpr double tolerance = 1e-6;

std::size_t fewestLines(std::span<WordPiece const> pieces, double maxWidth)
{
    std::size_t lines = 0;
    double width = 0;
    bool isEmpty = true;
    for (WordPiece const& piece : pieces) {
        if (isEmpty || width + piece.width > maxWidth + tolerance) {
            ++lines;
            width = 0;
        }
        width += piece.width + piece.space;
        isEmpty = false;
    }
    return lines;
}

/// The best way to break the pieces up to a given one.
struct Best {
    std::size_t lines = std::numeric_limits<std::size_t>::max();
    double cost = 0;
    std::size_t lastLineFrom = 0;

    bool isWorseThan(Best const& other) const
    {
        return lines != other.lines ? lines > other.lines : cost > other.cost;
    }
};

} // namespace

std::vector<std::size_t> balancedLines(std::span<WordPiece const> pieces, double maxWidth)
{
    if (pieces.empty())
        return {};
    double total = 0;
    for (WordPiece const& piece : pieces)
        total += piece.width + piece.space;
    double const ideal = total / double(fewestLines(pieces, maxWidth));
    // A lone last piece costs more than any deviation of one line.
    double const loneliness = 4 * std::max(maxWidth, ideal) * std::max(maxWidth, ideal);

    std::vector<Best> best(pieces.size() + 1);
    best[0].lines = 0;
    for (std::size_t end = 1; end <= pieces.size(); ++end) {
        double width = 0;
        for (std::size_t from = end; from-- > 0;) {
            width += pieces[from].width + (from + 1 < end ? pieces[from].space : 0);
            if (width > maxWidth + tolerance && from + 1 < end)
                break;
            double cost = best[from].cost + (width - ideal) * (width - ideal);
            if (end == pieces.size() && from + 1 == end && from > 0)
                cost += loneliness;
            Best const candidate{best[from].lines + 1, cost, from};
            if (best[end].isWorseThan(candidate))
                best[end] = candidate;
        }
    }

    std::vector<std::size_t> counts;
    for (std::size_t end = pieces.size(); end > 0; end = best[end].lastLineFrom)
        counts.push_back(end - best[end].lastLineFrom);
    std::ranges::reverse(counts);
    return counts;
}

} // namespace framewright
