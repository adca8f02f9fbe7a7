#include "pipeline/audio_producer.h"

#include "pipeline/internal/audio_mixer.h"
#include "pipeline/internal/clip_audio_source.h"
#include "tasks/work_ahead.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>
#include <vector>

namespace framewright {

namespace {

struct MixingStopped {};

} // namespace

class AudioProducer::Impl {
public:
    Impl(std::shared_ptr<BuiltComposition const> composition, Options const& options)
        : m_composition(std::move(composition)),
          m_source([this, activity = options.activity] {
              if (m_isStopped)
                  throw MixingStopped();
              if (activity)
                  activity();
          }),
          m_blocks(options.capacity, [this](Start const* start) { return mix(start); })
    {
    }

    ~Impl() { stop(); }
    Impl(Impl const&) = delete;
    Impl& operator=(Impl const&) = delete;

    void seek(std::int64_t first, std::optional<std::int64_t> end)
    {
        m_position = first;
        m_end = end;
        m_block.clear();
        m_used = 0;
        m_blocks.restart({m_composition, first, end});
    }

    void replace(std::shared_ptr<BuiltComposition const> composition)
    {
        m_composition = std::move(composition);
        seek(m_position, m_end);
    }

    bool read(std::span<float> interleaved)
    {
        while (!interleaved.empty()) {
            if (m_used == m_block.size()) {
                auto next = m_blocks.next();
                if (!next)
                    return false;
                m_block = std::move(*next);
                m_used = 0;
            }
            std::size_t const count = std::min(interleaved.size(), m_block.size() - m_used);
            std::copy_n(m_block.begin() + std::ptrdiff_t(m_used), count, interleaved.begin());
            interleaved = interleaved.subspan(count);
            m_used += count;
            m_position += std::int64_t(count / 2);
        }
        return true;
    }

    void stop()
    {
        m_isStopped = true;
        m_blocks.stop();
    }

private:
    using Block = std::vector<float>;
    struct Start {
        std::shared_ptr<BuiltComposition const> composition;
        std::int64_t first;
        std::optional<std::int64_t> end;
    };

    std::optional<Block> mix(Start const* start)
    {
        if (start) {
            m_mixer.reset();
            m_mixed = start->composition;
            m_mixer.emplace(*m_mixed, m_source);
            m_next = start->first;
            m_last = start->end;
        }
        auto const length = std::min(std::int64_t(blockLength),
                                     m_last.value_or(m_next + std::int64_t(blockLength)) - m_next);
        if (m_isStopped || length <= 0)
            return std::nullopt;
        Block block(std::size_t(length) * 2);
        m_mixer->mix(m_next, block);
        m_next += length;
        return block;
    }

    std::atomic<bool> m_isStopped = false;

    // The consumer's:
    std::shared_ptr<BuiltComposition const> m_composition;
    std::int64_t m_position = 0; ///< The sample that is read next.
    std::optional<std::int64_t> m_end;
    Block m_block;
    std::size_t m_used = 0; ///< So much of the block has been read.

    // The mixing thread's:
    std::shared_ptr<BuiltComposition const> m_mixed;
    ClipAudioSource m_source;
    std::optional<AudioMixer> m_mixer;
    std::int64_t m_next = 0;
    std::optional<std::int64_t> m_last; ///< Mixes up to here.

    WorkAhead<Block, Start> m_blocks; ///< Last: its thread uses the others.
};

AudioProducer::AudioProducer(std::shared_ptr<BuiltComposition const> composition, Options options)
    : m_impl(std::make_unique<Impl>(std::move(composition), options))
{
}
AudioProducer::~AudioProducer() = default;

void AudioProducer::seek(std::int64_t first, std::optional<std::int64_t> count)
{
    m_impl->seek(first, count ? std::optional(first + *count) : std::nullopt);
}

void AudioProducer::replace(std::shared_ptr<BuiltComposition const> composition)
{
    m_impl->replace(std::move(composition));
}

bool AudioProducer::read(std::span<float> interleaved)
{
    return m_impl->read(interleaved);
}

void AudioProducer::stop()
{
    m_impl->stop();
}

} // namespace framewright
