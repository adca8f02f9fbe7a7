#include "model/track_editing.h"

#include "model/clip_lookup.h"
#include "model/edit_limits.h"
#include "model/internal/track_rules.h"

#include <algorithm>

namespace framewright {

namespace {

std::string kindName(TrackKind kind)
{
    switch (kind) {
    case TrackKind::video:
        return "Video";
    case TrackKind::audio:
        return "Audio";
    case TrackKind::subtitles:
        return "Subtitles";
    case TrackKind::text:
        return "Text";
    }
    return {};
}

std::size_t countOf(Project const& project, TrackKind kind)
{
    return std::size_t(std::ranges::count(project.tracks, kind, &Track::kind));
}

/// "Video 2": the first free number after the count of tracks of the kind.
std::string nextName(Project const& project, TrackKind kind)
{
    for (std::size_t number = countOf(project, kind) + 1;; ++number) {
        std::string name = kindName(kind) + " " + std::to_string(number);
        if (std::ranges::find(project.tracks, name, &Track::name) == project.tracks.end())
            return name;
    }
}

std::size_t indexFor(Project const& project, NewTrack const& track)
{
    auto const& tracks = project.tracks;
    if (track.index)
        return std::min(*track.index, tracks.size());
    auto const isVideo = [](Track const& each) { return each.kind == TrackKind::video; };
    switch (track.kind) {
    case TrackKind::text:
    case TrackKind::subtitles:
        return 0;
    case TrackKind::audio:
        return tracks.size();
    case TrackKind::video:
        break;
    }
    auto const topVideo = std::ranges::find_if(tracks, isVideo);
    if (track.place == TrackPlace::top && topVideo != tracks.end())
        return std::size_t(topVideo - tracks.begin());
    auto const belowVideo = std::find_if(tracks.rbegin(), tracks.rend(), isVideo).base();
    auto const audio = std::find_if(
        belowVideo, tracks.end(), [](Track const& each) { return each.kind == TrackKind::audio; });
    return std::size_t(audio - tracks.begin());
}

std::optional<Refusal> magneticRefusal(TrackKind kind)
{
    if (kind == TrackKind::audio)
        return Refusal{Reason::audioNeverMagnetic};
    if (kind == TrackKind::subtitles)
        return Refusal{Reason::subtitlesNeverMagnetic};
    return std::nullopt;
}

std::optional<Refusal> visibilityRefusal(Track const& track, TrackChanges const& changes)
{
    if (changes.isHidden.value_or(false) && track.kind == TrackKind::audio)
        return Refusal{Reason::audioNeverHidden};
    if (!changes.opacity)
        return std::nullopt;
    if (track.kind != TrackKind::video)
        return Refusal{Reason::onlyVideoHasOpacity};
    if (!(*changes.opacity >= 0 && *changes.opacity <= 1))
        return outOfRange(Setting::opacity);
    return std::nullopt;
}

std::optional<Refusal> audioRefusal(Track const& track, TrackChanges const& changes)
{
    bool const hasAudio = track.kind == TrackKind::video || track.kind == TrackKind::audio;
    if (!hasAudio && (changes.isMuted || changes.isSolo || changes.volume))
        return Refusal{Reason::trackHasNoAudio};
    if (changes.ducks && track.kind != TrackKind::audio)
        return Refusal{Reason::onlyAudioDucks};
    if (changes.volume && !(*changes.volume >= 0 && *changes.volume <= highestVolume))
        return outOfRange(Setting::volume);
    return std::nullopt;
}

template <class T>
void assignGiven(T& setting, std::optional<T> const& change)
{
    if (change)
        setting = *change;
}

void setPacking(Track& track, bool magnetic)
{
    normalize(track); // Into time order first, the order it packs in.
    track.isMagnetic = magnetic;
    normalize(track);
}

} // namespace

Outcome<Project> addTrack(Project project, NewTrack const& wanted)
{
    if (wanted.isMagnetic.value_or(false)) {
        if (auto refusal = magneticRefusal(wanted.kind))
            return *refusal;
    }
    bool const isFirst = countOf(project, wanted.kind) == 0;
    Track track;
    track.id = wanted.id;
    track.kind = wanted.kind;
    track.name =
        wanted.name && !wanted.name->empty() ? *wanted.name : nextName(project, wanted.kind);
    track.isMagnetic = wanted.isMagnetic.value_or(isFirst && wanted.kind == TrackKind::video);
    track.ducks = isFirst && wanted.kind == TrackKind::audio;
    if (wanted.kind == TrackKind::subtitles)
        track.subtitles.emplace();
    auto const index = std::ptrdiff_t(indexFor(project, wanted));
    project.tracks.insert(project.tracks.begin() + index, std::move(track));
    return project;
}

Project addSubtitleTrack(Project project, Id const& id, SubtitleData data,
                         std::optional<std::string> const& name)
{
    auto added =
        addTrack(std::move(project), {.id = id, .kind = TrackKind::subtitles, .name = name});
    Project result = std::move(*added);
    result.track(id)->subtitles = Shared(std::move(data));
    return result;
}

Outcome<Project> removeTrack(Project project, Id const& trackID)
{
    auto const track = editableTrack(project, trackID);
    if (!track)
        return track.refusal();
    if (project.tracks.size() == 1)
        return Refusal{Reason::lastTrack};
    project.tracks.erase(project.tracks.begin() + (*track - project.tracks.data()));
    return project;
}

Outcome<Project> moveTrack(Project project, Id const& trackID, int offset)
{
    auto const track = editableTrack(project, trackID);
    if (!track)
        return track.refusal();
    auto& tracks = project.tracks;
    auto const from = *track - tracks.data();
    auto const last = std::ptrdiff_t(tracks.size()) - 1;
    auto const to = std::clamp<std::ptrdiff_t>(from + offset, 0, last);
    if (to == from)
        return Refusal{offset < 0 ? Reason::topmostTrack : Reason::bottomTrack,
                       Subject::track(trackID)};
    if (from < to)
        std::rotate(tracks.begin() + from, tracks.begin() + from + 1, tracks.begin() + to + 1);
    else
        std::rotate(tracks.begin() + to, tracks.begin() + from, tracks.begin() + from + 1);
    return project;
}

Outcome<Project> changeTrack(Project project, Id const& trackID, TrackChanges const& changes)
{
    Track* const track = project.track(trackID);
    if (!track)
        return Refusal{Reason::trackGone, Subject::track(trackID)};
    if (track->isLocked && changes.isLocked.value_or(true))
        return lockedRefusal(*track);
    if (changes.name && changes.name->empty())
        return Refusal{Reason::trackNameEmpty};
    if (changes.isMagnetic.value_or(false)) {
        if (auto refusal = magneticRefusal(track->kind))
            return *refusal;
    }
    if (auto refusal = visibilityRefusal(*track, changes))
        return *refusal;
    if (auto refusal = audioRefusal(*track, changes))
        return *refusal;

    if (changes.isMagnetic)
        setPacking(*track, *changes.isMagnetic);
    assignGiven(track->name, changes.name);
    assignGiven(track->isLocked, changes.isLocked);
    assignGiven(track->isHidden, changes.isHidden);
    assignGiven(track->isMuted, changes.isMuted);
    assignGiven(track->isSolo, changes.isSolo);
    assignGiven(track->volume, changes.volume);
    assignGiven(track->ducks, changes.ducks);
    assignGiven(track->opacity, changes.opacity);
    return project;
}

Outcome<Project> renameTrack(Project project, Id const& trackID, std::string const& name)
{
    return changeTrack(std::move(project), trackID, {.name = name});
}

Outcome<Project> setMagnetic(Project project, Id const& trackID, bool on)
{
    return changeTrack(std::move(project), trackID, {.isMagnetic = on});
}

Project changeAspect(Project project, AspectPreset aspect)
{
    project.aspect = aspect;
    return project;
}

} // namespace framewright
