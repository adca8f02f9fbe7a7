#pragma once

#include "media/internal/av_handles.h"
#include "media/internal/media_input.h"

#include <cstdint>
#include <optional>
#include <set>

namespace framewright {

/// A decoded picture and the time from which it is shown, in its stream's time base.
struct TimedFrame {
    FrameHandle frame;
    std::int64_t time = 0;
};

/// Decodes the pictures of a stream one after the other, in the order they are shown.
///
/// Damaged data is passed over; what is missing for it is remembered.
class VideoDecoder {
public:
    VideoDecoder(MediaInput& input, AVStream& stream, int threads);

    /// The next picture, always later than the one before it; nothing after the last one.
    std::optional<TimedFrame> next();

    /// The time of the first picture that is known to be missing right before the one that `next`
    /// gave, or at the end when it gave none.
    std::optional<std::int64_t> missing() const { return m_missing; }

    /// Goes on from a keyframe, if all goes well the last one from which the picture at `time` can
    /// be decoded. Pictures before `skipUntil` that no other needs may be left out on the way.
    void seek(std::int64_t time, std::int64_t skipUntil);
    void seekToStart(std::int64_t skipUntil);

    /// The latest of the times whose pictures may have been left out since the last seek.
    std::optional<std::int64_t> lastSkipped() const { return m_lastSkipped; }

    /// The decoding time up to which the file has been read; nothing right after a seek.
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
    std::optional<std::int64_t> m_lastEnd; ///< Of the picture given last.
    std::optional<std::int64_t> m_lastTime;
    std::optional<std::int64_t> m_missing;
    std::set<std::int64_t> m_expected; ///< Times of packets whose pictures have not come yet.
    int m_failures = 0;                ///< Since the last seek.
    int m_failuresInARow = 0;
};

} // namespace framewright
