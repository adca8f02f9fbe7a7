#pragma once

#include "media/frame.h"

namespace framewright {

/// How much of a layer is seen, 1 to 256: at 256 nothing of what is beneath it. What is not seen at
/// all is not blended.
using BlendWeight = int;
inline constexpr BlendWeight fullWeight = 256;

BlendWeight blendWeight(double opacity);

/// A part of a plane, in samples.
Frame::Plane partOf(Frame::Plane const& plane, int x, int y, int width, int height,
                    int bytesPerSample);
Frame::WritablePlane partOf(Frame::WritablePlane const& plane, int x, int y, int width, int height,
                            int bytesPerSample);

/// Lays `from` over `to`; both are as large.
void blendPlane(Frame::WritablePlane const& to, Frame::Plane const& from, BlendWeight weight,
                int bytesPerSample);

/// The same, as much of each sample as `mask` says: bytes, 255 for all of it.
void blendPlane(Frame::WritablePlane const& to, Frame::Plane const& from, Frame::Plane const& mask,
                BlendWeight weight, int bytesPerSample);

/// Lays samples of one value over `to`.
void blendPlane(Frame::WritablePlane const& to, int value, BlendWeight weight, int bytesPerSample);

/// Halves a mask on both sides, each sample the mean of four. The sides of `from` are even.
void halveMask(Frame::Plane const& from, Frame::WritablePlane const& to);

} // namespace framewright
