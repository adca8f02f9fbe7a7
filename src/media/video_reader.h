#pragma once

#include "media/frame.h"
#include "media/media_info.h"
#include "media/reading_activity.h"

#include <filesystem>
#include <memory>

namespace framewright {

/// Reads the frames of a video file by time.
///
/// Time 0 is the start of the file, with edit lists applied. Frames are as stored, not rotated;
/// formats that are not planar are converted. Colour tags missing from the file are filled in as
/// players do: BT.709 for HD, BT.601 below.
///
/// Asking again for a time within the same frame costs nothing and gives the same pixels. One
/// thread at a time.
class VideoReader {
public:
    /// `threads`: of the decoder; 0 lets it choose. Throws MediaError when the file cannot be
    /// opened or has no video.
    explicit VideoReader(std::filesystem::path const& file, int threads = 0,
                         ReadingActivity activity = {});
    ~VideoReader();
    VideoReader(VideoReader&&) noexcept;
    VideoReader& operator=(VideoReader&&) noexcept;

    /// The frame shown at `seconds`: the last one that begins at or before it. Earlier times give
    /// the first frame, later ones the last. A frame that begins less than `timeTolerance` later
    /// counts as begun, since times computed from frame numbers may fall just short.
    ///
    /// Reads forward without seeking unless a keyframe ahead makes that cheaper. Throws MediaError
    /// when the data there is damaged; other times can still be read. Damage within half a second
    /// of the end shows the last good frame instead.
    Frame frameAt(double seconds);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
