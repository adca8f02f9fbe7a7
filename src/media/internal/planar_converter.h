#pragma once

#include "media/frame.h"
#include "media/internal/av_handles.h"

namespace framewright {

/// Makes Frames of decoded pictures: by reference where their format is planar, else converted
/// to the nearest planar one. One thread at a time.
class PlanarConverter {
public:
    /// Colours that the picture does not name are guessed: see `guessedColors`.
    Frame frameOf(AVFrame const& decoded);

private:
    Frame converted(AVFrame const& decoded);

    ScalerHandle m_scaler; ///< Kept from picture to picture.
};

/// The tags of a picture, what it does not say filled in as players do: HD is BT.709, smaller
/// pictures are BT.601, JPEG-like ones have the primaries of screens.
ColorTags guessedColors(ColorTags stored, PixelLayout::Model model, int width, int height);

} // namespace framewright
