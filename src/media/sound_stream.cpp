#include "media/sound_stream.h"

#include "media/encoding.h"
#include "media/media_failure.h"

#include <cassert>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace framewright {

namespace {

constexpr int channels = 2;

}

SoundStream::SoundStream(int bitRate, Mp4File& file, std::filesystem::path const& path)
    : m_path(path),
      m_encoder(openSoundEncoder(bitRate, path)),
      m_file(file),
      m_stream(file.addStream(*m_encoder)),
      m_block(newFrame()),
      m_packet(newPacket())
{
    beginBlock();
}

void SoundStream::beginBlock()
{
    if (m_block->buf[0] && av_frame_is_writable(m_block.get())) {
        m_block->nb_samples = m_encoder->frame_size;
    } else {
        av_frame_unref(m_block.get());
        m_block->format = m_encoder->sample_fmt;
        m_block->sample_rate = m_encoder->sample_rate;
        m_block->ch_layout = m_encoder->ch_layout;
        m_block->nb_samples = m_encoder->frame_size;
        if (av_frame_get_buffer(m_block.get(), 0) < 0)
            throw std::bad_alloc();
    }
    m_blockLength = 0;
}

void SoundStream::write(std::span<float const> interleaved)
{
    assert(interleaved.size() % 2 == 0);
    for (std::size_t i = 0; i + 1 < interleaved.size(); i += 2) {
        reinterpret_cast<float*>(m_block->data[0])[m_blockLength] = interleaved[i];
        reinterpret_cast<float*>(m_block->data[1])[m_blockLength] = interleaved[i + 1];
        if (++m_blockLength == m_encoder->frame_size)
            writeBlock();
    }
}

void SoundStream::writeBlock()
{
    m_block->nb_samples = m_blockLength;
    m_block->pts = m_blockStart;
    m_blockStart += m_blockLength;
    encode(m_block.get());
    beginBlock();
}

void SoundStream::finish()
{
    if (m_blockLength > 0) {
        // The encoder reads on behind the last samples.
        av_samples_set_silence(m_block->extended_data, m_blockLength,
                               m_encoder->frame_size - m_blockLength, channels,
                               m_encoder->sample_fmt);
        writeBlock();
    }
    encode(nullptr);
}

void SoundStream::encode(AVFrame const* frame)
{
    forgetLibraryMessages();
    int result = avcodec_send_frame(m_encoder.get(), frame);
    while (result >= 0) {
        result = avcodec_receive_packet(m_encoder.get(), m_packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result >= 0)
            m_file.write(*m_packet, *m_stream, *m_encoder);
    }
    throw libraryFailure(m_path, "written", result);
}

} // namespace framewright
