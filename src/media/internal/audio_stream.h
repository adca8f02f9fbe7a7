#pragma once

#include "media/internal/av_handles.h"
#include "media/internal/mp4_file.h"

#include <filesystem>
#include <span>

namespace framewright {

/// The sound stream of a file being written: 48 kHz stereo in, AAC out. Sample 0 is heard at
/// time 0 in every player, for the file holds nothing before it; the price is that the first 1024
/// samples, which a decoder would need that for, fade in.
class AudioStream {
public:
    /// Adds the stream to `file`, which outlives it. `path` is for messages.
    AudioStream(int bitRate, Mp4File& file, std::filesystem::path const& path);

    void write(std::span<float const> interleaved);

    /// Writes what is held back.
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
    FrameHandle m_block; ///< The samples that do not yet fill one of the encoder's frames.
    int m_blockLength = 0;
    std::int64_t m_blockStart = 0;
    PacketHandle m_packet;
};

} // namespace framewright
