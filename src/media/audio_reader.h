#pragma once

#include "media/reading_activity.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace framewright {

/// Reads a file's audio as 48 kHz stereo, addressed by sample.
///
/// Sample 0 is the start of the file, with edit lists and encoder delay applied. Seeking gives the
/// same samples as reading from the start, except where the codec itself is not deterministic:
/// some substitute noise, others differ in the last bits. Mono is copied to both channels at full
/// level; more than two channels are mixed down and may then exceed 1. Reads the default track.
/// One thread at a time.
class AudioReader {
public:
    static constexpr int sampleRate = 48000;

    /// Throws MediaError when the file cannot be opened or has no audio.
    explicit AudioReader(std::filesystem::path const& file, ReadingActivity activity = {});
    ~AudioReader();
    AudioReader(AudioReader&&) noexcept;
    AudioReader& operator=(AudioReader&&) noexcept;

    /// Fills `interleaved` (left, right, left, …) with the samples from `first` on, silence where
    /// the file has none. A call that starts where the last one ended never seeks.
    ///
    /// Throws MediaError when the data there is damaged, after filling in whatever could be
    /// decoded. Damage within half a second of the end is read as silence.
    void read(std::int64_t first, std::span<float> interleaved);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
