#pragma once

#include "model/aspect_preset.h"
#include "model/media_asset.h"
#include "model/track.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// What is edited: the state that timeline, renderer, exporter and tools work on.
struct Project {
    Shared<std::map<Id, MediaAsset>> assets; ///< Every file it refers to, by the asset's id.
    std::vector<Track> tracks;               ///< Top to bottom: earlier ones cover later ones.
    AspectPreset aspect = AspectPreset::portrait;
    std::optional<std::string> brief;

    Track const* track(Id const& id) const;
    Track* track(Id const& id);
    MediaAsset const* asset(Id const& id) const;

    std::vector<Track const*> videoTracks() const;
    std::vector<Track const*> subtitleTracks() const;

    /// Video and audio tracks with at least one clip that plays a file that may have audio.
    std::vector<Track const*> transcribableTracks() const;

    /// End of the last clip over the video tracks, or over the audio tracks. Seconds.
    double videoDuration() const;
    double audioDuration() const;

    bool operator==(Project const&) const = default;
};

/// Where a clip is. Pointers are valid while the project they came from is unchanged.
struct ClipPlace {
    Track const* track = nullptr;
    Clip const* clip = nullptr;
};

/// The clip with this id, on whichever track.
std::optional<ClipPlace> findClip(Project const& project, Id const& id);

/// The clip that is seen at a time: that of the topmost video track that is not hidden and has one
/// there.
std::optional<ClipPlace> topVideoClip(Project const& project, double time);

/// The two tracks a new project starts with: a magnetic "Video 1" and a ducking "Audio 1".
std::vector<Track> defaultTracks();

/// A project with empty default tracks.
Project newProject(AspectPreset aspect = AspectPreset::portrait);

} // namespace framewright
