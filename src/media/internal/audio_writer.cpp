#include "media/internal/audio_writer.h"

#include "media/internal/audio_stream.h"
#include "media/internal/mp4_file.h"

namespace framewright {

class SoundWriter::Impl {
public:
    Impl(std::filesystem::path const& file, int bitRate)
        : m_file(file, Mp4File::Kind::sound), m_sound(bitRate, m_file, file)
    {
        m_file.begin();
    }

    void write(std::span<float const> interleaved) { m_sound.write(interleaved); }

    void finish()
    {
        m_sound.finish();
        m_file.finish();
    }

private:
    Mp4File m_file;
    SoundStream m_sound;
};

SoundWriter::SoundWriter(std::filesystem::path const& file, int bitRate)
    : m_impl(std::make_unique<Impl>(file, bitRate))
{
}

SoundWriter::~SoundWriter() = default;

void SoundWriter::write(std::span<float const> interleaved)
{
    m_impl->write(interleaved);
}

void SoundWriter::finish()
{
    m_impl->finish();
}

} // namespace framewright
