#pragma once

#include "media/internal/av_handles.h"
#include "media/movie_writer.h"

#include <filesystem>

namespace framewright {

/// An open video encoder with the frame as its time base. Throws MediaError, naming `file`, when
/// the settings cannot be encoded.
CodecHandle openVideoEncoder(MovieSettings const& settings, std::filesystem::path const& file);

/// An open AAC-LC encoder for 48 kHz stereo with the sample as its time base.
CodecHandle openAudioEncoder(int bitRate, std::filesystem::path const& file);

} // namespace framewright
