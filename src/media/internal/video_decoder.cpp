#include "media/internal/video_decoder.h"

#include "media/internal/media_failure.h"

#include <algorithm>
#include <limits>

namespace framewright {

namespace {

/// After this many undecodable packets in a row the stream counts as ended: more than any damage
/// worth skipping, and quickly read.
constexpr int maxFailuresInARow = 500;

constexpr auto everyFrame = std::numeric_limits<std::int64_t>::min();

} // namespace

VideoDecoder::VideoDecoder(MediaInput& input, AVStream& stream, int threads)
    : m_input(input),
      m_stream(stream),
      m_decoder(input.openDecoder(stream, threads)),
      m_packet(newPacket()),
      m_frame(newFrame()),
      m_skipUntil(everyFrame)
{
    input.readOnly(stream);
}

std::optional<TimedFrame> VideoDecoder::next()
{
    m_missing.reset();
    while (true) {
        int const result = avcodec_receive_frame(m_decoder.get(), m_frame.get());
        if (result == AVERROR(ENOMEM))
            throw std::bad_alloc();
        if (result == AVERROR_EOF || hasGivenUp()) {
            noteMissing(std::numeric_limits<std::int64_t>::max());
            return std::nullopt;
        }
        if (result == AVERROR(EAGAIN)) {
            feed();
        } else if (result < 0) {
            ++m_failures;
            ++m_failuresInARow;
        } else {
            m_failuresInARow = 0;
            std::int64_t time = m_frame->best_effort_timestamp;
            if (time == AV_NOPTS_VALUE)
                time = m_lastEnd.value_or(m_input.zero(m_stream));
            if (m_lastTime && time <= *m_lastTime)
                continue; // The decoder has only now detected the reordering depth.
            noteMissing(time);
            m_lastTime = time;
            m_lastEnd = time + lengthOf(*m_frame);
            TimedFrame frame{newFrame(), time};
            av_frame_move_ref(frame.frame.get(), m_frame.get());
            return frame;
        }
    }
}

void VideoDecoder::feed()
{
    try {
        if (!m_input.read(*m_packet)) {
            send(nullptr);
            return;
        }
    } catch (MediaError const&) {
        ++m_failures;
        ++m_failuresInARow;
        return;
    }
    std::int64_t const shown = m_packet->pts != AV_NOPTS_VALUE ? m_packet->pts : m_packet->dts;
    bool const isWanted = m_packet->stream_index == m_stream.index;
    if (isWanted && m_packet->dts != AV_NOPTS_VALUE)
        m_readUpTo = m_packet->dts;

    bool const isBroken =
        (m_packet->flags & AV_PKT_FLAG_CORRUPT) && !m_input.container().overreportsCorruption();
    bool const maySkip = shown != AV_NOPTS_VALUE && shown < m_skipUntil;
    if (isWanted && maySkip)
        m_lastSkipped = std::max(m_lastSkipped.value_or(shown), shown);
    else if (isWanted && shown != AV_NOPTS_VALUE && !(m_packet->flags & AV_PKT_FLAG_DISCARD))
        m_expected.insert(shown);

    if (isWanted && isBroken) {
        ++m_failures;
        ++m_failuresInARow;
    } else if (isWanted) {
        m_decoder->skip_frame = maySkip ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
        send(m_packet.get());
    }
    av_packet_unref(m_packet.get());
}

void VideoDecoder::send(AVPacket const* packet)
{
    forgetLibraryMessages();
    int const result = avcodec_send_packet(m_decoder.get(), packet);
    if (result == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (result < 0 && result != AVERROR_EOF) {
        ++m_failures;
        ++m_failuresInARow;
    }
}

std::int64_t VideoDecoder::lengthOf(AVFrame const& frame) const
{
    if (frame.pkt_duration > 0)
        return frame.pkt_duration;
    AVRational const rate = m_stream.avg_frame_rate;
    if (rate.num <= 0 || rate.den <= 0)
        return 1;
    return std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(rate), m_stream.time_base));
}

void VideoDecoder::noteMissing(std::int64_t before)
{
    auto const upTo = m_expected.upper_bound(before);
    // Without a failure these are the hidden frames and second fields of some formats.
    if (m_failures > 0) {
        bool const isEnd = before == std::numeric_limits<std::int64_t>::max();
        if (!m_expected.empty() && *m_expected.begin() < before)
            m_missing = *m_expected.begin();
        else if (isEnd)
            m_missing = m_lastEnd;
    }
    m_expected.erase(m_expected.begin(), upTo);
}

bool VideoDecoder::hasGivenUp() const
{
    return m_failuresInARow > maxFailuresInARow;
}

void VideoDecoder::seek(std::int64_t time, std::int64_t skipUntil)
{
    m_input.seek(m_stream, time);
    reset(skipUntil);
}

void VideoDecoder::seekToStart(std::int64_t skipUntil)
{
    m_input.seekToStart(m_stream);
    reset(skipUntil);
}

void VideoDecoder::reset(std::int64_t skipUntil)
{
    avcodec_flush_buffers(m_decoder.get());
    m_skipUntil = skipUntil;
    m_lastSkipped.reset();
    m_readUpTo.reset();
    m_lastEnd.reset();
    m_lastTime.reset();
    m_missing.reset();
    m_expected.clear();
    m_failures = 0;
    m_failuresInARow = 0;
}

} // namespace framewright
