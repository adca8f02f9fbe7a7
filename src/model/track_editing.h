#pragma once

#include "model/outcome.h"
#include "model/project.h"

#include <cstddef>
#include <optional>
#include <string>

namespace framewright {

/// Where a new track goes in the list.
enum class TrackPlace {
    usual, ///< Video above the audio tracks and below other video, audio last, others first.
    top,   ///< Video above all other video; other kinds as usual.
};

/// A track to be added. What is not given is chosen by its kind.
struct NewTrack {
    Id id;
    TrackKind kind = TrackKind::video;
    std::optional<std::string> name = {}; ///< Else "Video 2": the kind and the next free number.
    std::optional<bool> isMagnetic = {};  ///< Else only for the first video track.
    TrackPlace place = TrackPlace::usual;
    std::optional<std::size_t> index = {}; ///< Exactly there, up to the end, whatever `place` says.
};

/// Adds a track without clips. The first audio track of a project ducks, as in a new project.
///
/// Refused for a magnetic track that is neither video nor text.
Outcome<Project> addTrack(Project project, NewTrack const& track);

/// Adds a subtitles track with its content, on top of all others.
Project addSubtitleTrack(Project project, Id const& id, SubtitleData data,
                         std::optional<std::string> const& name = std::nullopt);

/// Deletes a track and everything on it. Refused when it is gone, locked or the last one.
Outcome<Project> removeTrack(Project project, Id const& trackID);

/// Moves a track down the list by `offset` places (up when negative), at most to either end.
///
/// Refused when it is gone or locked, and when it is first or last already.
Outcome<Project> moveTrack(Project project, Id const& trackID, int offset);

/// Settings to change together; what is not given stays.
struct TrackChanges {
    std::optional<std::string> name = {};
    std::optional<bool> isMagnetic = {};
    std::optional<bool> isLocked = {};
    std::optional<bool> isHidden = {}; ///< Not for audio tracks.
    std::optional<bool> isMuted = {};  ///< This and the next two: video and audio tracks.
    std::optional<bool> isSolo = {};
    std::optional<float> volume = {};   ///< 0 to 1.5.
    std::optional<bool> ducks = {};     ///< Audio tracks only.
    std::optional<double> opacity = {}; ///< Video tracks only, 0 to 1.
};

/// Changes settings of a track, all or none of them.
///
/// A locked track takes changes only together with being unlocked. Made magnetic, its clips close
/// up in their order; made free, they stay where they are.
Outcome<Project> changeTrack(Project project, Id const& trackID, TrackChanges const& changes);

/// `changeTrack` for one setting each.
Outcome<Project> renameTrack(Project project, Id const& trackID, std::string const& name);
Outcome<Project> setMagnetic(Project project, Id const& trackID, bool on);

/// Gives the canvas another shape. Every placement is a fraction of the canvas and stays.
Project changeAspect(Project project, AspectPreset aspect);

} // namespace framewright
