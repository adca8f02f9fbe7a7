#pragma once

#include "media/internal/av_handles.h"
#include "media/internal/container_format.h"
#include "media/internal/descriptor.h"
#include "media/internal/reading_watch.h"
#include "media/media_error.h"

#include <filesystem>
#include <memory>

namespace framewright {

/// A video or audio file opened for reading, with at most one video and one audio stream: the
/// default ones where there are several.
///
/// Reads nothing but this file: only demuxers of self-contained formats are allowed, and requests
/// of theirs to open other files are refused. One thread at a time.
class MediaInput {
public:
    /// How much to find out before the first packet.
    enum class Detail {
        forReading, ///< The container's header, where that is enough to decode.
        complete,   ///< Also what is known only from the coded data.
    };

    /// Throws MediaError when the file cannot be opened or is no media file.
    MediaInput(Descriptor opened, std::filesystem::path const& file, Detail detail,
               ReadingActivity activity = {});

    std::filesystem::path const& path() const { return m_path; }
    AVFormatContext* format() const { return m_format.get(); }
    ContainerFormat container() const;
    AVStream* video() const { return m_video; } ///< Null when there is none.
    AVStream* audio() const { return m_audio; }

    /// Discards the packets of all other streams from now on.
    void readOnly(AVStream const& stream);

    /// The timestamp that is time 0 of the file, in the time base of `stream`.
    ///
    /// In MP4, MOV and Matroska it is 0, and a stream may begin later. Other formats start at
    /// arbitrary timestamps; there the earliest stream begins at time 0.
    std::int64_t zero(AVStream const& stream) const;

    /// Measures the encoder's delay where the container declares it but includes it in its
    /// timestamps; `zero` of the audio stream is moved behind it. Call it before reading packets.
    void findEncoderDelay();

    /// When a stream ends, in seconds after time 0; negative if only reading all of it can tell.
    double end(AVStream const& stream) const;

    /// Throws MediaError when the codec is unsupported or its parameters are damaged.
    CodecHandle openDecoder(AVStream const& stream, int threads) const;

    /// Reads the next packet. False at the end. Throws MediaError for damage; reading may continue
    /// after it.
    bool read(AVPacket& packet);

    /// The timestamp of a stream's first packet, as far as it is known.
    std::int64_t firstTime(AVStream& stream) const;

    /// Moves to a keyframe, ideally the last one at or before `time`. Throws MediaError.
    void seek(AVStream& stream, std::int64_t time);

    /// Moves to a stream's first packet. Throws MediaError.
    void seekToStart(AVStream& stream);

private:
    struct CloseInput {
        void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
    };

    void openContainer();
    void findStreamFacts(Detail detail);
    void chooseStreams();
    void checkStreams() const;
    bool isTruncated() const;

    std::filesystem::path m_path;
    std::unique_ptr<Descriptor> m_file;    ///< On the heap: m_io keeps a reference
    std::unique_ptr<ReadingWatch> m_watch; ///< to each when this object is moved.
    std::unique_ptr<DescriptorIO> m_io;
    std::unique_ptr<AVFormatContext, CloseInput> m_format;
    AVStream* m_video = nullptr;
    AVStream* m_audio = nullptr;
    std::int64_t m_encoderDelay = 0;     ///< In the time base of the audio.
    bool m_isTruncationReported = false; ///< That it is cut short, since the last seek.
};

/// "is not a video, photo or audio file."
MediaError notMedia(std::filesystem::path const& file);

} // namespace framewright
