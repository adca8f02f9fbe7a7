#pragma once

#include "composition/geometry.h"
#include "media/frame.h"

namespace framewright {

/// How a stored frame is rotated for display: rows and columns are exchanged or
/// not, then either axis is reversed or not. Every orientation is one of these eight.
struct Turn {
    bool transposes = false;
    bool flipsX = false;
    bool flipsY = false;

    bool isIdentity() const { return !transposes && !flipsX && !flipsY; }

    bool operator==(Turn const&) const = default;
};

/// The turn within a transform by quarter turns, mirrors, scales and offsets.
Turn turnOf(AffineTransform const& transform);

/// Writes `from` turned into `to`, whose sides must fit: exchanged when the turn transposes.
void turnPlane(Frame::Plane const& from, Turn turn, Frame::WritablePlane const& to,
               int bytesPerSample);

} // namespace framewright
