#include "media/movie_writer.h"

#include "media/internal/audio_stream.h"
#include "media/internal/av_handles.h"
#include "media/internal/encoding.h"
#include "media/internal/frame_storage.h"
#include "media/internal/media_failure.h"
#include "media/internal/mp4_file.h"
#include "media/internal/pixel_format.h"
#include "media/internal/stream_mastering.h"

#include <cassert>
#include <stdexcept>

namespace framewright {

namespace {

/// A reference to the pixels without what the source file attached to them (frame type,
/// interlacing, side data), which would influence the encoder.
FrameHandle plainReference(Frame const& frame, std::int64_t time)
{
    auto reference = made<FrameHandle>(av_frame_clone(&avFrame(frame)));
    while (reference->nb_side_data > 0)
        av_frame_remove_side_data(reference.get(), reference->side_data[0]->type);
    reference->pts = time;
    reference->pict_type = AV_PICTURE_TYPE_NONE;
    reference->interlaced_frame = 0;
    reference->repeat_pict = 0;
    return reference;
}

} // namespace

class MovieWriter::Impl {
public:
    Impl(std::filesystem::path const& file, MovieSettings const& settings)
        : m_path(file),
          m_videoEncoder(openVideoEncoder(settings, file)),
          m_file(file, Mp4File::Kind::movie),
          m_videoStream(m_file.addStream(*m_videoEncoder)),
          m_audio(settings.audioBitRate, m_file, file),
          m_packet(newPacket())
    {
        if (settings.mastering && settings.codec == MovieSettings::Codec::hevcHLG)
            setMasteringDisplay(*m_videoStream, *settings.mastering);
        m_file.setActivity(settings.activity);
        m_file.begin();
    }

    void writeFrame(Frame const& frame)
    {
        if (frame.width() != m_videoEncoder->width || frame.height() != m_videoEncoder->height ||
            formatOf(frame.layout()) != m_videoEncoder->pix_fmt)
            throw std::invalid_argument("The frame's size or layout is not the movie's.");
        encode(plainReference(frame, m_frameCount).get());
        ++m_frameCount;
    }

    void writeAudio(std::span<float const> interleaved) { m_audio.write(interleaved); }

    void finish(std::function<void(std::filesystem::path const&)> const& check)
    {
        encode(nullptr);
        m_audio.finish();
        m_file.finish(check);
    }

private:
    /// Null drains the encoder.
    void encode(AVFrame const* frame)
    {
        forgetLibraryMessages();
        int result = avcodec_send_frame(m_videoEncoder.get(), frame);
        while (result >= 0) {
            result = avcodec_receive_packet(m_videoEncoder.get(), m_packet.get());
            if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
                return;
            if (result >= 0)
                m_file.write(*m_packet, *m_videoStream, *m_videoEncoder);
        }
        throw libraryFailure(m_path, "written", result);
    }

    std::filesystem::path m_path;
    CodecHandle m_videoEncoder;
    Mp4File m_file;
    AVStream* m_videoStream;
    AudioStream m_audio;
    PacketHandle m_packet;
    std::int64_t m_frameCount = 0;
};

MovieWriter::MovieWriter(std::filesystem::path const& file, MovieSettings const& settings)
    : m_impl(std::make_unique<Impl>(file, settings))
{
}

MovieWriter::~MovieWriter() = default;

void MovieWriter::writeFrame(Frame const& frame)
{
    m_impl->writeFrame(frame);
}

void MovieWriter::writeAudio(std::span<float const> interleaved)
{
    m_impl->writeAudio(interleaved);
}

void MovieWriter::finish(std::function<void(std::filesystem::path const&)> const& check)
{
    m_impl->finish(check);
}

} // namespace framewright
