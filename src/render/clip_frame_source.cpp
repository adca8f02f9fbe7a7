#include "render/clip_frame_source.h"

#include "media/media_error.h"

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

/// A decoder that is needed again within this time stays open. Seconds.
constexpr double soon = 5;
constexpr int smallestPhoto = 16;

/// The segment of a track at a time. Cuts nearer than the tolerance are drawn as one, so it may be
/// the neighbour that is meant.
CompositionSegment const* segmentNear(CompositionTrack const& track, double time)
{
    MediaTime const at = MediaTime::fromSeconds(time);
    for (MediaTime const near : {at, MediaTime{at.value + 1}, MediaTime{at.value - 1}}) {
        if (CompositionSegment const* const segment = track.segmentAt(near))
            return segment;
    }
    return nullptr;
}

} // namespace

ClipFrameSource::ClipFrameSource(BuiltComposition const& composition, OpenReaders& readers,
                                 ReadPhotos& photos, Reading reading)
    : m_composition(composition), m_readers(readers), m_photos(photos), m_reading(reading)
{
}

std::optional<Frame> ClipFrameSource::frame(Layer const& layer, double time)
{
    CompositionTrack const* const track = m_composition.track(layer.trackID);
    CompositionSegment const* const segment = track ? segmentNear(*track, time) : nullptr;
    if (!segment || segment->source == CompositionSegment::Source::black)
        return std::nullopt; // Between two cuts that are nearer than the media engine counts.
    try {
        return segment->source == CompositionSegment::Source::still
                   ? still(layer, *segment)
                   : footage(*track, *segment, time);
    } catch (MediaError const& error) {
        throw MediaError(error.cause, "Can't draw " + segment->name + ". " + error.what());
    }
}

std::string ClipFrameSource::name(Layer const& layer, double time) const
{
    CompositionTrack const* const track = m_composition.track(layer.trackID);
    CompositionSegment const* const segment = track ? segmentNear(*track, time) : nullptr;
    return segment ? segment->name + " (" + segment->file.string() + ")" : std::string();
}

Frame ClipFrameSource::footage(CompositionTrack const& track, CompositionSegment const& segment,
                               double time)
{
    Playing& playing = m_playing[track.id];
    if (playing.segment != &segment) {
        int const lane = m_reading == Reading::forward ? track.id : 0;
        CompositionSegment const* const left = playing.segment;
        playing = {};
        if (left && m_reading == Reading::forward)
            closeUnneeded(track, *left, time);
        playing = {&segment, m_readers.reader(segment.file, lane)};
    }
    // A time that was rounded into the segment must not show what lies before its beginning.
    double const start = segment.timeRange.start.seconds();
    return playing.reader->frameAt(segment.sourceTimeAt(std::max(time, start)));
}

Frame ClipFrameSource::still(Layer const& layer, CompositionSegment const& segment)
{
    AffineTransform const& transform = layer.placement.transform;
    double const scale = std::hypot(transform.a, transform.b);
    double const whole = std::max(layer.naturalSize.width, layer.naturalSize.height);
    double const needed = std::max(std::ceil(whole * std::min(scale, 1.0)), double(smallestPhoto));
    return m_photos.photo(segment.file, int(needed));
}

void ClipFrameSource::closeUnneeded(CompositionTrack const& track, CompositionSegment const& left,
                                    double time)
{
    bool const isNeeded =
        std::ranges::any_of(track.segments, [&](CompositionSegment const& segment) {
            return segment.file == left.file && segment.timeRange.end.seconds() > time &&
                   segment.timeRange.start.seconds() < time + soon;
        });
    if (!isNeeded)
        m_readers.close(left.file, track.id);
}

} // namespace framewright
