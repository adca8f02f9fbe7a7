#pragma once

#include "composition/composition_builder.h"
#include "rendering/project_making.h"

namespace framewright {

// Layers of a small canvas, for tests of what is drawn on it.

inline constexpr PixelSize canvas{64, 96};

inline LoadedAsset sized(double width, double height, Orientation orientation = {})
{
    LoadedAsset asset = moving(width, height);
    asset.preferredTransform = uprightTransform(orientation, asset.naturalSize);
    return asset;
}

inline Layer layer(CompositionTrackID track, LoadedAsset const& asset,
                   ClipTransform const& transform = {}, float opacity = 1, PixelSize size = canvas)
{
    Layer made;
    made.trackID = track;
    made.placement = CompositionBuilder::placement(asset, transform, size);
    made.naturalSize = asset.naturalSize;
    made.opacity = opacity;
    return made;
}

inline Layer black(CompositionTrackID track = 9)
{
    Layer made = layer(track, sized(canvas.width, canvas.height));
    made.isBlackPlate = true;
    return made;
}

inline VideoComposition drawing(std::vector<Layer> layers, PixelSize size = canvas)
{
    return {size, 30, ColorTags::bt709(), {{{{0}, {6000}}, std::move(layers), {}}}};
}

} // namespace framewright
