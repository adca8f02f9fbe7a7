#pragma once

#include <string>
#include <string_view>

namespace framewright {

/// A bar on one line of a terminal: "Encoding  [######..............]  31 %". No wider than
/// `columns`, so that it never wraps.
std::string progressBar(double fraction, std::string_view stage, int columns);

/// Draws the bar on standard error, over the one before.
class ProgressLine {
public:
    /// Whether standard error is a terminal. Elsewhere there is nothing to draw on.
    static bool isUseful();

    void draw(double fraction, std::string_view stage);
    /// Takes the bar away, if there is one, for other text to follow.
    void clear();

private:
    bool m_isDrawn = false;
};

} // namespace framewright
