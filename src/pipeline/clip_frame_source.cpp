#include "pipeline/clip_frame_source.h"

#include "media/media_error.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace framewright {

namespace {

/// A decoder that is needed again within this time stays open. Seconds.
constexpr double soon = 5;
/// Photos are read this much larger than they are shown, since our scaler makes a sharper picture
/// of it than their readers do.
constexpr double spareDetail = 2;
constexpr int smallestPhoto = 16;
/// No side of a photo is read larger, however far it is zoomed into: the largest export has 3840
/// pixels, and each photo that is shown at a time takes three bytes for each pixel.
constexpr int largestPhoto = 4096;

/// The segment of a layer's clip at a time. Cuts nearer than the tolerance are drawn as one, so it
/// may begin a little later or have ended.
CompositionSegment const* segmentNear(CompositionTrack const& track, Layer const& layer,
                                      double time)
{
    MediaTime const at = MediaTime::fromSeconds(time);
    for (MediaTime const near : {at, MediaTime{at.value + 1}, MediaTime{at.value - 1}}) {
        if (CompositionSegment const* const segment = track.segmentAt(near, layer.clipID))
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
    CompositionSegment const* const segment = track ? segmentNear(*track, layer, time) : nullptr;
    if (!segment || segment->source == CompositionSegment::Source::black)
        return std::nullopt; // Between two cuts that are nearer than the media engine counts.
    closeFinished(time);
    try {
        return segment->source == CompositionSegment::Source::still
                   ? still(layer, *track, *segment, time)
                   : footage(*track, *segment, time);
    } catch (MediaError const& error) {
        throw MediaError(error.cause, "Can't draw " + segment->name + ". " + error.what());
    }
}

std::string ClipFrameSource::name(Layer const& layer, double time) const
{
    CompositionTrack const* const track = m_composition.track(layer.trackID);
    CompositionSegment const* const segment = track ? segmentNear(*track, layer, time) : nullptr;
    return segment ? segment->name + " (" + segment->file.string() + ")" : std::string();
}

Frame ClipFrameSource::footage(CompositionTrack const& track, CompositionSegment const& segment,
                               double time)
{
    Playing& playing = m_playing[track.id];
    if (playing.segment != &segment) {
        leave(track, time);
        int const lane = m_reading == Reading::forward ? track.id : 0;
        playing = {&segment, m_readers.reader(segment.file, lane), std::nullopt};
    }
    // A time that was rounded into the segment must not show what lies before its beginning.
    double const start = segment.timeRange.start.seconds();
    return playing.reader->frameAt(segment.sourceTimeAt(std::max(time, start)));
}

/// It stays with its track while it plays there, so any number may be seen at once.
Frame ClipFrameSource::still(Layer const& layer, CompositionTrack const& track,
                             CompositionSegment const& segment, double time)
{
    Playing& playing = m_playing[track.id];
    if (playing.segment != &segment || !playing.photo) {
        leave(track, time);
        AffineTransform const& transform = layer.placement.transform;
        double const scale = std::hypot(transform.a, transform.b);
        double const whole = std::max(layer.naturalSize.width, layer.naturalSize.height);
        double const needed = std::ceil(whole * std::min(scale * spareDetail, 1.0));
        int const side = int(std::clamp<double>(needed, smallestPhoto, largestPhoto));
        playing = {&segment, nullptr, m_photos.photo(segment.file, side)};
    }
    return *playing.photo;
}

/// Lets go of what tracks held that play nothing any more.
void ClipFrameSource::closeFinished(double time)
{
    for (auto const& [id, playing] : m_playing) {
        if (playing.segment && playing.segment->timeRange.end.seconds() <= time)
            leave(*m_composition.track(id), time);
    }
}

/// Lets go of what the track held, before the next is opened: there need not be room for both.
void ClipFrameSource::leave(CompositionTrack const& track, double time)
{
    CompositionSegment const* const left = std::exchange(m_playing[track.id], {}).segment;
    if (!left || m_reading == Reading::anywhere)
        return;
    bool const isNeeded =
        std::ranges::any_of(track.segments, [&](CompositionSegment const& segment) {
            return segment.file == left->file && segment.timeRange.end.seconds() > time &&
                   segment.timeRange.start.seconds() < time + soon;
        });
    if (!isNeeded)
        m_readers.close(left->file, track.id);
}

} // namespace framewright
