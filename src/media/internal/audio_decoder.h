#pragma once

#include "media/internal/av_handles.h"
#include "media/internal/media_input.h"
#include "media/internal/sample_clock.h"

#include <cstdint>
#include <optional>

namespace framewright {

/// Decoded sound: the samples [begin, end) of `frame`, the first of which is the file's sample
/// `position`, counted in the stream's own rate from the beginning of the file.
struct AudioBlock {
    FrameHandle frame;
    int begin = 0;
    int end = 0;
    std::int64_t position = 0;

    int length() const { return end - begin; }
    std::int64_t endPosition() const { return position + length(); }
};

/// Decodes a sound stream block by block, without what its encoder put before and behind it.
class AudioDecoder {
public:
    /// Reads the first block. Throws MediaError when there is none.
    AudioDecoder(MediaInput& input, AVStream& stream);

    int sampleRate() const { return m_sampleRate; }

    /// The next block that has samples; nothing at the end. Blocks may leave gaps, and the first
    /// after a seek to the middle of the file may be wrong in codecs that build on what went
    /// before.
    std::optional<AudioBlock> next();

    /// Whether something right before the block that `next` gave could not be decoded; at the end,
    /// anything since the last seek.
    bool isDamagedBefore() const { return m_isDamaged; }

    /// Goes on shortly before a sample of the stream, as far as the file can tell where that is.
    void seek(std::int64_t position);
    void seekToStart();

private:
    /// A block as the decoder gave it, its `pts` set.
    struct Decoded {
        FrameHandle frame;
        int skippedInFront = 0;
        int droppedAtEnd = 0;
    };

    std::optional<Decoded> decoded();
    bool feed();
    bool setStamp(AVFrame& frame);
    static Decoded withTrimming(FrameHandle frame);
    void reset();
    AudioBlock placed(Decoded decoded);

    MediaInput& m_input;
    AVStream& m_stream;
    CodecHandle m_decoder;
    PacketHandle m_packet;
    std::optional<Decoded> m_first; ///< Until `next` gives it out.
    int m_sampleRate = 0;
    std::optional<SampleClock> m_clock;
    std::optional<std::int64_t> m_expected;
    std::optional<std::int64_t> m_nextStamp; ///< For a block that has none itself.
    bool m_isDamaged = false;
    bool m_hasFailed = false; ///< Since the last seek.
    int m_failuresInARow = 0;
    std::optional<std::int64_t> m_skipUntil; ///< Packets that end before are not decoded.
};

} // namespace framewright
