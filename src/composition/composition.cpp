#include "composition/composition.h"

#include <algorithm>

namespace framewright {

CompositionSegment const* CompositionTrack::segmentAt(MediaTime time, Id const& clipID) const
{
    auto const next =
        std::ranges::upper_bound(segments, time, {}, [](CompositionSegment const& segment) {
            return segment.timeRange.start;
        });
    for (auto segment = next; segment != segments.begin();) {
        --segment;
        if (time < segment->timeRange.end && segment->clipID == clipID)
            return &*segment;
    }
    return nullptr;
}

std::vector<CompositionTrackID> CompositorInstruction::requiredSourceTrackIDs() const
{
    std::vector<CompositionTrackID> ids;
    for (Layer const& layer : layers)
        ids.push_back(layer.trackID);
    return ids;
}

std::size_t VideoComposition::instructionIndexAt(MediaTime time) const
{
    auto const next = std::ranges::upper_bound(
        instructions, time, {},
        [](CompositorInstruction const& instruction) { return instruction.timeRange.start; });
    return next == instructions.begin() ? 0 : std::size_t(next - instructions.begin()) - 1;
}

CompositionTrack const* BuiltComposition::track(CompositionTrackID id) const
{
    return id >= 1 && std::size_t(id) <= tracks.size() ? &tracks[std::size_t(id) - 1] : nullptr;
}

} // namespace framewright
