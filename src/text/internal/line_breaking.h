#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace framewright {

/// A part of a paragraph that is never broken.
struct WordPiece {
    double width = 0; ///< Without the space that follows.
    double space = 0; ///< Between it and the next piece on the same line.
};

/// The number of pieces on each line.
///
/// No line exceeds `maxWidth`, except for a single piece that does. There are as few lines as
/// possible, of similar length, and the last one has more than one piece if possible: captions that
/// are filled greedily end in a lone word. No pieces give no lines.
///
/// Minimizes the sum of squared deviations from the mean length by dynamic programming over the
/// break positions, the method of Knuth and Plass ("Breaking paragraphs into lines", 1981) without
/// stretching.
std::vector<std::size_t> balancedLines(std::span<WordPiece const> pieces, double maxWidth);

} // namespace framewright
