#pragma once

#include "model/captions.h"
#include "model/clip.h"

#include <optional>
#include <string>
#include <vector>

namespace framewright {

enum class TrackKind { video, audio, subtitles, text };

/// One row of the timeline.
///
/// A magnetic track keeps its clips packed edge to edge from 0, in order. On a free track they
/// start anywhere and never overlap.
struct Track {
    Id id;
    TrackKind kind = TrackKind::video;
    std::string name;
    bool isMagnetic = false;
    bool isMuted = false;
    bool isSolo = false;
    float volume = 1;                              ///< Linear gain of the whole track.
    bool ducks = false;                            ///< Lowered while another audio track plays.
    Shared<std::vector<Clip>> clips;               ///< In time order.
    bool isLocked = false;                         ///< Refuses every edit.
    bool isHidden = false;                         ///< Not drawn.
    std::optional<Shared<SubtitleData>> subtitles; ///< Of a subtitles track only.
    double opacity = 1;

    /// Where its last clip ends; 0 without clips.
    double end() const;

    bool operator==(Track const&) const = default;
};

} // namespace framewright
