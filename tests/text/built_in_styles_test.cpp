#include "text/internal/text_painter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

FontRegistry const& fonts()
{
    static FontRegistry const registry(CARRIED_FONTS);
    return registry;
}

constexpr PixelSize canvas{1080, 560};

PlacedImage painted(CaptionStyle const& style)
{
    TextBlock block;
    block.text = "Six days\nin Lisbon";
    block.style = style;
    block.canvas = canvas;
    block.x = canvas.width / 2.0;
    block.y = canvas.height / 2.0;
    return paintText(block, fonts());
}

double luma(double red, double green, double blue)
{
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
}

/// A value per pixel of the canvas; 0 outside.
struct Plane {
    double at(int x, int y) const
    {
        bool const isOutside = x < 0 || y < 0 || x >= canvas.width || y >= canvas.height;
        return isOutside ? 0 : values[std::size_t(y) * canvas.width + std::size_t(x)];
    }

    std::vector<double> values = std::vector<double>(std::size_t(canvas.width) * canvas.height);
};

/// `value` of each premultiplied pixel, transparent ones included.
template <class Value>
Plane planeOf(PlacedImage const& image, Value value)
{
    static constexpr std::uint8_t none[4] = {};
    Plane plane;
    for (int y = 0; y < canvas.height; ++y) {
        for (int x = 0; x < canvas.width; ++x) {
            int const column = x - image.x, row = y - image.y;
            bool const isInside =
                column >= 0 && row >= 0 && column < image.width && row < image.height;
            plane.values[std::size_t(y) * canvas.width + std::size_t(x)] = value(
                isInside ? &image.pixels[(std::size_t(row) * image.width + column) * 4] : none);
        }
    }
    return plane;
}

/// The coverage of a style's letters alone.
Plane lettersOf(CaptionStyle style)
{
    style.textColor = {1, 1, 1, 1};
    style.backgroundEnabled = style.shadowEnabled = style.outlineEnabled = false;
    return planeOf(painted(style), [](std::uint8_t const* rgba) { return rgba[3] / 255.0; });
}

/// The lowest contrast between the left and upper edges of letters, where no shadow falls, and
/// anything near them. Ignores the lowest percent, where letters touch.
double contrast(CaptionStyle const& style, double footage)
{
    constexpr int reach = 6; // Points, which are pixels on this canvas.
    Plane const letters = lettersOf(style);
    Plane const seen = planeOf(painted(style), [&](std::uint8_t const* rgba) {
        return luma(rgba[0], rgba[1], rgba[2]) + footage * (1 - rgba[3] / 255.0);
    });
    double const letter =
        255 * luma(style.textColor.red, style.textColor.green, style.textColor.blue);
    std::vector<double> most;
    for (int y = 0; y < canvas.height; ++y) {
        for (int x = 0; x < canvas.width; ++x) {
            if (letters.at(x, y) < 0.5 ||
                (letters.at(x - 1, y) >= 0.5 && letters.at(x, y - 1) >= 0.5))
                continue;
            double best = 0;
            for (int dy = -reach; dy <= reach; ++dy) {
                for (int dx = -reach; dx <= reach; ++dx) {
                    if (dx * dx + dy * dy <= reach * reach && letters.at(x + dx, y + dy) == 0)
                        best = std::max(best, std::abs(seen.at(x + dx, y + dy) - letter));
                }
            }
            most.push_back(best);
        }
    }
    if (most.empty())
        return 0;
    std::ranges::sort(most);
    return most[most.size() / 100];
}

} // namespace

TEST(BuiltInStyles, AreReadableOnAnyFootage)
{
    for (auto const styles : {CaptionStyle::textPresets(), CaptionStyle::presets()}) {
        for (CaptionStyle const& style : styles) {
            for (double const footage : {255.0, 128.0, 0.0})
                EXPECT_GE(contrast(style, footage), 130) << style.name << " on " << footage;
        }
    }
}

} // namespace framewright
