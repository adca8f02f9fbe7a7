#include "composition/composition_validator.h"

#include <fmt/format.h>

namespace framewright {

namespace {

/// Cuts nearer than the tolerance are one, so a picture may begin or end this much off its
/// instruction.
constexpr std::int64_t slack = 1;

bool playsThroughout(CompositionTrack const& track, MediaTimeRange const& range)
{
    MediaTime time = range.start;
    for (CompositionSegment const& segment : track.segments) {
        if (segment.timeRange.end.value <= time.value + slack && segment.timeRange.end < range.end)
            continue;
        if (segment.timeRange.start.value > time.value + slack)
            return false;
        time = segment.timeRange.end;
        if (time.value + slack >= range.end.value)
            return true;
    }
    return time.value + slack >= range.end.value;
}

bool canDraw(BuiltComposition const& composition, Layer const& layer, MediaTimeRange const& range)
{
    CompositionTrack const* const track = composition.track(layer.trackID);
    if (!track || track->kind != CompositionTrack::Kind::video)
        return false;
    return layer.isBlackPlate || layer.placement.frame.isEmpty() || playsThroughout(*track, range);
}

} // namespace

std::optional<std::string> CompositionValidator::problem(BuiltComposition const& composition)
{
    MediaTime const end = MediaTime::fromSeconds(composition.duration);
    auto const& instructions = composition.video.instructions;
    if (instructions.empty())
        return fmt::format("Composition invalid: instruction time range {:.3f}-{:.3f}", 0.0,
                           end.seconds());

    MediaTime expected;
    for (CompositorInstruction const& instruction : instructions) {
        MediaTimeRange const& range = instruction.timeRange;
        bool const isLast = &instruction == &instructions.back();
        bool const isWhole = range.start < range.end || end == MediaTime{};
        if (range.start != expected || !isWhole || (isLast && range.end != end))
            return fmt::format("Composition invalid: instruction time range {:.3f}-{:.3f}",
                               range.start.seconds(), range.end.seconds());
        expected = range.end;
        for (Layer const& layer : instruction.layers) {
            if (!canDraw(composition, layer, range))
                return fmt::format("Composition invalid: track {} in instruction {:.3f}-{:.3f}",
                                   layer.trackID, range.start.seconds(), range.end.seconds());
        }
    }
    return std::nullopt;
}

} // namespace framewright
