#pragma once

#include "composition/geometry.h"
#include "media/media_info.h"
#include "model/media_asset.h"

#include <filesystem>
#include <optional>

namespace framewright {

/// A probed media file: what is needed to place and to play it.
struct LoadedAsset {
    std::filesystem::path file; ///< The file that is played; empty for the black plate.
    MediaKind kind = MediaKind::video;
    double duration = 0; ///< Seconds; 0 for a photo.

    /// Width and height in pixels before the orientation, with square pixels; zero without a
    /// picture. Decoded pictures may have another size (anamorphic footage, photos read smaller).
    Size naturalSize;
    /// Turns a picture of the natural size upright.
    AffineTransform preferredTransform;

    bool hasVideo = false; ///< Footage or a photo.
    bool hasAudio = false;
    bool isHDR = false;
    std::optional<MasteringDisplay> mastering; ///< Of HDR footage whose file names it.
    double frameRate = 0;                      ///< Frames per second; 0 for what does not move.

    /// The natural size as it is seen: upright.
    Size displaySize() const;

    bool operator==(LoadedAsset const&) const = default;
};

/// The transform that rotates a frame of `size` upright, with its top left corner at the origin.
AffineTransform uprightTransform(Orientation orientation, Size size);

/// Black, 9:16, a minute long: shown where no track has a clip.
LoadedAsset blackPlate();

} // namespace framewright
