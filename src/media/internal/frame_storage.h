#pragma once

#include "media/frame.h"
#include "media/internal/av_handles.h"

#include <utility>

namespace framewright {

/// What a Frame is made of: a frame of the media library.
class Frame::Storage {
public:
    explicit Storage(FrameHandle frame) : av(std::move(frame)) {}

    FrameHandle av; ///< Never null, in a format that has a PixelLayout.
};

/// Throws std::invalid_argument when no PixelLayout describes the format.
Frame frameOf(FrameHandle decoded);

inline AVFrame const& avFrame(Frame const& frame)
{
    return *frame.storage().av;
}

} // namespace framewright
