#pragma once

#include "composition/composition.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

namespace framewright {

/// Mixes the audio of a composition ahead, on a thread of its own: 48 kHz, stereo.
///
/// The counterpart of FrameProducer, with the same rules: one consumer thread seeks, replaces and
/// reads; the mixing thread owns the decoders; at most `capacity` blocks wait; an error arrives
/// after all blocks before it; `stop` interrupts reading. Each sample depends on its time alone.
/// Past the last clip there is silence.
class AudioProducer {
public:
    static constexpr int sampleRate = AudioMix::sampleRate;
    static constexpr std::size_t blockLength = 2048; ///< Samples of each side.

    struct Options {
        std::size_t capacity = 8; ///< Blocks.
        /// Called on the mixing thread for every packet that is read. Must not throw.
        std::function<void()> activity = {};
    };

    /// Produces nothing until the first `seek`.
    AudioProducer(std::shared_ptr<BuiltComposition const> composition, Options options);
    ~AudioProducer();
    AudioProducer(AudioProducer const&) = delete;
    AudioProducer& operator=(AudioProducer const&) = delete;

    /// From now on `read` gives the samples from `first` on, counted on the timeline. There are
    /// `count` of them, without limit by default; nothing beyond them is read from any file.
    void seek(std::int64_t first, std::optional<std::int64_t> count = std::nullopt);

    /// Goes on with another composition at the sample that would have been read next.
    void replace(std::shared_ptr<BuiltComposition const> composition);

    /// Waits until `interleaved` (left, right, …) is filled. False past the last sample, after an
    /// error and once stopped; the contents are then undefined. Throws MediaError, which names the
    /// clip and the file.
    bool read(std::span<float> interleaved);

    /// Ends production for good, and a `read` that waits. Any thread may call.
    void stop();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
