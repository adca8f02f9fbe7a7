#pragma once

#include "composition/overlay.h"
#include "text/placed_image.h"

#include <memory>
#include <utility>

namespace framewright {

/// An image as an overlay. It counts how often it was asked for.
class PaintedOverlay : public OverlayImage {
public:
    explicit PaintedOverlay(PlacedImage image)
        : m_image(std::make_shared<PlacedImage const>(std::move(image)))
    {
    }

    std::shared_ptr<PlacedImage const> draw() const override
    {
        ++timesDrawn;
        return m_image;
    }

    bool isLike(OverlayImage const& other) const override { return this == &other; }

    mutable int timesDrawn = 0;

private:
    std::shared_ptr<PlacedImage const> m_image;
};

} // namespace framewright
