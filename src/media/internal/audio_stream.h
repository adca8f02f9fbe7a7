#pragma once

#include "media/internal/av_handles.h"
#include "media/internal/mp4_file.h"

#include <filesystem>
#include <span>

namespace framewright {

/// The audio stream of a file being written: 48 kHz stereo in, AAC out.
///
/// An AAC frame decodes correctly only after the one before it: consecutive frames overlap by half
/// (the MDCT's time-domain aliasing cancellation). Encoders therefore emit a frame of priming
/// samples first, and rely on an edit list to hide it; players that ignore edit lists then play all
/// audio 21 ms late. Here the priming packets are discarded, so sample 0 is at time 0 in every
/// player. The cost: the first 1024 samples fade in, for want of the overlapping half.
class AudioStream {
public:
    /// Adds the stream to `file`, which must outlive it. `path` is for messages.
    AudioStream(int bitRate, Mp4File& file, std::filesystem::path const& path);

    void write(std::span<float const> interleaved);

    /// Encodes the rest and drains the encoder.
    void finish();

private:
    void encode(AVFrame const* frame);
    void beginBlock();
    void writeBlock();
    void writeLeadIn();
    FrameHandle newBlock() const;

    std::filesystem::path m_path;
    CodecHandle m_encoder;
    Mp4File& m_file;
    AVStream* m_stream;
    FrameHandle m_block; ///< Samples that do not fill an encoder frame yet.
    int m_blockLength = 0;
    std::int64_t m_blockStart = 0;
    PacketHandle m_packet;
};

} // namespace framewright
