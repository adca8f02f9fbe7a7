#pragma once

#include "media/frame.h"
#include "media/mastering_display.h"
#include "model/media_asset.h"

#include <filesystem>
#include <optional>
#include <string>

namespace framewright {

/// How to turn stored frames upright: first mirror them left to right, then rotate clockwise.
struct Orientation {
    int quarterTurns = 0; ///< 0 to 3, clockwise.
    bool isMirrored = false;

    bool swapsSides() const { return quarterTurns % 2 != 0; }

    bool operator==(Orientation const&) const = default;
};

/// What a media file contains.
struct MediaInfo {
    MediaKind kind = MediaKind::video;
    double duration = 0; ///< Seconds, to the end of the longest stream; 0 for a photo.

    bool hasVideo = false; ///< Video or a photo; the cover art of music doesn't count.
    int width = 0;         ///< As stored, before the orientation, in square pixels.
    int height = 0;
    Orientation orientation;
    double frameRate = 0;                      ///< Average, frames per second; 0 for a photo.
    bool isHDR = false;                        ///< PQ or HLG.
    std::optional<MasteringDisplay> mastering; ///< From the container.
    std::string videoCodec;
    std::string videoTag; ///< The container's code for the codec ("avc1", "hvc1"); may be empty.
    ColorTags colors;     ///< As tagged in the file; video only.

    bool hasAudio = false;
    int channels = 0;
    int sampleRate = 0;
    std::string audioCodec;

    int displayWidth() const { return orientation.swapsSides() ? height : width; }
    int displayHeight() const { return orientation.swapsSides() ? width : height; }
};

/// Probes a file by its content, whatever its name. Blocks: it reads the file's header, and all of
/// an audio file whose header doesn't give the exact duration.
///
/// Photos are described upright. For video with non-square pixels `width` is the square-pixel
/// width; its frames are decoded as stored and have to be scaled to that.
///
/// Opens local, self-contained files only, never what refers to others (playlists, concat lists).
/// Throws MediaError: missing, a folder, empty, no media, implausibly large dimensions.
MediaInfo probeMedia(std::filesystem::path const& file);

} // namespace framewright
