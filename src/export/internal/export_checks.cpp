#include "export/internal/export_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <system_error>
#include <utility>

namespace framewright {

namespace {

std::string sizeText(std::uintmax_t bytes)
{
    double const megabytes = double(bytes) / 1e6;
    return megabytes < 1000 ? fmt::format("{:.0f} MB", std::ceil(megabytes))
                            : fmt::format("{:.1f} GB", std::ceil(megabytes / 100) / 10);
}

double bitsPerPixel(ExpectedMovie const& movie)
{
    if (movie.quality == ExportSettings::Quality::preview)
        return 0.08;
    return movie.isHDR ? 0.09 : 0.12;
}

std::string tagText(ColorTags colors)
{
    return fmt::format("{}/{}/{}", colors.primaries, colors.transfer, colors.matrix);
}

bool meet(MediaTimeRange const& a, MediaTimeRange const& b)
{
    return a.start < b.end && b.start < a.end;
}

/// A clip as one of the tracks plays it, its picture or its sound.
using PlayedClip = std::pair<CompositionTrackID, Id>;

/// The clips whose picture is seen at some time of the range.
std::set<PlayedClip> seenClips(VideoComposition const& video, MediaTimeRange const& range)
{
    std::set<PlayedClip> seen;
    for (CompositorInstruction const& instruction : video.instructions) {
        if (!meet(instruction.timeRange, range))
            continue;
        for (Layer const& layer : instruction.layers) {
            if (layer.opacity > 0)
                seen.insert({layer.trackID, layer.clipID});
        }
    }
    return seen;
}

/// The clips whose sound is turned up at some time of the range.
std::set<PlayedClip> heardClips(AudioMix const& mix, MediaTimeRange const& range)
{
    auto const isHeard = [&](AudioMix::Step const& step) {
        return meet(step.timeRange, range) && (step.startVolume > 0 || step.endVolume > 0);
    };
    std::set<PlayedClip> heard;
    for (auto const& [track, clips] : mix.tracks) {
        for (AudioMix::ClipLevels const& clip : clips) {
            if (clip.steps.empty() || std::ranges::any_of(clip.steps, isHeard))
                heard.insert({track, clip.clipID});
        }
    }
    return heard;
}

} // namespace

std::uintmax_t estimatedBytes(ExpectedMovie const& movie)
{
    constexpr double soundBits = 160'000;
    constexpr double index = 500'000; // What even the shortest file should have room for.
    double const pixels = double(movie.size.width) * movie.size.height * movie.framesPerSecond;
    return std::uintmax_t(index + movie.duration * (pixels * bitsPerPixel(movie) + soundBits) / 8);
}

std::optional<std::string> spaceProblem(std::filesystem::path const& folder, std::uintmax_t needed,
                                        std::uintmax_t free)
{
    if (free >= needed)
        return std::nullopt;
    return fmt::format("The export needs about {}, but only {} are free in {}. Free some space or "
                       "export somewhere else.",
                       sizeText(needed), sizeText(free), folder.string());
}

std::vector<FileIdentity> sourcesOf(BuiltComposition const& composition, TimeRange span)
{
    MediaTimeRange const range{MediaTime::fromSeconds(span.start),
                               MediaTime::fromSeconds(span.end)};
    std::set<PlayedClip> played = seenClips(composition.video, range);
    played.merge(heardClips(composition.audioMix, range));
    std::set<std::filesystem::path> files;
    for (CompositionTrack const& track : composition.tracks) {
        for (CompositionSegment const& segment : track.segments) {
            if (played.contains({track.id, segment.clipID}))
                files.insert(segment.file);
        }
    }
    files.erase(std::filesystem::path()); // Of the black plate.
    std::vector<FileIdentity> sources;
    std::ranges::transform(files, std::back_inserter(sources), FileIdentity::of);
    return sources;
}

std::optional<std::string> sourceProblem(std::vector<FileIdentity> const& sources)
{
    for (FileIdentity const& source : sources) {
        std::error_code failed;
        if (FileIdentity::of(source.file) != source && std::filesystem::exists(source.file, failed))
            return source.file.filename().string() +
                   " was changed while it was exported. Nothing was kept; please export again.";
    }
    return std::nullopt;
}

std::optional<std::string> movieProblem(MediaInfo const& found, ExpectedMovie const& expected)
{
    char const* const codec = expected.isHDR ? "hevc" : "h264";
    char const* const tag = expected.isHDR ? "hvc1" : "avc1";
    ColorTags const colors = expected.isHDR ? ColorTags::hlg() : ColorTags::bt709();
    double const frame = 1.0 / expected.framesPerSecond;

    std::string what;
    if (!found.hasVideo)
        what = "it has no picture";
    else if (found.width != expected.size.width || found.height != expected.size.height)
        what = fmt::format("its picture is {} × {} instead of {} × {}", found.width, found.height,
                           expected.size.width, expected.size.height);
    else if (found.videoCodec != codec || found.videoTag != tag)
        what = fmt::format("its picture is {} ({}) instead of {} ({})", found.videoCodec,
                           found.videoTag, codec, tag);
    else if (tagText(found.colors) != tagText(colors) || found.colors.isFullRange)
        what = fmt::format("its colours are marked {} instead of {}", tagText(found.colors),
                           tagText(colors));
    else if (!found.hasAudio || found.audioCodec != "aac")
        what = "its sound is missing";
    else if (std::abs(found.duration - expected.duration) > frame)
        what =
            fmt::format("it lasts {:.3f} s instead of {:.3f} s", found.duration, expected.duration);
    if (what.empty())
        return std::nullopt;
    return "The exported file is not right: " + what + ". It was not kept; please export again.";
}

} // namespace framewright
