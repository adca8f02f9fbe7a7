#pragma once

#include "media/internal/av_handles.h"
#include "media/internal/descriptor.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace framewright {

/// An MP4 file being written.
///
/// Encoded streams go to a hidden temporary file in the target's folder, which `finish` renames. An
/// object destroyed before that removes it.
///
/// The file contains no edit list, because not all players and platforms honour them. The usual
/// reasons for one are avoided instead:
/// - B-frames. Frames are decoded before they are displayed, so the first display time is normally
///   later than 0, and an edit list cuts the difference away. Here composition offsets may be
///   negative (`ctts` version 1, ISO/IEC 14496-12), so decoding and display both begin at 0.
/// - Encoder delay. An AAC encoder puts priming samples before the audio, which an edit list hides.
///   AudioStream does not write those packets at all; see there for what that costs.
class Mp4File {
public:
    enum class Kind { movie, audio };

    /// Throws MediaError when the file cannot be created.
    Mp4File(std::filesystem::path const& target, Kind kind);
    ~Mp4File();
    Mp4File(Mp4File const&) = delete;
    Mp4File& operator=(Mp4File const&) = delete;

    /// Adds a stream for the packets of `encoder`. Only before `begin`.
    AVStream* addStream(AVCodecContext const& encoder);

    /// Sets what to call whenever writing or flushing makes progress.
    void setActivity(std::function<void()> activity);

    void begin();

    /// Writes a packet with timestamps in the time base of `encoder`. Takes its content.
    void write(AVPacket& packet, AVStream const& stream, AVCodecContext const& encoder);

    /// Moves the index to the front, flushes to disk, calls `check` with the temporary file, and
    /// renames it to the target. If `check` throws, the target is left unchanged.
    void finish(std::function<void(std::filesystem::path const& written)> const& check = {});

private:
    struct CloseFormat {
        void operator()(AVFormatContext* format) const { avformat_free_context(format); }
    };

    static int openForReading(AVFormatContext* format, AVIOContext** io, char const*, int flags,
                              AVDictionary**);
    static int closeReading(AVFormatContext* format, AVIOContext*);

    void check(int result);
    void flush();

    std::filesystem::path m_target;
    std::filesystem::path m_temporary; ///< Empty once it has been renamed.
    Descriptor m_file;
    std::optional<DescriptorIO> m_io;
    std::optional<DescriptorIO> m_reading; ///< While the index is being moved.
    std::unique_ptr<AVFormatContext, CloseFormat> m_format;
    std::function<void()> m_activity;
};

} // namespace framewright
