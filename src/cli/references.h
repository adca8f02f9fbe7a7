#pragma once

#include "model/project.h"

#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace framewright {

// The short names that commands use for the things of a project:
//
//     v1 a1 t1 s1    tracks: video, audio, text, subtitles; from 1, top to bottom in their kind
//     v1:2 s1:3      the second clip, the third bar, in time order
//     3F2A91C0       the first eight or more characters of a clip's, bar's or asset's id
//
// The resolvers throw ToolError, whose sentence says what there is instead. What they return
// points into the project.

struct BarPlace {
    Track const* track = nullptr;
    CaptionBar const* bar = nullptr;
};

/// A reference, a track's name (in any case unless one matches exactly), or the beginning of
/// its id.
Track const& resolveTrack(Project const& project, std::string_view reference);

ClipPlace resolveClip(Project const& project, std::string_view reference);

BarPlace resolveBar(Project const& project, std::string_view reference);

/// A clip or a bar. What can be neither is looked up as a clip, so the error speaks of clips.
std::variant<ClipPlace, BarPlace> resolveItem(Project const& project, std::string_view reference);

/// By name, or by id or its beginning.
MediaAsset const& resolveAsset(Project const& project, std::string_view nameOrID);

/// The saved look of this name, in any case unless one matches exactly, or with this id or the
/// beginning of it; null when there is none.
CaptionStyle const* findLook(std::span<CaptionStyle const> looks, std::string const& nameOrID);
/// The same. Throws ToolError naming those there are; `what` is what they are called, in the
/// singular: "text favorite".
CaptionStyle const& favorite(std::span<CaptionStyle const> looks, std::string const& nameOrID,
                             std::string const& what);

/// "v1". The track must be one of the project's.
std::string trackRef(Project const& project, Track const& track);
/// "v1 (Video 1)"
std::string trackTitle(Project const& project, Track const& track);
/// "v1:2", of a clip or bar on the track.
std::string clipRef(Project const& project, Track const& track, Clip const& clip);
std::string barRef(Project const& project, Track const& track, CaptionBar const& bar);

/// The first ten of many references: "t1:1, t1:2 and 5 more".
std::string referenceList(std::vector<std::string> const& references);

/// `v1 "Video 1", a1 "Audio 1"`; "none" for a project without tracks.
std::string trackList(Project const& project);

/// Throws RefusedEdit when the track is locked.
void requireUnlocked(Track const& track);

} // namespace framewright
