#pragma once

#include "composition/media_time.h"

#include <memory>

namespace framewright {

struct PlacedImage;

/// An image that is drawn on demand: a project may have thousands of captions, and a single frame
/// needs one.
class OverlayImage {
public:
    virtual ~OverlayImage() = default;

    /// Draws it. Any thread may call; it is the same image each time, for anyone who asks.
    virtual std::shared_ptr<PlacedImage const> draw() const = 0;

    /// Whether both draw the same.
    virtual bool isLike(OverlayImage const& other) const = 0;
};

/// A text, a caption or the name of a placeholder, burned into the frames of a time range.
struct Overlay {
    MediaTimeRange timeRange;
    std::shared_ptr<OverlayImage const> picture; ///< Never null.

    bool operator==(Overlay const& other) const
    {
        return timeRange == other.timeRange &&
               (picture == other.picture || picture->isLike(*other.picture));
    }
};

} // namespace framewright
