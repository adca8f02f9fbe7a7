#pragma once

#include "media/reading_activity.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace framewright {

/// Reads the sound of a file as 48 kHz stereo, by sample.
///
/// Sample 0 is the file's own beginning, edit lists and encoder delay honoured. A sample has the
/// same value however it is reached, but for the noise that some codecs fill in and the last bits
/// of others. Mono goes to both sides at full level; more than two channels are mixed down, and
/// may then exceed 1. Of several tracks the default one is read. One thread at a time.
class AudioReader {
public:
    static constexpr int sampleRate = 48000;

    /// Throws MediaError when the file cannot be opened or has no sound.
    explicit AudioReader(std::filesystem::path const& file, ReadingActivity activity = {});
    ~AudioReader();
    AudioReader(AudioReader&&) noexcept;
    AudioReader& operator=(AudioReader&&) noexcept;

    /// Fills `interleaved` (left, right, left, …) with the samples from `first` on; silence where
    /// the file has none. Reading on from where the last call ended never seeks.
    /// Throws MediaError when the data is damaged there, after filling in what there is; half a
    /// second of damage at the very end counts as silence.
    void read(std::int64_t first, std::span<float> interleaved);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
