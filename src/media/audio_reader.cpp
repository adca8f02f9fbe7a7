#include "media/audio_reader.h"

#include "media/internal/audio_decoder.h"
#include "media/internal/media_failure.h"
#include "media/internal/media_file.h"
#include "media/internal/media_input.h"
#include "media/internal/stereo_converter.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace framewright {

namespace {

/// Seconds decoded ahead of the wanted sample after a seek: codecs predict from earlier blocks, and
/// the resampler's filter spans neighbouring samples.
constexpr double preroll = 0.3;

/// Up to this many seconds ahead, decoding what is in between is cheaper than seeking.
constexpr double maxReadAhead = 0.5;

/// Seconds of damage at the end that count as silence: see VideoReader.
constexpr double toleratedLoss = 0.5;

AVStream& audioOf(MediaInput const& input)
{
    if (!input.audio())
        throw failure(MediaError::Cause::unsupported, input.path(), "has no audio.");
    return *input.audio();
}

} // namespace

class AudioReader::Impl {
public:
    Impl(std::filesystem::path const& file, ReadingActivity activity)
        : m_input(openMediaFile(file), file, MediaInput::Detail::forReading, std::move(activity)),
          m_stream(audioWithDelay(m_input)),
          m_decoder(m_input, m_stream),
          m_converter(m_decoder.sampleRate(), file)
    {
    }

    void read(std::int64_t first, std::span<float> interleaved)
    {
        auto const count = std::int64_t(interleaved.size() / 2);
        std::int64_t const silent = std::clamp<std::int64_t>(-first, 0, count);
        std::fill_n(interleaved.begin(), silent * 2, 0.0F);
        if (silent == count)
            return;
        std::int64_t const from = std::max<std::int64_t>(first, 0);
        if (!m_isPositioned || from < m_converter.position() ||
            from > m_converter.readyUpTo() + std::int64_t(maxReadAhead * sampleRate))
            seekTo(from);
        while (m_converter.readyUpTo() < first + count && !m_isAtEnd)
            readUntil();
        m_converter.take(from, interleaved.subspan(std::size_t(silent) * 2));
        if (m_hole && m_hole->begin < first + count && m_hole->end > from)
            throw damage(m_input.path(),
                         fmt::format("its audio at {:.2f} s cannot be decoded",
                                     double(std::max(from, m_hole->begin)) / sampleRate));
    }

private:
    struct Hole {
        std::int64_t begin; ///< In output samples.
        std::int64_t end;
    };

    static AVStream& audioWithDelay(MediaInput& input)
    {
        AVStream& audio = audioOf(input);
        input.findEncoderDelay();
        return audio;
    }

    /// Restarts conversion far enough before `output` that its samples equal those of a read from
    /// the start. Seeks further back until the decoder gives a block before that point.
    void seekTo(std::int64_t output)
    {
        int const rate = m_decoder.sampleRate();
        std::int64_t const start =
            m_converter.startFor(output - std::int64_t(preroll * sampleRate));
        auto back = std::int64_t(preroll * rate);
        m_isPositioned = false;
        m_hole.reset();
        while (true) {
            bool const isAtStart = start - back <= 0;
            if (isAtStart)
                m_decoder.seekToStart();
            else
                m_decoder.seek(start - back);
            m_pending = m_decoder.next();
            if (isAtStart || (m_pending && m_pending->position <= start))
                break;
            back *= 4;
        }
        m_isAtEnd = false;
        m_converter.startAt(start);
        // Codecs that depend on earlier blocks fail on the first ones after a seek: not damage.
        while (m_pending && m_pending->endPosition() <= start)
            m_pending = m_decoder.next();
        m_isPositioned = true;
        if (m_pending)
            noteHole();
        else
            end();
    }

    void noteHole()
    {
        if (m_decoder.isDamagedBefore() && m_pending->position > m_converter.expected())
            m_hole = Hole{m_converter.outputFor(m_converter.expected()),
                          m_converter.outputFor(m_pending->position)};
    }

    void readUntil()
    {
        if (!m_pending) {
            m_pending = m_decoder.next();
            if (!m_pending) {
                end();
                return;
            }
            noteHole();
        }
        if (m_converter.add(*m_pending))
            m_pending.reset();
    }

    void end()
    {
        m_converter.finish();
        m_isAtEnd = true;
        double const missing = m_input.end(m_stream) - double(m_converter.readyUpTo()) / sampleRate;
        if (m_decoder.isDamagedBefore() && missing >= toleratedLoss)
            m_hole = Hole{m_converter.readyUpTo(), std::numeric_limits<std::int64_t>::max()};
    }

    MediaInput m_input;
    AVStream& m_stream;
    AudioDecoder m_decoder;
    StereoConverter m_converter;
    std::optional<AudioBlock> m_pending; ///< Decoded, not converted yet.
    std::optional<Hole> m_hole;          ///< The last range that could not be decoded.
    bool m_isPositioned = false;         ///< False until a seek has succeeded.
    bool m_isAtEnd = false;
};

AudioReader::AudioReader(std::filesystem::path const& file, ReadingActivity activity)
    : m_impl(std::make_unique<Impl>(file, std::move(activity)))
{
}

AudioReader::~AudioReader() = default;
AudioReader::AudioReader(AudioReader&&) noexcept = default;
AudioReader& AudioReader::operator=(AudioReader&&) noexcept = default;

void AudioReader::read(std::int64_t first, std::span<float> interleaved)
{
    m_impl->read(first, interleaved);
}

} // namespace framewright
