#pragma once

#include "media/internal/av_handles.h"
#include "media/internal/descriptor.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace framewright {

/// An MP4 being written: encoded streams go into a hidden file beside the target, which takes
/// the target's place when it is complete. Destroyed before `finish` it leaves nothing.
class Mp4File {
public:
    enum class Kind { movie, audio };

    /// Throws MediaError when no file can be made there.
    Mp4File(std::filesystem::path const& target, Kind kind);
    ~Mp4File();
    Mp4File(Mp4File const&) = delete;
    Mp4File& operator=(Mp4File const&) = delete;

    /// Adds a stream of what `encoder` makes. All streams are added before `begin`.
    AVStream* addStream(AVCodecContext const& encoder);

    /// To be called whenever the file has got on: some of it was written, or is safe on the disk.
    void setActivity(std::function<void()> activity);

    void begin();

    /// Writes a packet of `encoder`, whose times it counts in. Takes the packet's content.
    void write(AVPacket& packet, AVStream const& stream, AVCodecContext const& encoder);

    /// Moves the index to the front, flushes to disk, has the hidden file checked and takes the
    /// target's place. What `check` throws goes on, and the target stays what it was.
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
    std::filesystem::path m_temporary; ///< Empty once it has taken the target's place.
    Descriptor m_file;
    std::optional<DescriptorIO> m_io;
    std::optional<DescriptorIO> m_reading; ///< While the index is being moved.
    std::unique_ptr<AVFormatContext, CloseFormat> m_format;
    std::function<void()> m_activity;
};

} // namespace framewright
