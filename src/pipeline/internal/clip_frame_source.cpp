#include "pipeline/internal/clip_frame_source.h"

#include "media/media_error.h"
#include "model/time_rules.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace framewright {

namespace {

/// A decoder that is needed again within this time stays open. Seconds.
constexpr double soon = 5;
/// Within the same file, a jump forward this short is read through rather than opened ahead.
constexpr double shortSkip = 0.25;
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

ClipFrameSource::ClipFrameSource(BuiltComposition const& composition, Files files,
                                 FrameDrawer::Options const& options)
    : m_composition(composition), m_files(files), m_options(options)
{
}

void ClipFrameSource::openAhead(double time)
{
    for (CompositionTrack const& track : m_composition.tracks) {
        if (track.kind != CompositionTrack::Kind::video)
            continue;
        CompositionSegment const* const next = opensNext(track, time);
        if (!next)
            m_files.ahead.drop(track.id);
        else if (!m_files.ahead.has(track.id, *next) && !m_files.ahead.isBusy()) {
            report(*next, time);
            auto const playing = m_playing.find(track.id);
            bool const isInUse = playing != m_playing.end() && playing->second.segment &&
                                 playing->second.segment->file == next->file;
            m_files.ahead.prepare(track.id, *next,
                                  isInUse ? std::nullopt
                                          : m_files.readers.take(next->file, track.id));
        }
    }
}

/// The track's next segment, if it begins soon and needs a decoder other than the one that plays.
CompositionSegment const* ClipFrameSource::opensNext(CompositionTrack const& track,
                                                     double time) const
{
    auto const startOf = [](CompositionSegment const& segment) {
        return segment.timeRange.start.seconds();
    };
    auto const next = std::ranges::upper_bound(track.segments, time, {}, startOf);
    if (next == track.segments.end() || startOf(*next) > time + m_options.openAhead ||
        next->source != CompositionSegment::Source::footage || !isVisible(track, *next))
        return nullptr;
    auto const playing = m_playing.find(track.id);
    if (playing == m_playing.end() || !playing->second.segment)
        return &*next;
    CompositionSegment const& current = *playing->second.segment;
    double const skipped = next->sourceStart - current.sourceTimeAt(startOf(*next));
    bool const readsOn =
        current.file == next->file && skipped > -timeTolerance && skipped < shortSkip;
    return readsOn ? nullptr : &*next;
}

bool ClipFrameSource::isVisible(CompositionTrack const& track,
                                CompositionSegment const& segment) const
{
    VideoComposition const& video = m_composition.video;
    auto const& layers =
        video.instructions[video.instructionIndexAt(segment.timeRange.start)].layers;
    return std::ranges::any_of(layers, [&](Layer const& layer) {
        return layer.trackID == track.id && layer.clipID == segment.clipID && layer.opacity > 0;
    });
}

void ClipFrameSource::report(CompositionSegment const& segment, double time) const
{
    if (m_options.opening)
        m_options.opening(segment.file, time);
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
        playing = {&segment, reader(track, segment, time), std::nullopt};
    }
    // A time that was rounded into the segment must not show source frames before the cut.
    double const start = segment.timeRange.start.seconds();
    return playing.reader->frameAt(segment.sourceTimeAt(std::max(time, start)));
}

std::shared_ptr<VideoReader> ClipFrameSource::reader(CompositionTrack const& track,
                                                     CompositionSegment const& segment, double time)
{
    int const lane = isForward() ? track.id : 0;
    if (auto prepared = m_files.ahead.take(track.id, segment)) {
        m_files.readers.adopt(*prepared, lane);
        return prepared->reader;
    }
    bool hasOpened = false;
    auto reader = m_files.readers.reader(segment.file, lane, hasOpened);
    if (hasOpened)
        report(segment, time);
    return reader;
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
        playing = {&segment, nullptr, m_files.photos.photo(segment.file, side)};
    }
    return *playing.photo;
}

/// Releases the files of tracks whose clip has ended.
void ClipFrameSource::closeFinished(double time)
{
    for (auto const& [id, playing] : m_playing) {
        if (playing.segment && playing.segment->timeRange.end.seconds() <= time)
            leave(*m_composition.track(id), time);
    }
}

/// Releases the track's decoder or photo, before the next one is opened, to save memory.
void ClipFrameSource::leave(CompositionTrack const& track, double time)
{
    CompositionSegment const* const left = std::exchange(m_playing[track.id], {}).segment;
    if (!left || !isForward())
        return;
    bool const isNeeded =
        std::ranges::any_of(track.segments, [&](CompositionSegment const& segment) {
            return segment.file == left->file && segment.timeRange.end.seconds() > time &&
                   segment.timeRange.start.seconds() < time + soon;
        });
    if (!isNeeded)
        m_files.readers.close(left->file, track.id);
}

} // namespace framewright
