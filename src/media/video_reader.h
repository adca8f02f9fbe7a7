#pragma once

#include "media/frame.h"
#include "media/media_info.h"
#include "media/reading_activity.h"

#include <filesystem>
#include <memory>

namespace framewright {

/// Reads the pictures of a video file by time.
///
/// Time 0 is the file's own beginning, edit lists honoured. Pictures are as stored: planar, not
/// turned. Formats that are not planar are converted when they are decoded. Colours the file does
/// not name are filled in by the usual guess: HD is BT.709, smaller pictures are BT.601.
///
/// Asking again for a time within the same picture gives the same pixels without any work. One
/// thread at a time.
class VideoReader {
public:
    /// Throws MediaError when the file cannot be opened or has no picture.
    /// `threads`: of the decoder; 0 lets it choose.
    explicit VideoReader(std::filesystem::path const& file, int threads = 0,
                         ReadingActivity activity = {});
    ~VideoReader();
    VideoReader(VideoReader&&) noexcept;
    VideoReader& operator=(VideoReader&&) noexcept;

    /// The picture shown at `seconds`: the last one at or before it, the first one for times
    /// before it, the last one for times after the end. A picture that begins less than
    /// `timeTolerance` later counts as begun.
    ///
    /// Reading forward never seeks unless a keyframe ahead makes it cheaper. Throws MediaError
    /// when the data is damaged there; the reader can be asked for another time afterwards. If
    /// less than half a second at the very end is damaged, the last good picture stays instead.
    Frame frameAt(double seconds);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
