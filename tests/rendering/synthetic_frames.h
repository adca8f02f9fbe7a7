#pragma once

#include "media/frame.h"
#include "raster/frame_compositor.h"

#include <cmath>
#include <functional>
#include <map>
#include <vector>

namespace framewright {

/// The value of a sample of a plane at a point of the picture, in luma pixels from its top left.
using Paint = std::function<double(int plane, double x, double y)>;

inline Paint flat(double y, double u, double v, double alpha = 255)
{
    return [=](int plane, double, double) {
        return plane == 0 ? y : plane == 1 ? u : plane == 2 ? v : alpha;
    };
}

/// Where a sample lies, in luma pixels.
inline double sampleX(PixelLayout layout, ColorTags colors, int plane, int x)
{
    bool const isChroma = plane == 1 || plane == 2;
    if (!isChroma || layout.model != PixelLayout::Model::yuv || !layout.chromaShiftX)
        return x + 0.5;
    return colors.chromaIsCentered ? 2 * x + 1 : 2 * x + 0.5;
}

inline double sampleY(PixelLayout layout, int plane, int y)
{
    bool const isChroma = plane == 1 || plane == 2;
    return isChroma && layout.model == PixelLayout::Model::yuv && layout.chromaShiftY ? 2 * y + 1
                                                                                      : y + 0.5;
}

inline int sample(Frame const& frame, int plane, int x, int y)
{
    Frame::Plane const found = frame.plane(plane);
    std::uint8_t const* const row = found.data + y * found.stride;
    return frame.layout().bytesPerSample() == 1 ? row[x]
                                                : reinterpret_cast<std::uint16_t const*>(row)[x];
}

inline Frame painted(int width, int height, Paint const& paint, PixelLayout layout = {},
                     ColorTags colors = ColorTags::bt709())
{
    Frame frame(width, height, layout, colors);
    for (int i = 0; i < layout.planeCount(); ++i) {
        Frame::WritablePlane const plane = frame.writablePlane(i);
        int const paintedPlane = layout.hasAlpha && i == layout.planeCount() - 1 ? 3 : i;
        for (int y = 0; y < plane.height; ++y) {
            for (int x = 0; x < plane.width; ++x) {
                double const value =
                    paint(paintedPlane, sampleX(layout, colors, i, x), sampleY(layout, i, y));
                std::uint8_t* const row = plane.data + y * plane.stride;
                if (layout.bytesPerSample() == 1)
                    row[x] = std::uint8_t(std::lround(value));
                else
                    reinterpret_cast<std::uint16_t*>(row)[x] = std::uint16_t(std::lround(value));
            }
        }
    }
    return frame;
}

/// Gives each track one picture, or one for each time, and counts what it is asked for.
class PaintedSource : public FrameSource {
public:
    std::map<CompositionTrackID, std::function<Frame(double)>> pictures;
    std::map<CompositionTrackID, int> asked;

    void show(CompositionTrackID track, Frame const& picture)
    {
        pictures[track] = [picture](double) { return picture; };
    }

    std::optional<Frame> frame(Layer const& layer, double time) override
    {
        ++asked[layer.trackID];
        return pictures.at(layer.trackID)(time);
    }

    std::string name(Layer const& layer, double) const override
    {
        return "track " + std::to_string(layer.trackID);
    }
};

} // namespace framewright
