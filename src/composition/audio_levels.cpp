// The levels of a composition: mute, solo, volumes and ducking.

#include "composition/composition_builder.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace framewright {

namespace {

constexpr double duckRamp = 0.25;  ///< Seconds on either side of a duck range.
constexpr double duckLevel = 0.25; ///< Of a ducked clip.
constexpr double duckJoin = 0.5;   ///< Ranges no further apart are one.
constexpr double shortestStep = 0.001;
constexpr float audibleChange = 0.0005f;

bool hasSolo(Project const& project)
{
    return std::ranges::any_of(project.tracks, &Track::isSolo);
}

float baseVolume(Track const& track, Clip const& clip, bool anySolo)
{
    if (track.isMuted || (anySolo && !track.isSolo))
        return 0;
    return track.volume * clip.volume;
}

double duckFactor(double time, std::span<TimeRange const> ranges)
{
    for (TimeRange const& range : ranges) {
        if (range.start <= time && time <= range.end)
            return duckLevel;
        if (range.start - duckRamp < time && time < range.start)
            return 1 + 0.75 * (-4 * (time - (range.start - duckRamp)));
        if (range.end < time && time < range.end + duckRamp)
            return duckLevel + 0.75 * (4 * (time - range.end));
    }
    return 1;
}

std::vector<AudioMix::Step> steps(std::vector<VolumePoint> const& points)
{
    std::vector<AudioMix::Step> steps;
    for (std::size_t n = 0; n + 1 < points.size(); ++n) {
        VolumePoint const& from = points[n];
        VolumePoint const& to = points[n + 1];
        if (!(to.time - from.time > shortestStep))
            continue;
        bool const isRamp = std::abs(to.volume - from.volume) >= audibleChange;
        MediaTimeRange const range{MediaTime::fromSeconds(from.time),
                                   MediaTime::fromSeconds(to.time)};
        steps.push_back({range, from.volume, isRamp ? to.volume : from.volume});
    }
    return steps;
}

} // namespace

AudioMix CompositionBuilder::audioMix(Project const& project, TrackIDs const& trackIDs)
{
    std::vector<TimeRange> const duckRanges = duckTriggerRanges(project);
    bool const anySolo = hasSolo(project);
    AudioMix mix;
    for (Track const& track : project.tracks) {
        auto const found = trackIDs.find(track.id);
        if (found == trackIDs.end())
            continue;
        std::vector<AudioMix::ClipLevels>& levels = mix.tracks[found->second];
        std::vector<Clip> clips = *track.clips;
        std::ranges::stable_sort(clips, {}, &Clip::timelineStart);
        for (Clip const& clip : clips) {
            float const base = baseVolume(track, clip, anySolo);
            bool const isDucked = track.kind == TrackKind::audio && track.ducks && base > 0;
            auto const points =
                envelope(clip, base, isDucked ? std::span(duckRanges) : std::span<TimeRange>());
            levels.push_back({clip.id, steps(points)});
        }
    }
    return mix;
}

std::vector<TimeRange> CompositionBuilder::duckTriggerRanges(Project const& project)
{
    bool const anySolo = hasSolo(project);
    std::vector<TimeRange> ranges;
    for (Track const& track : project.tracks) {
        bool const triggers = track.kind == TrackKind::audio && !track.ducks && !track.isMuted &&
                              (track.isSolo || !anySolo) && track.volume > 0;
        if (!triggers)
            continue;
        for (Clip const& clip : *track.clips) {
            if (clip.volume > 0)
                ranges.push_back({clip.timelineStart, clip.end()});
        }
    }
    std::ranges::sort(ranges, {}, &TimeRange::start);

    std::vector<TimeRange> merged;
    for (TimeRange const& range : ranges) {
        if (!merged.empty() && range.start - merged.back().end <= duckJoin)
            merged.back().end = std::max(merged.back().end, range.end);
        else
            merged.push_back(range);
    }
    return merged;
}

std::vector<VolumePoint> CompositionBuilder::envelope(Clip const& clip, float base,
                                                      std::span<TimeRange const> duckRanges)
{
    double const start = clip.timelineStart;
    double const end = clip.end();
    std::set<double> times = {start, end};
    auto const addInside = [&](double time) {
        if (start < time && time < end)
            times.insert(time);
    };
    for (TimeRange const& range : duckRanges) {
        if (!(start < range.end && range.start < end))
            continue;
        addInside(range.start - duckRamp);
        addInside(range.start);
        addInside(range.end);
        addInside(range.end + duckRamp);
    }

    std::vector<VolumePoint> points;
    for (double const time : times)
        points.push_back({time, float(base * duckFactor(time, duckRanges))});
    return points;
}

} // namespace framewright
