#pragma once

#include "model/file_url.h"
#include "model/id.h"

#include <string>

namespace framewright {

enum class MediaKind { video, image, audio };

/// A media file that a project refers to.
struct MediaAsset {
    Id id;
    FileURL url;
    FileURL playbackURL; ///< The file that preview and export play.
    MediaKind kind = MediaKind::video;
    double duration = 0; ///< Seconds; 0 for a photo.
    std::string displayName;

    bool operator==(MediaAsset const&) const = default;
};

} // namespace framewright
