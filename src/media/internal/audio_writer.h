#pragma once

#include <filesystem>
#include <memory>
#include <span>

namespace framewright {

/// Writes 48 kHz stereo to an M4A as AAC. Creates and replaces its file, and fails, like a
/// MovieWriter.
class AudioWriter {
public:
    explicit AudioWriter(std::filesystem::path const& file, int bitRate = 160'000);
    ~AudioWriter();
    AudioWriter(AudioWriter const&) = delete;
    AudioWriter& operator=(AudioWriter const&) = delete;

    void write(std::span<float const> interleaved);

    /// Drains the encoder, writes the index, flushes to disk and renames the file.
    void finish();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
