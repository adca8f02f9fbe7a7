#pragma once

#include "media/internal/av_handles.h"
#include "media/internal/media_input.h"
#include "media/internal/sample_clock.h"

#include <cstdint>
#include <optional>

namespace framewright {

/// Decoded audio: the samples [begin, end) of `frame`. The first of them is sample `position` of
/// the file, at the stream's own rate.
struct AudioBlock {
    FrameHandle frame;
    int begin = 0;
    int end = 0;
    std::int64_t position = 0;

    int length() const { return end - begin; }
    std::int64_t endPosition() const { return position + length(); }
};

/// Decodes an audio stream block by block, trimming the encoder's delay and padding.
class AudioDecoder {
public:
    /// Decodes the first block. Throws MediaError when there is none.
    AudioDecoder(MediaInput& input, AVStream& stream);

    int sampleRate() const { return m_sampleRate; }

    /// The next block that has samples; nothing at the end. There may be gaps between blocks. The
    /// first ones after a seek may be wrong with codecs that predict from earlier blocks.
    std::optional<AudioBlock> next();

    /// Whether data right before the last block returned could not be decoded; at the end, any data
    /// since the last seek.
    bool isDamagedBefore() const { return m_isDamaged; }

    /// Continues shortly before a sample, as precisely as the file's index allows.
    void seek(std::int64_t position);
    void seekToStart();

private:
    /// A whole block, with its `pts` set.
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
    std::optional<Decoded> m_first; ///< Until `next` returns it.
    int m_sampleRate = 0;
    std::optional<SampleClock> m_clock;
    std::optional<std::int64_t> m_expected;
    std::optional<std::int64_t> m_nextStamp; ///< For a block without a timestamp.
    bool m_isDamaged = false;
    bool m_hasFailed = false; ///< Since the last seek.
    int m_failuresInARow = 0;
    std::optional<std::int64_t> m_skipUntil; ///< Packets that end earlier are not decoded.
};

} // namespace framewright
