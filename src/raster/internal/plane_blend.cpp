#include "raster/internal/plane_blend.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>
#include <type_traits>

namespace framewright {

namespace {

template <class Sample>
Sample* rowOf(Frame::WritablePlane const& plane, int y)
{
    return reinterpret_cast<Sample*>(plane.data + y * plane.stride);
}

template <class Sample>
Sample const* rowOf(Frame::Plane const& plane, int y)
{
    return reinterpret_cast<Sample const*>(plane.data + y * plane.stride);
}

/// Holds a sample times 256: for bytes 16 bits do, of which the compiler handles twice as many at
/// a time.
template <class Sample>
using Product = std::conditional_t<sizeof(Sample) == 1, std::uint16_t, std::uint32_t>;

/// `rest` is what `weight` leaves of 256.
template <class Sample>
Sample mixed(Sample beneath, Sample above, Product<Sample> weight, Product<Sample> rest)
{
    using Number = Product<Sample>;
    return Sample(Number(Number(beneath * rest) + Number(above * weight) + 128) >> 8);
}

template <class Sample>
void blendRow(Sample* __restrict beneath, Sample const* __restrict above, int width,
              Product<Sample> weight)
{
    auto const rest = Product<Sample>(fullWeight - weight);
    for (int x = 0; x < width; ++x)
        beneath[x] = mixed(beneath[x], above[x], weight, rest);
}

template <class Sample>
void blendRow(Sample* __restrict beneath, Sample const* __restrict above,
              std::uint8_t const* __restrict mask, int width, Product<Sample> weight)
{
    using Number = Product<Sample>;
    auto const rest = Number(fullWeight - weight);
    for (int x = 0; x < width; ++x) {
        auto const seen = Number(mask[x] + (mask[x] >> 7)); // 255 is all.
        // Not seen * weight, which may be 65536, one more than 16 bits hold.
        auto const part = Number(seen - Number(Number(seen * rest) >> 8));
        beneath[x] = mixed(beneath[x], above[x], part, Number(fullWeight - part));
    }
}

template <class Sample>
void blendRow(Sample* row, Sample value, int width, Product<Sample> weight)
{
    auto const rest = Product<Sample>(fullWeight - weight);
    for (int x = 0; x < width; ++x)
        row[x] = mixed(row[x], value, weight, rest);
}

template <class Sample>
void blendSamples(Frame::WritablePlane const& to, Frame::Plane const& from, BlendWeight weight)
{
    for (int y = 0; y < to.height; ++y)
        blendRow(rowOf<Sample>(to, y), rowOf<Sample>(from, y), to.width, Product<Sample>(weight));
}

template <class Sample>
void blendSamples(Frame::WritablePlane const& to, Frame::Plane const& from,
                  Frame::Plane const& mask, BlendWeight weight)
{
    for (int y = 0; y < to.height; ++y)
        blendRow(rowOf<Sample>(to, y), rowOf<Sample>(from, y), rowOf<std::uint8_t>(mask, y),
                 to.width, Product<Sample>(weight));
}

template <class Sample>
void blendSamples(Frame::WritablePlane const& to, Sample value, BlendWeight weight)
{
    for (int y = 0; y < to.height; ++y) {
        Sample* const row = rowOf<Sample>(to, y);
        if (weight == fullWeight)
            std::fill_n(row, to.width, value);
        else
            blendRow(row, value, to.width, Product<Sample>(weight));
    }
}

} // namespace

BlendWeight blendWeight(double opacity)
{
    return int(std::lround(std::clamp(opacity, 0.0, 1.0) * fullWeight));
}

Frame::Plane partOf(Frame::Plane const& plane, int x, int y, int width, int height,
                    int bytesPerSample)
{
    return {plane.data + y * plane.stride + x * bytesPerSample, plane.stride, width, height};
}

Frame::WritablePlane partOf(Frame::WritablePlane const& plane, int x, int y, int width, int height,
                            int bytesPerSample)
{
    return {plane.data + y * plane.stride + x * bytesPerSample, plane.stride, width, height};
}

void blendPlane(Frame::WritablePlane const& to, Frame::Plane const& from, BlendWeight weight,
                int bytesPerSample)
{
    assert(to.width == from.width && to.height == from.height);
    if (weight == fullWeight) {
        for (int y = 0; y < to.height; ++y)
            std::memcpy(to.data + y * to.stride, from.data + y * from.stride,
                        std::size_t(to.width) * std::size_t(bytesPerSample));
    } else if (bytesPerSample == 1) {
        blendSamples<std::uint8_t>(to, from, weight);
    } else {
        blendSamples<std::uint16_t>(to, from, weight);
    }
}

void blendPlane(Frame::WritablePlane const& to, Frame::Plane const& from, Frame::Plane const& mask,
                BlendWeight weight, int bytesPerSample)
{
    assert(to.width == from.width && to.height == from.height && to.width <= mask.width);
    if (bytesPerSample == 1)
        blendSamples<std::uint8_t>(to, from, mask, weight);
    else
        blendSamples<std::uint16_t>(to, from, mask, weight);
}

void blendPlane(Frame::WritablePlane const& to, int value, BlendWeight weight, int bytesPerSample)
{
    if (bytesPerSample == 1)
        blendSamples<std::uint8_t>(to, std::uint8_t(value), weight);
    else
        blendSamples<std::uint16_t>(to, std::uint16_t(value), weight);
}

void halveMask(Frame::Plane const& from, Frame::WritablePlane const& to)
{
    for (int y = 0; y < to.height; ++y) {
        std::uint8_t const* const upper = rowOf<std::uint8_t>(from, 2 * y);
        std::uint8_t const* const lower = rowOf<std::uint8_t>(from, 2 * y + 1);
        std::uint8_t* const row = rowOf<std::uint8_t>(to, y);
        for (int x = 0; x < to.width; ++x)
            row[x] = std::uint8_t(
                (upper[2 * x] + upper[2 * x + 1] + lower[2 * x] + lower[2 * x + 1] + 2) / 4);
    }
}

} // namespace framewright
