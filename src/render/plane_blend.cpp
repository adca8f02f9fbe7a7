#include "render/plane_blend.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>

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

/// A byte of a mask as a weight: 255 is all.
unsigned weightOf(std::uint8_t mask)
{
    return mask + (mask >> 7);
}

// In 32 bits, as all loops here: 16-bit samples times 256 need 24.
template <class Sample>
Sample mixed(Sample beneath, Sample above, unsigned weight)
{
    return Sample((beneath * (fullWeight - weight) + above * weight + fullWeight / 2) / fullWeight);
}

template <class Sample>
void blendSamples(Frame::WritablePlane const& to, Frame::Plane const& from, unsigned weight)
{
    for (int y = 0; y < to.height; ++y) {
        Sample* __restrict const beneath = rowOf<Sample>(to, y);
        Sample const* __restrict const above = rowOf<Sample>(from, y);
        for (int x = 0; x < to.width; ++x)
            beneath[x] = mixed(beneath[x], above[x], weight);
    }
}

template <class Sample>
void blendSamples(Frame::WritablePlane const& to, Frame::Plane const& from,
                  Frame::Plane const& mask, unsigned weight)
{
    for (int y = 0; y < to.height; ++y) {
        Sample* __restrict const beneath = rowOf<Sample>(to, y);
        Sample const* __restrict const above = rowOf<Sample>(from, y);
        std::uint8_t const* __restrict const seen = rowOf<std::uint8_t>(mask, y);
        for (int x = 0; x < to.width; ++x)
            beneath[x] = mixed(beneath[x], above[x], weightOf(seen[x]) * weight / fullWeight);
    }
}

template <class Sample>
void blendSamples(Frame::WritablePlane const& to, Sample value, unsigned weight)
{
    for (int y = 0; y < to.height; ++y) {
        Sample* const row = rowOf<Sample>(to, y);
        if (weight == fullWeight) {
            std::fill_n(row, to.width, value);
            continue;
        }
        for (int x = 0; x < to.width; ++x)
            row[x] = mixed(row[x], value, weight);
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
        blendSamples<std::uint8_t>(to, from, unsigned(weight));
    } else {
        blendSamples<std::uint16_t>(to, from, unsigned(weight));
    }
}

void blendPlane(Frame::WritablePlane const& to, Frame::Plane const& from, Frame::Plane const& mask,
                BlendWeight weight, int bytesPerSample)
{
    assert(to.width == from.width && to.height == from.height && to.width <= mask.width);
    if (bytesPerSample == 1)
        blendSamples<std::uint8_t>(to, from, mask, unsigned(weight));
    else
        blendSamples<std::uint16_t>(to, from, mask, unsigned(weight));
}

void blendPlane(Frame::WritablePlane const& to, int value, BlendWeight weight, int bytesPerSample)
{
    if (bytesPerSample == 1)
        blendSamples<std::uint8_t>(to, std::uint8_t(value), unsigned(weight));
    else
        blendSamples<std::uint16_t>(to, std::uint16_t(value), unsigned(weight));
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
