#pragma once

#include "model/id.h"
#include "model/style.h"

#include <string>
#include <vector>

namespace framewright {

/// A spoken word, on the project's timeline.
struct CaptionWord {
    std::string text;
    double start = 0;
    double end = 0;

    bool operator==(CaptionWord const&) const = default;
};

/// A caption shown over [start, end).
struct CaptionBar {
    Id id;
    double start = 0;
    double end = 0;
    std::string text;
    std::vector<CaptionWord> words;

    bool operator==(CaptionBar const&) const = default;
};

enum class CaptionPosition { top, center, bottom };

/// Where captions sit on the canvas.
struct CaptionPlacement {
    CaptionPosition position = CaptionPosition::bottom;
    double verticalOffset = 0.2; ///< Up from the bottom, as a fraction of the canvas height.

    bool operator==(CaptionPlacement const&) const = default;
};

/// What a subtitles track carries.
struct SubtitleData {
    std::string styleID; ///< In the style store; empty when none was chosen.
    CaptionStyle style;  ///< The style itself, as used.
    CaptionPlacement placement;
    std::vector<CaptionWord> words; ///< The transcript, word by word.
    std::vector<CaptionBar> bars;   ///< In time order.

    /// End of the last bar; 0 when there is none.
    double end() const { return bars.empty() ? 0 : bars.back().end; }

    bool operator==(SubtitleData const&) const = default;
};

} // namespace framewright
