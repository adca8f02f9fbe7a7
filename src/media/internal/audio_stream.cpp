#include "media/internal/audio_stream.h"

#include "media/internal/encoding.h"
#include "media/internal/media_failure.h"

#include <algorithm>
#include <cassert>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace framewright {

namespace {

constexpr int channels = 2;

/// Frames fed to the encoder before the first one. After silence it would take any start for a
/// transient and switch to short windows, which decode to nothing for 9 ms if the frame before is
/// missing.
constexpr int leadIn = 2;

} // namespace

AudioStream::AudioStream(int bitRate, Mp4File& file, std::filesystem::path const& path)
    : m_path(path),
      m_encoder(openAudioEncoder(bitRate, path)),
      m_file(file),
      m_stream(file.addStream(*m_encoder)),
      m_packet(newPacket())
{
    beginBlock();
}

FrameHandle AudioStream::newBlock() const
{
    FrameHandle block = newFrame();
    block->format = m_encoder->sample_fmt;
    block->sample_rate = m_encoder->sample_rate;
    block->ch_layout = m_encoder->ch_layout;
    block->nb_samples = m_encoder->frame_size;
    if (av_frame_get_buffer(block.get(), 0) < 0)
        throw std::bad_alloc();
    return block;
}

void AudioStream::beginBlock()
{
    if (m_block && av_frame_is_writable(m_block.get()))
        m_block->nb_samples = m_encoder->frame_size;
    else
        m_block = newBlock();
    m_blockLength = 0;
}

void AudioStream::write(std::span<float const> interleaved)
{
    assert(interleaved.size() % 2 == 0);
    for (std::size_t i = 0; i + 1 < interleaved.size(); i += 2) {
        reinterpret_cast<float*>(m_block->data[0])[m_blockLength] = interleaved[i];
        reinterpret_cast<float*>(m_block->data[1])[m_blockLength] = interleaved[i + 1];
        if (++m_blockLength == m_encoder->frame_size)
            writeBlock();
    }
}

void AudioStream::writeBlock()
{
    if (m_blockStart == 0)
        writeLeadIn();
    m_block->nb_samples = m_blockLength;
    m_block->pts = m_blockStart;
    m_blockStart += m_blockLength;
    encode(m_block.get());
    beginBlock();
}

/// Feeds the first block, then the same mirrored, so that the audio continues from it without a
/// transient. The resulting packets have negative timestamps and are discarded.
void AudioStream::writeLeadIn()
{
    for (int number = -leadIn; number < 0; ++number) {
        FrameHandle const block = newBlock();
        if (av_frame_copy(block.get(), m_block.get()) < 0)
            throw std::bad_alloc();
        for (int i = 0; number % 2 != 0 && i < channels; ++i) {
            auto* const samples = reinterpret_cast<float*>(block->data[i]);
            std::reverse(samples, samples + block->nb_samples);
        }
        block->pts = std::int64_t(number) * block->nb_samples;
        encode(block.get());
    }
}

void AudioStream::finish()
{
    if (m_blockLength > 0) {
        // The encoder reads a whole frame, also past nb_samples.
        av_samples_set_silence(m_block->extended_data, m_blockLength,
                               m_encoder->frame_size - m_blockLength, channels,
                               m_encoder->sample_fmt);
        writeBlock();
    }
    encode(nullptr);
}

void AudioStream::encode(AVFrame const* frame)
{
    forgetLibraryMessages();
    int result = avcodec_send_frame(m_encoder.get(), frame);
    while (result >= 0) {
        result = avcodec_receive_packet(m_encoder.get(), m_packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        // Priming packets are discarded: see the class.
        if (result >= 0 && m_packet->pts >= 0)
            m_file.write(*m_packet, *m_stream, *m_encoder);
        av_packet_unref(m_packet.get());
    }
    throw libraryFailure(m_path, "written", result);
}

} // namespace framewright
