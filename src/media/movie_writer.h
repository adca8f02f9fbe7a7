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
    double quality = 20;             ///< Constant rate factor: lower is better and larger.
    char const* preset = "veryfast"; ///< Of the encoder: effort against size.
    int audioBitRate = 160'000;
    std::optional<MasteringDisplay> mastering = {}; ///< Told with HDR.
    int threads = 0;                                ///< Of the encoder; 0 lets it choose.
    /// Called whenever some of the file was written, on the thread that feeds the writer.
    std::function<void()> activity = {};
};

/// Writes an MP4 with one picture and one sound stream, the index in front.
///
/// Pictures come in order, one per frame of the rate, in the settings' size and in 4:2:0 with 8
/// bits (H.264) or 10 (HEVC). Sound is 48 kHz stereo. The two may be fed from one thread only,
/// sound not far from the picture it belongs to. Both begin at time 0.
///
/// The file appears, or takes the place of an older one, when `finish` returns; until then there
/// is a hidden one beside it. A writer destroyed before `finish` leaves nothing.
///
/// All functions throw MediaError when the disk is full or the file cannot be written.
class MovieWriter {
public:
    /// Throws MediaError when the file cannot be made or the settings cannot be encoded.
    MovieWriter(std::filesystem::path const& file, MovieSettings const& settings);
    ~MovieWriter();
    MovieWriter(MovieWriter const&) = delete;
    MovieWriter& operator=(MovieWriter const&) = delete;

    /// Keeps a reference, no copy. Throws std::invalid_argument for another size or layout.
    void writeFrame(Frame const& frame);
    void writeAudio(std::span<float const> interleaved);

    /// Writes what is still held back and the index, and flushes the file to disk. Then `check`
    /// may look at the hidden file, complete now, before it takes its place; when that throws,
    /// nothing is left and an older file stays.
    void finish(std::function<void(std::filesystem::path const& written)> const& check = {});

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
