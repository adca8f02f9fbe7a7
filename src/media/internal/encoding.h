#pragma once

#include "media/internal/av_handles.h"
#include "media/movie_writer.h"

#include <filesystem>

namespace framewright {

/// The picture encoder of a movie, opened; its times count frames. Throws MediaError, which
/// names `file`, when the settings cannot be encoded.
CodecHandle openVideoEncoder(MovieSettings const& settings, std::filesystem::path const& file);

/// The sound encoder: AAC-LC, 48 kHz stereo; its times count samples.
CodecHandle openAudioEncoder(int bitRate, std::filesystem::path const& file);

} // namespace framewright
