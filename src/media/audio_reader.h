#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace framewright {

/// Reads the sound of a file as 48 kHz stereo, by sample.
///
/// Sample 0 is the file's own beginning, edit lists and encoder delay honoured. Mono goes to both
/// sides; more than two channels are mixed down. One thread at a time.
class AudioReader {
public:
    static constexpr int sampleRate = 48000;

    /// Throws MediaError when the file cannot be opened or has no sound.
    explicit AudioReader(std::filesystem::path const& file);
    ~AudioReader();
    AudioReader(AudioReader&&) noexcept;
    AudioReader& operator=(AudioReader&&) noexcept;

    /// Fills `interleaved` (left, right, left, …) with the samples from `first` on; silence where
    /// the file has none. Reading on from where the last call ended never seeks.
    /// Throws MediaError when the data is damaged there.
    void read(std::int64_t first, std::span<float> interleaved);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
