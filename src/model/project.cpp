#include "model/project.h"

#include <algorithm>

namespace framewright {

namespace {

std::vector<Track const*> tracksOfKind(Project const& project, TrackKind kind)
{
    std::vector<Track const*> tracks;
    for (Track const& track : project.tracks) {
        if (track.kind == kind)
            tracks.push_back(&track);
    }
    return tracks;
}

double lastEnd(Project const& project, TrackKind kind)
{
    double end = 0;
    for (Track const& track : project.tracks) {
        if (track.kind == kind)
            end = std::max(end, track.end());
    }
    return end;
}

bool mayHaveAudio(Project const& project, Clip const& clip)
{
    MediaAsset const* const asset = project.asset(clip.assetID);
    return asset && asset->kind != MediaKind::image;
}

} // namespace

double Track::end() const
{
    double end = 0;
    for (Clip const& clip : *clips)
        end = std::max(end, clip.end());
    return end;
}

Track const* Project::track(Id const& id) const
{
    auto const found = std::ranges::find(tracks, id, &Track::id);
    return found == tracks.end() ? nullptr : &*found;
}

Track* Project::track(Id const& id)
{
    auto const found = std::ranges::find(tracks, id, &Track::id);
    return found == tracks.end() ? nullptr : &*found;
}

MediaAsset const* Project::asset(Id const& id) const
{
    auto const found = assets->find(id);
    return found == assets->end() ? nullptr : &found->second;
}

std::vector<Track const*> Project::videoTracks() const
{
    return tracksOfKind(*this, TrackKind::video);
}

std::vector<Track const*> Project::subtitleTracks() const
{
    return tracksOfKind(*this, TrackKind::subtitles);
}

std::vector<Track const*> Project::transcribableTracks() const
{
    std::vector<Track const*> found;
    for (Track const& track : tracks) {
        bool const carriesAudio = track.kind == TrackKind::video || track.kind == TrackKind::audio;
        if (carriesAudio && std::ranges::any_of(*track.clips, [&](Clip const& clip) {
                return mayHaveAudio(*this, clip);
            }))
            found.push_back(&track);
    }
    return found;
}

double Project::videoDuration() const
{
    return lastEnd(*this, TrackKind::video);
}

double Project::audioDuration() const
{
    return lastEnd(*this, TrackKind::audio);
}

std::optional<ClipPlace> findClip(Project const& project, Id const& id)
{
    for (Track const& track : project.tracks) {
        auto const found = std::ranges::find(*track.clips, id, &Clip::id);
        if (found != track.clips->end())
            return ClipPlace{&track, &*found};
    }
    return std::nullopt;
}

std::optional<ClipPlace> topVideoClip(Project const& project, double time)
{
    for (Track const& track : project.tracks) {
        if (track.kind != TrackKind::video || track.isHidden)
            continue;
        auto const found =
            std::ranges::find_if(*track.clips, [&](Clip const& clip) { return clip.covers(time); });
        if (found != track.clips->end())
            return ClipPlace{&track, &*found};
    }
    return std::nullopt;
}

std::vector<Track> defaultTracks()
{
    Track video;
    video.id = Id::random();
    video.kind = TrackKind::video;
    video.name = "Video 1";
    video.isMagnetic = true;

    Track audio;
    audio.id = Id::random();
    audio.kind = TrackKind::audio;
    audio.name = "Audio 1";
    audio.ducks = true;

    return {video, audio};
}

Project newProject(AspectPreset aspect)
{
    Project project;
    project.tracks = defaultTracks();
    project.aspect = aspect;
    return project;
}

} // namespace framewright
