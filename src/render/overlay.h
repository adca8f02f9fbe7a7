#pragma once

#include "media/media_time.h"
#include "render/geometry.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace framewright {

/// A drawn text: 8-bit RGBA, premultiplied, rows without padding.
struct OverlayImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    bool operator==(OverlayImage const&) const = default;
};

/// A text, a caption or the name of a placeholder as it is burned into the picture.
struct Overlay {
    MediaTimeRange timeRange;
    Rect frame; ///< In render pixels; whole numbers, as large as the image.
    std::shared_ptr<OverlayImage const> image; ///< Shared, and never changed once it stands here.

    bool operator==(Overlay const&) const = default;
};

} // namespace framewright
