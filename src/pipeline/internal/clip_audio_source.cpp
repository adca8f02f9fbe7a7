#include "pipeline/internal/clip_audio_source.h"

#include "media/media_error.h"

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

/// Readers kept open after use, for cuts back and forth.
constexpr std::size_t kept = 24;
/// A reader used this recently is still playing and is never closed: reopening it for every block
/// would take far longer than reading. Seconds of the timeline.
constexpr double recently = 1;

} // namespace

void ClipAudioSource::read(CompositionTrackID track, CompositionSegment const& segment,
                           std::int64_t first, std::span<float> interleaved)
{
    double const into = double(first) / AudioReader::sampleRate - segment.sourceStart;
    try {
        reader(track, segment, segment.timeRange.start.seconds() + into).read(first, interleaved);
    } catch (MediaError const& error) {
        throw MediaError(error.cause, "Can't play " + segment.name + ". " + error.what());
    }
}

/// The clip's own reader, or one that no other clip plays at `time`, which is likely to stand where
/// this one begins.
AudioReader& ClipAudioSource::reader(CompositionTrackID track, CompositionSegment const& segment,
                                     double time)
{
    auto const reads = [&](Open const& open) {
        return open.track == track && open.file == segment.file;
    };
    auto found = std::ranges::find_if(m_open, [&](Open const& open) {
        return reads(open) && open.clipID == segment.clipID && open.timeRange == segment.timeRange;
    });
    if (found == m_open.end())
        found = std::ranges::find_if(m_open, [&](Open const& open) {
            return reads(open) && !open.timeRange.contains(MediaTime::fromSeconds(time));
        });
    if (found != m_open.end())
        m_open.splice(m_open.begin(), m_open, found);
    else
        open(track, segment, time);
    Open& front = m_open.front();
    front.clipID = segment.clipID;
    front.timeRange = segment.timeRange;
    front.lastRead = time;
    return front.reader;
}

void ClipAudioSource::open(CompositionTrackID track, CompositionSegment const& segment, double time)
{
    while (m_open.size() >= kept && std::abs(time - m_open.back().lastRead) > recently)
        m_open.pop_back();
    m_open.push_front({track, segment.file, segment.clipID, segment.timeRange, time,
                       AudioReader(segment.file, m_activity)});
}

} // namespace framewright
