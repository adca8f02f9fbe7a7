#pragma once

#include "editor/media_pool/probed_file.h"
#include "model/outcome.h"
#include "model/track.h"

#include <optional>

namespace framewright {

/// Why a video without audio may not be on an audio track. Only a probe knows, so this rule is not
/// the model's, which refuses photos there.
inline std::optional<Refusal> audioRefusal(ProbedFile const& file, Track const& track)
{
    bool const isPhoto = file.asset.kind == MediaKind::image;
    if (track.kind != TrackKind::audio || file.loaded.hasAudio || isPhoto)
        return std::nullopt;
    return Refusal{Reason::noAudioForAudioTrack, Subject::asset(file.asset)};
}

} // namespace framewright
