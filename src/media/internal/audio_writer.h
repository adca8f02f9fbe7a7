#pragma once

#include <filesystem>
#include <memory>
#include <span>

namespace framewright {

/// Writes an M4A: 48 kHz stereo as AAC, the index in front. Appears and fails like a MovieWriter.
class AudioWriter {
public:
    explicit AudioWriter(std::filesystem::path const& file, int bitRate = 160'000);
    ~AudioWriter();
    AudioWriter(AudioWriter const&) = delete;
    AudioWriter& operator=(AudioWriter const&) = delete;

    void write(std::span<float const> interleaved);

    /// Writes what is still held back and the index, and flushes the file to disk.
    void finish();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
