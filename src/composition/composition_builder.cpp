#include "composition/composition_builder.h"

#include "model/time_rules.h"

#include <fmt/format.h>

#include <algorithm>

namespace framewright {

namespace {

using Kind = CompositionTrack::Kind;
using Source = CompositionSegment::Source;

MediaTimeRange mediaRange(double start, double end)
{
    return {MediaTime::fromSeconds(start), MediaTime::fromSeconds(end)};
}

std::vector<Clip> inTimeOrder(Track const& track)
{
    std::vector<Clip> clips = *track.clips;
    std::ranges::stable_sort(clips, {}, &Clip::timelineStart);
    return clips;
}

/// What a clip plays on a composition track. The source time is that of the rounded start, so
/// rounding never moves the picture against the timeline.
CompositionSegment segment(Clip const& clip, LoadedAsset const& asset, std::string name)
{
    CompositionSegment segment;
    segment.source = asset.kind == MediaKind::image ? Source::still : Source::footage;
    segment.file = asset.file;
    segment.timeRange = mediaRange(clip.timelineStart, clip.end());
    segment.sourceStart = clip.sourceStart + segment.timeRange.start.seconds() - clip.timelineStart;
    segment.clipID = clip.id;
    segment.name = std::move(name);
    return segment;
}

/// The clips of a track that are loaded and have what the kind of composition track plays.
std::vector<CompositionSegment> segments(Track const& track, AssetStore const& assets, Kind kind)
{
    std::vector<CompositionSegment> found;
    int number = 0;
    for (Clip const& clip : inTimeOrder(track)) {
        ++number;
        LoadedAsset const* const asset = assets.find(clip.assetID);
        if (!asset || !(kind == Kind::video ? asset->hasVideo : asset->hasAudio))
            continue;
        auto made = segment(clip, *asset, fmt::format("clip {} on {}", number, track.name));
        if (made.timeRange.start < made.timeRange.end)
            found.push_back(std::move(made));
    }
    return found;
}

CompositionTrack fillerTrack(CompositionTrackID id, LoadedAsset const& filler, double duration)
{
    CompositionTrack track{id, Kind::video, {}};
    for (double start = 0; filler.duration > 0 && duration - start > timeTolerance;
         start += filler.duration) {
        CompositionSegment piece;
        piece.source = Source::black;
        piece.timeRange = mediaRange(start, std::min(duration, start + filler.duration));
        track.segments.push_back(std::move(piece));
    }
    return track;
}

} // namespace

BuiltComposition CompositionBuilder::build(Project const& project, AssetStore const& assets,
                                           Output const& output, std::span<Overlay const> overlays)
{
    BuiltComposition built;
    built.duration = project.videoDuration();
    built.audioDuration = project.audioDuration();

    auto const add = [&](CompositionTrack track) {
        built.tracks.push_back(std::move(track));
        return built.tracks.back().id;
    };
    auto const nextID = [&] { return CompositionTrackID(built.tracks.size()) + 1; };

    for (Track const& track : project.tracks) {
        if (track.kind != TrackKind::video && track.kind != TrackKind::audio)
            continue;
        if (track.kind == TrackKind::video)
            built.videoTrackIDs[track.id] =
                add({nextID(), Kind::video, segments(track, assets, Kind::video)});
        if (auto sound = segments(track, assets, Kind::audio); !sound.empty())
            built.audioTrackIDs[track.id] = add({nextID(), Kind::audio, std::move(sound)});
    }
    if (assets.filler)
        built.fillerTrack = add(fillerTrack(nextID(), *assets.filler, built.duration));

    built.video = video(project, assets, built.videoTrackIDs, built.fillerTrack, built.duration,
                        output, overlays);
    built.audioMix = audioMix(project, built.audioTrackIDs);
    return built;
}

bool CompositionBuilder::isHDR(Project const& project, AssetStore const& assets)
{
    for (Track const* track : project.videoTracks()) {
        for (Clip const& clip : *track->clips) {
            LoadedAsset const* const asset = assets.find(clip.assetID);
            if (asset && asset->isHDR)
                return true;
        }
    }
    return false;
}

} // namespace framewright
