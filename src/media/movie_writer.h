#pragma once

#include "media/frame.h"
#include "media/mastering_display.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>

namespace framewright {

/// How a movie is encoded.
struct MovieSettings {
    enum class Codec { h264, hevcHLG };

    int width = 0; ///< Even.
    int height = 0;
    int framesPerSecond = 30;
    Codec codec = Codec::h264;
    double quality = 20;             ///< Constant rate factor: lower means better and larger.
    char const* preset = "veryfast"; ///< Of the encoder: speed against size.
    int audioBitRate = 160'000;
    std::optional<MasteringDisplay> mastering = {}; ///< Written for HDR only.
    int threads = 0;                                ///< Of the encoder; 0 lets it choose.
    /// Reports progress: called after each write to disk, on the thread that feeds the writer.
    std::function<void()> activity = {};
};

/// Writes an MP4 with one video and one audio stream, both starting at time 0, the index in front.
///
/// Frames come in order at the settings' rate and size, as 4:2:0 with 8 bits (H.264) or 10 (HEVC);
/// audio is 48 kHz stereo. Feed both from one thread and keep them roughly in step: the muxer
/// buffers whichever is ahead.
///
/// Writes to a hidden temporary file in the same folder, which `finish` renames. A writer destroyed
/// before that leaves nothing behind.
///
/// All functions throw MediaError when the disk is full or the file cannot be written.
class MovieWriter {
public:
    /// Throws MediaError when the file cannot be created or the settings cannot be encoded.
    MovieWriter(std::filesystem::path const& file, MovieSettings const& settings);
    ~MovieWriter();
    MovieWriter(MovieWriter const&) = delete;
    MovieWriter& operator=(MovieWriter const&) = delete;

    /// Shares the pixels until they are encoded. Throws std::invalid_argument for another size or
    /// layout.
    void writeFrame(Frame const& frame);
    void writeAudio(std::span<float const> interleaved);

    /// Drains the encoders, writes the index and flushes to disk. Then calls `check` with the
    /// complete temporary file before renaming it; if `check` throws, the temporary file is removed
    /// and an older file of the final name is kept.
    void finish(std::function<void(std::filesystem::path const& written)> const& check = {});

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
