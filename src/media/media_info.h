#pragma once

#include "media/frame.h"
#include "media/mastering_display.h"
#include "model/media_asset.h"

#include <filesystem>
#include <optional>
#include <string>

namespace framewright {

/// How a stored picture is turned to stand upright: first mirrored left to right where it is, then
/// turned clockwise by quarter turns.
struct Orientation {
    int quarterTurns = 0; ///< 0 to 3, clockwise.
    bool isMirrored = false;

    bool swapsSides() const { return quarterTurns % 2 != 0; }

    bool operator==(Orientation const&) const = default;
};

/// The facts of a media file.
struct MediaInfo {
    MediaKind kind = MediaKind::video;
    double duration = 0; ///< Seconds, to the end of the longest stream; 0 for a photo.

    bool hasVideo = false; ///< A picture that moves or a photo; a cover picture of music is none.
    int width = 0;         ///< Pixels as stored, before the orientation, with square pixels.
    int height = 0;
    Orientation orientation;
    double frameRate = 0;                      ///< Average, frames per second; 0 for a photo.
    bool isHDR = false;                        ///< PQ or HLG.
    std::optional<MasteringDisplay> mastering; ///< When the container names it.
    std::string videoCodec;
    std::string videoTag; ///< Of the codec in the container: "avc1", "hvc1"; may be empty.
    ColorTags colors;     ///< As the file says, of a video.

    bool hasAudio = false;
    int channels = 0;
    int sampleRate = 0;
    std::string audioCodec;

    int displayWidth() const { return orientation.swapsSides() ? height : width; }
    int displayHeight() const { return orientation.swapsSides() ? width : height; }
};

/// Looks into a file by its content, whatever its name says. Blocks: reads the file's head, and
/// all of a sound file whose head doesn't tell its exact length.
///
/// Photos are described upright. Where a video's pixels are not square, `width` is the one that
/// makes them so; its pictures come as stored and have to be drawn into that width.
///
/// Only local files are opened, and never what refers to other files (playlists, concat lists).
/// Throws MediaError: missing, a folder, empty, no media, a picture too large to be real.
MediaInfo probeMedia(std::filesystem::path const& file);

} // namespace framewright
