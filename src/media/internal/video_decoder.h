#pragma once

#include "media/internal/av_handles.h"
#include "media/internal/media_input.h"

#include <cstdint>
#include <optional>
#include <set>

namespace framewright {

/// A decoded frame and its display time in the stream's time base.
struct TimedFrame {
    FrameHandle frame;
    std::int64_t time = 0;
};

/// Decodes the frames of a stream in display order.
///
/// Skips damaged data and reports which frames are missing because of it.
class VideoDecoder {
public:
    VideoDecoder(MediaInput& input, AVStream& stream, int threads);

    /// The next frame, always later than the one before; nothing after the last.
    std::optional<TimedFrame> next();

    /// The time of the first frame known to be missing right before the one returned last, or at
    /// the end of the stream.
    std::optional<std::int64_t> missing() const { return m_missing; }

    /// Continues from a keyframe, ideally the last one from which the frame at `time` can be
    /// decoded. Frames before `skipUntil` that no other refers to may be skipped.
    void seek(std::int64_t time, std::int64_t skipUntil);
    void seekToStart(std::int64_t skipUntil);

    /// The latest time whose frame may have been skipped since the last seek.
    std::optional<std::int64_t> lastSkipped() const { return m_lastSkipped; }

    /// The decoding time up to which packets have been read; nothing right after a seek.
    std::optional<std::int64_t> readUpTo() const { return m_readUpTo; }

private:
    void feed();
    void send(AVPacket const* packet);
    void reset(std::int64_t skipUntil);
    std::int64_t lengthOf(AVFrame const& frame) const;
    void noteMissing(std::int64_t before);
    bool hasGivenUp() const;

    MediaInput& m_input;
    AVStream& m_stream;
    CodecHandle m_decoder;
    PacketHandle m_packet;
    FrameHandle m_frame;

    std::optional<std::int64_t> m_readUpTo;
    std::int64_t m_skipUntil;
    std::optional<std::int64_t> m_lastSkipped;
    std::optional<std::int64_t> m_lastEnd; ///< Of the last frame returned.
    std::optional<std::int64_t> m_lastTime;
    std::optional<std::int64_t> m_missing;
    std::set<std::int64_t> m_expected; ///< Times of packets whose frames are still to come.
    int m_failures = 0;                ///< Since the last seek.
    int m_failuresInARow = 0;
};

} // namespace framewright
