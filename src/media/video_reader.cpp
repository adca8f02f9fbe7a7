#include "media/video_reader.h"

#include "media/internal/media_failure.h"
#include "media/internal/media_file.h"
#include "media/internal/media_input.h"
#include "media/internal/planar_converter.h"
#include "media/internal/video_decoder.h"
#include "model/time_rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace framewright {

namespace {

/// Seeks only to keyframes at least this many seconds ahead: a seek discards what the decoder's
/// threads have in flight.
constexpr double minSeekGain = 0.3;

/// In a file without an index of what is ahead, distances above this many seconds are sought.
constexpr double blindSeek = 5;

/// How long before the wanted frame skipping stops: this many frames, at most so many seconds.
constexpr double marginFrames = 3;
constexpr double longestMargin = 0.5;

/// Seconds of undecodable data at the end that are tolerated, and the last good frame shown there:
/// recorders that lost power leave such ends in otherwise good files.
constexpr double toleratedLoss = 0.5;

constexpr auto never = std::numeric_limits<std::int64_t>::min();

AVStream& videoOf(MediaInput const& input)
{
    if (!input.video())
        throw failure(MediaError::Cause::unsupported, input.path(), "has no video.");
    return *input.video();
}

} // namespace

/// Finds the frame for a time.
///
/// The problem: a compressed frame can be decoded only after the frames it refers to, back to a
/// keyframe, and containers are vague about where those are. Indexes may count in decoding times,
/// which run ahead of display times; a keyframe of an open GOP doesn't suffice for the frames shown
/// just before it; variable frame rates make the frame at a given time unpredictable.
///
/// The method: keep the current frame and the one after it, since only the next frame's time says
/// how long the current one is shown. A time ahead is reached by decoding on, unless the index has
/// a keyframe further ahead. A time behind is sought: start at the keyframe before it, decode, and
/// if the first frame that comes out is already too late, start again from 1, 2, 4, … seconds
/// earlier until one is early enough.
///
/// Most of a seek's cost is decoding frames nobody will see, so frames that no other refers to are
/// skipped until shortly before the wanted time. In a file with long gaps between frames the wanted
/// one may itself be among them. The decoder reports the latest time it skipped; if that is after
/// the frame found, the seek is repeated without skipping.
class VideoReader::Impl {
public:
    Impl(std::filesystem::path const& file, int threads, ReadingActivity activity)
        : m_input(openMediaFile(file), file, MediaInput::Detail::forReading, std::move(activity)),
          m_stream(videoOf(m_input)),
          m_zero(m_input.zero(m_stream)),
          m_decoder(m_input, m_stream, threads)
    {
    }

    Frame frameAt(double seconds)
    {
        std::int64_t const time = m_zero + unitsOf(seconds + timeTolerance);
        if (!shows(time))
            moveTo(time);
        if (m_missing && time >= *m_missing)
            throw damage(m_input.path(), fmt::format("its video at {:.2f} s cannot be decoded",
                                                     std::max(0.0, seconds)));
        if (!m_shown)
            m_shown = m_converter.frameOf(*m_current->frame);
        return *m_shown;
    }

private:
    /// In the stream's time base, rounded down.
    std::int64_t unitsOf(double seconds) const
    {
        constexpr double longest = 1e15;
        double const units = std::floor(seconds / av_q2d(m_stream.time_base));
        return std::isnan(units) ? 0 : std::int64_t(std::clamp(units, -longest, longest));
    }

    bool shows(std::int64_t time) const
    {
        return m_current && (m_isFirst || time >= m_current->time) &&
               (m_next ? time < m_next->time : m_isLast);
    }

    void moveTo(std::int64_t time)
    {
        if (!m_current || time < m_current->time || shouldSeek(time))
            seekTo(time, time - unitsOf(skipMargin()));
        readUntil(time);
        if (m_decoder.lastSkipped() && m_current->time < *m_decoder.lastSkipped()) {
            seekTo(time, never);
            readUntil(time);
        }
    }

    double skipMargin() const
    {
        double const rate = av_q2d(m_stream.avg_frame_rate);
        return rate > 0 ? std::min(longestMargin, marginFrames / rate) : longestMargin;
    }

    void readUntil(std::int64_t time)
    {
        while (m_next && m_next->time <= time)
            advance();
    }

    bool shouldSeek(std::int64_t time) const
    {
        auto const readUpTo = m_decoder.readUpTo();
        if (!readUpTo)
            return false;
        AVIndexEntry const* const keyframe =
            avformat_index_get_entry_from_timestamp(&m_stream, time, AVSEEK_FLAG_BACKWARD);
        if (keyframe && keyframe->timestamp > *readUpTo + unitsOf(minSeekGain))
            return true;
        int const entries = avformat_index_get_entries_count(&m_stream);
        bool const knowsAhead =
            entries > 0 && avformat_index_get_entry(&m_stream, entries - 1)->timestamp > *readUpTo;
        return !knowsAhead && time > *readUpTo + unitsOf(blindSeek);
    }

    /// Makes a frame at or before `time` the current one, or else the first frame.
    void seekTo(std::int64_t time, std::int64_t skipUntil)
    {
        m_current.reset();
        std::int64_t const start = m_input.firstTime(m_stream);
        std::int64_t from = time;
        for (double back = 1;; back *= 2) {
            m_isFirst = from <= start;
            if (m_isFirst)
                m_decoder.seekToStart(skipUntil);
            else
                m_decoder.seek(from, skipUntil);
            m_next = m_decoder.next();
            if (m_isFirst || (m_next && m_next->time <= time))
                break;
            from -= unitsOf(back);
        }
        if (!m_next)
            throw damage(m_input.path(), "none of its video can be decoded");
        advance();
    }

    void advance()
    {
        m_isFirst = m_isFirst && !m_current;
        m_isLast = false;
        m_shown.reset();
        m_missing.reset();
        m_current = std::move(m_next);
        m_next.reset();
        m_next = m_decoder.next();
        m_isLast = !m_next;
        m_missing = m_decoder.missing();
        if (m_isLast && m_missing && isTolerated(*m_missing))
            m_missing.reset();
    }

    bool isTolerated(std::int64_t missing) const
    {
        double const end = m_input.end(m_stream);
        return end < 0 ||
               end - double(missing - m_zero) * av_q2d(m_stream.time_base) < toleratedLoss;
    }

    MediaInput m_input;
    AVStream& m_stream;
    std::int64_t m_zero;
    VideoDecoder m_decoder;
    PlanarConverter m_converter;

    std::optional<TimedFrame> m_current;
    std::optional<TimedFrame> m_next;
    bool m_isFirst = false;                ///< m_current is the first frame of the stream.
    bool m_isLast = false;                 ///< m_current is the last frame of the stream.
    std::optional<std::int64_t> m_missing; ///< From here to m_next nothing could be decoded.
    std::optional<Frame> m_shown;          ///< m_current, converted.
};

VideoReader::VideoReader(std::filesystem::path const& file, int threads, ReadingActivity activity)
    : m_impl(std::make_unique<Impl>(file, threads, std::move(activity)))
{
}

VideoReader::~VideoReader() = default;
VideoReader::VideoReader(VideoReader&&) noexcept = default;
VideoReader& VideoReader::operator=(VideoReader&&) noexcept = default;

Frame VideoReader::frameAt(double seconds)
{
    return m_impl->frameAt(seconds);
}

} // namespace framewright
