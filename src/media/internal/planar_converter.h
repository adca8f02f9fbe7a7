#pragma once

#include "media/frame.h"
#include "media/internal/av_handles.h"

namespace framewright {

/// Turns decoded frames into Frames: by reference where their format is planar, else converted to
/// the nearest planar format. One thread at a time.
class PlanarConverter {
public:
    /// Missing colour tags are filled in by `guessedColors`.
    Frame frameOf(AVFrame const& decoded);

private:
    Frame converted(AVFrame const& decoded);

    ScalerHandle m_scaler; ///< Reused while the format stays the same.
};

/// The stored tags, with missing ones filled in as players do: BT.709 for HD, BT.601 below, and for
/// JPEG-like ones the primaries of sRGB.
ColorTags guessedColors(ColorTags stored, PixelLayout::Model model, int width, int height);

} // namespace framewright
