#pragma once

#include "composition/media_time.h"

#include <memory>

namespace framewright {

struct PlacedImage;

/// Something that is drawn only when it is seen: a piece may have thousands of captions, and a
/// single frame of it needs one.
class OverlayPicture {
public:
    virtual ~OverlayPicture() = default;

    /// Draws it. Any thread may call; it is the same image each time, for anyone who asks.
    virtual std::shared_ptr<PlacedImage const> draw() const = 0;

    /// Whether both draw the same.
    virtual bool isLike(OverlayPicture const& other) const = 0;
};

/// A text, a caption or the name of a placeholder as it is burned into the picture.
struct Overlay {
    MediaTimeRange timeRange;
    std::shared_ptr<OverlayPicture const> picture; ///< Never null.

    bool operator==(Overlay const& other) const
    {
        return timeRange == other.timeRange &&
               (picture == other.picture || picture->isLike(*other.picture));
    }
};

} // namespace framewright
