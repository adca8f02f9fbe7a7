#include "media/internal/audio_decoder.h"

#include "media/internal/media_failure.h"

#include <algorithm>
#include <utility>

extern "C" {
#include <libavutil/intreadwrite.h>
}

namespace framewright {

namespace {

/// After this many undecodable packets in a row the stream counts as ended.
constexpr int maxFailuresInARow = 1000;

} // namespace

AudioDecoder::AudioDecoder(MediaInput& input, AVStream& stream)
    : m_input(input),
      m_stream(stream),
      m_decoder(input.openDecoder(stream, 1)),
      m_packet(newPacket()),
      m_nextStamp(input.zero(stream))
{
    // Trimming is reported, not applied, by the decoder: SampleClock needs whole blocks.
    m_decoder->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
    input.readOnly(stream);
    m_first = decoded();
    if (!m_first)
        throw damage(input.path(), "none of its audio can be decoded");
    m_sampleRate = m_first->frame->sample_rate;
    m_clock.emplace(input, stream,
                    SampleClock::FirstBlock{m_first->frame->pts, m_first->frame->nb_samples,
                                            m_first->skippedInFront, m_sampleRate});
}

std::optional<AudioBlock> AudioDecoder::next()
{
    m_isDamaged = false;
    while (auto block = m_first ? std::exchange(m_first, std::nullopt) : decoded()) {
        AudioBlock audio = placed(std::move(*block));
        m_expected = audio.position + audio.frame->nb_samples;
        audio.position += audio.begin;
        if (audio.length() > 0)
            return audio;
    }
    m_isDamaged = m_hasFailed;
    return std::nullopt;
}

AudioBlock AudioDecoder::placed(Decoded decoded)
{
    AudioBlock block;
    int const samples = decoded.frame->nb_samples;
    block.position = m_clock->position(decoded.frame->pts, m_expected);
    block.begin = std::min(samples, decoded.skippedInFront);
    block.end = std::max(block.begin, samples - decoded.droppedAtEnd);
    if (auto const end = m_clock->end(); end && block.position + block.end > *end)
        block.end =
            std::max<int>(block.begin, int(std::max<std::int64_t>(0, *end - block.position)));
    if (decoded.frame->flags & AV_FRAME_FLAG_DISCARD) // Cut away by the edit list.
        block.end = block.begin;
    block.frame = std::move(decoded.frame);
    return block;
}

std::optional<AudioDecoder::Decoded> AudioDecoder::decoded()
{
    FrameHandle frame = newFrame();
    while (true) {
        int const result = avcodec_receive_frame(m_decoder.get(), frame.get());
        if (result == AVERROR(ENOMEM))
            throw std::bad_alloc();
        if (result == AVERROR_EOF || m_failuresInARow > maxFailuresInARow)
            return std::nullopt;
        // If a stream changes its sample rate midway, the rest is treated as damaged.
        bool const isUsable = result >= 0 && frame->nb_samples > 0 && frame->sample_rate > 0 &&
                              (m_sampleRate == 0 || frame->sample_rate == m_sampleRate);
        if (result == AVERROR(EAGAIN) ? !feed() : !isUsable) {
            m_isDamaged = m_hasFailed = true;
            ++m_failuresInARow;
        } else if (result >= 0 && setStamp(*frame)) {
            m_failuresInARow = 0;
            return withTrimming(std::move(frame));
        }
        av_frame_unref(frame.get());
    }
}

/// Sets a block's timestamp; one without continues from the block before. False when that is
/// unknown too: in Ogg after a seek, until the next page with a timestamp.
bool AudioDecoder::setStamp(AVFrame& frame)
{
    if (frame.best_effort_timestamp != AV_NOPTS_VALUE)
        frame.pts = frame.best_effort_timestamp;
    else if (m_nextStamp)
        frame.pts = *m_nextStamp;
    else
        return false;
    m_nextStamp =
        frame.pts + av_rescale_q(frame.nb_samples, {1, frame.sample_rate}, m_stream.time_base);
    return true;
}

AudioDecoder::Decoded AudioDecoder::withTrimming(FrameHandle frame)
{
    constexpr std::uint32_t longest = 1U << 20;
    Decoded block;
    AVFrameSideData const* const skip =
        av_frame_get_side_data(frame.get(), AV_FRAME_DATA_SKIP_SAMPLES);
    if (skip && skip->size >= 8) {
        block.skippedInFront = int(std::min<std::uint32_t>(AV_RL32(skip->data), longest));
        block.droppedAtEnd = int(std::min<std::uint32_t>(AV_RL32(skip->data + 4), longest));
    }
    block.frame = std::move(frame);
    return block;
}

/// Sends the decoder one packet. False when that fails.
bool AudioDecoder::feed()
{
    try {
        if (!m_input.read(*m_packet)) {
            avcodec_send_packet(m_decoder.get(), nullptr);
            return true;
        }
    } catch (MediaError const&) {
        return false;
    }
    int result = 0;
    bool const isSkipped = m_skipUntil && m_packet->pts != AV_NOPTS_VALUE &&
                           m_packet->pts + m_packet->duration < *m_skipUntil;
    if (m_packet->stream_index == m_stream.index && !isSkipped)
        result = avcodec_send_packet(m_decoder.get(), m_packet.get());
    av_packet_unref(m_packet.get());
    if (result == AVERROR(ENOMEM))
        throw std::bad_alloc();
    return result >= 0;
}

void AudioDecoder::seek(std::int64_t position)
{
    std::int64_t const stamp = m_clock->stampOf(position);
    m_input.seek(m_stream, stamp);
    reset();
    if (!m_input.container().seeksReliably())
        m_skipUntil = stamp;
}

void AudioDecoder::seekToStart()
{
    m_input.seekToStart(m_stream);
    reset();
}

void AudioDecoder::reset()
{
    avcodec_flush_buffers(m_decoder.get());
    m_first.reset();
    m_skipUntil.reset();
    m_expected.reset();
    m_nextStamp.reset();
    m_failuresInARow = 0;
    m_isDamaged = m_hasFailed = false;
}

} // namespace framewright
