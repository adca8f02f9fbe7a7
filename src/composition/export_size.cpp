// What an export is made in: its size and its rate.

#include "composition/composition_builder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ranges>

namespace framewright {

namespace {

constexpr double longestSide = 3840;

/// The nearest even number; halves go up.
int even(double side)
{
    return 2 * int(std::round(side / 2));
}

double ratio(AspectPreset preset)
{
    PixelSize const base = baseCanvas(preset);
    return double(base.width) / base.height;
}

} // namespace

PixelSize canvasWithLongSide(AspectPreset preset, double longSide)
{
    return ratio(preset) > 1 ? PixelSize{even(longSide), even(longSide / ratio(preset))}
                             : PixelSize{even(ratio(preset) * longSide), even(longSide)};
}

PixelSize canvasWithHeight(AspectPreset preset, int height)
{
    return {std::max(2, even(ratio(preset) * height)), std::max(2, even(height))};
}

PixelSize canvasWithWidth(AspectPreset preset, int width)
{
    return {std::max(2, even(width)), std::max(2, even(width / ratio(preset)))};
}

PixelSize CompositionBuilder::exportRenderSize(Project const& project, AssetStore const& assets)
{
    PixelSize const base = baseCanvas(project.aspect);
    double longSide = std::max(base.width, base.height);
    for (Track const* track : project.videoTracks()) {
        for (Clip const& clip : *track->clips) {
            if (LoadedAsset const* const asset = assets.find(clip.assetID))
                longSide =
                    std::max({longSide, asset->naturalSize.width, asset->naturalSize.height});
        }
    }
    return canvasWithLongSide(project.aspect, std::min(longSide, longestSide));
}

std::optional<MasteringDisplay> exportMastering(Project const& project, AssetStore const& assets)
{
    std::optional<MasteringDisplay> common;
    for (Track const* track : project.videoTracks()) {
        for (Clip const& clip : *track->clips) {
            LoadedAsset const* const asset = assets.find(clip.assetID);
            if (!asset || !asset->isHDR)
                continue;
            if (!asset->mastering || (common && common != asset->mastering))
                return std::nullopt;
            common = asset->mastering;
        }
    }
    return common;
}

int exportFrameRate(Project const& project, AssetStore const& assets)
{
    struct Rate {
        int framesPerSecond;
        double seconds;
    };
    std::array rates = {Rate{24, 0}, Rate{25, 0}, Rate{30, 0}, Rate{50, 0}, Rate{60, 0}};
    for (Track const* track : project.videoTracks()) {
        if (track->isHidden)
            continue;
        for (Clip const& clip : *track->clips) {
            LoadedAsset const* const asset = assets.find(clip.assetID);
            if (!asset || !(asset->frameRate > 0))
                continue;
            auto const nearest = std::ranges::min_element(rates, {}, [&](Rate const& rate) {
                return std::abs(rate.framesPerSecond - asset->frameRate);
            });
            nearest->seconds += clip.length();
        }
    }
    // Of two as long, the higher: it loses no picture.
    auto reversed = rates | std::views::reverse;
    auto const most = std::ranges::max_element(reversed, {}, &Rate::seconds);
    return most->seconds > 0 ? most->framesPerSecond : 30;
}

} // namespace framewright
