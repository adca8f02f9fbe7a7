#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace framewright {

/// A piece of a paragraph that stays on one line.
struct WordPiece {
    double width = 0; ///< Without the space that follows.
    double space = 0; ///< What follows when the next piece stands on the same line.
};

/// How many pieces each line holds, in order.
///
/// No line is wider than `maxWidth`, but for a piece that is wider alone. There are as few lines as
/// possible, they are about equally long, and the last one is no single piece where that can be
/// had. No pieces make no lines.
std::vector<std::size_t> balancedLines(std::span<WordPiece const> pieces, double maxWidth);

} // namespace framewright
