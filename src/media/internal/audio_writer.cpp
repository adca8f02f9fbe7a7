#include "media/internal/audio_writer.h"

#include "media/internal/audio_stream.h"
#include "media/internal/mp4_file.h"

namespace framewright {

class AudioWriter::Impl {
public:
    Impl(std::filesystem::path const& file, int bitRate)
        : m_file(file, Mp4File::Kind::audio), m_audio(bitRate, m_file, file)
    {
        m_file.begin();
    }

    void write(std::span<float const> interleaved) { m_audio.write(interleaved); }

    void finish()
    {
        m_audio.finish();
        m_file.finish();
    }

private:
    Mp4File m_file;
    AudioStream m_audio;
};

AudioWriter::AudioWriter(std::filesystem::path const& file, int bitRate)
    : m_impl(std::make_unique<Impl>(file, bitRate))
{
}

AudioWriter::~AudioWriter() = default;

void AudioWriter::write(std::span<float const> interleaved)
{
    m_impl->write(interleaved);
}

void AudioWriter::finish()
{
    m_impl->finish();
}

} // namespace framewright
