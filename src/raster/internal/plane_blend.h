#pragma once

#include "media/frame.h"

namespace framewright {

// Blending of one plane over another, for layers with opacity, alpha masks and black plates.
//
// Frames are blended as coded: planar YUV, each plane by itself, without a detour through RGB,
// which would cost two conversions per frame and resample chroma twice. Y, u and v are linear in
// the gamma-coded R, G and B, so the result is the same as blending those, as editors and browsers
// do.
//
// Weights are 256ths rather than 255ths: the division becomes a shift, and full weight is exact.
// For bytes a sample times a weight then fits 16 bits, so the compiler handles twice as many
// samples per vector instruction. A mask value of 255 is widened to 256, or opaque masks would
// leave a trace of the layer beneath.

/// Opacity in 256ths, 1 to 256; at 256 the layer hides what is beneath. Layers of weight 0 are not
/// blended at all.
using BlendWeight = int;
inline constexpr BlendWeight fullWeight = 256;

BlendWeight blendWeight(double opacity);

/// A part of a plane, in samples.
Frame::Plane partOf(Frame::Plane const& plane, int x, int y, int width, int height,
                    int bytesPerSample);
Frame::WritablePlane partOf(Frame::WritablePlane const& plane, int x, int y, int width, int height,
                            int bytesPerSample);

/// Blends `from` over `to`, which has the same size.
void blendPlane(Frame::WritablePlane const& to, Frame::Plane const& from, BlendWeight weight,
                int bytesPerSample);

/// The same, with an alpha mask of bytes.
void blendPlane(Frame::WritablePlane const& to, Frame::Plane const& from, Frame::Plane const& mask,
                BlendWeight weight, int bytesPerSample);

/// Blends a constant over `to`.
void blendPlane(Frame::WritablePlane const& to, int value, BlendWeight weight, int bytesPerSample);

/// Halves a mask in both directions by averaging. The sides of `from` are even.
void halveMask(Frame::Plane const& from, Frame::WritablePlane const& to);

} // namespace framewright
