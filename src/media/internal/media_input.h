#pragma once

#include "media/internal/av_handles.h"
#include "media/internal/descriptor.h"
#include "media/internal/reading_watch.h"
#include "media/media_error.h"

#include <filesystem>
#include <memory>

namespace framewright {

/// A movie or sound file opened for reading, with the streams that count: one of moving pictures
/// and one of sound, the default ones where there are several.
///
/// Reads nothing but the one file: the demuxers are those of self-contained formats, and whatever
/// a file asks to have opened besides is refused. One thread at a time.
class MediaInput {
public:
    /// What a reader wants to know before the first packet.
    enum class Detail {
        forReading, ///< What the container says, where that is enough to decode.
        complete,   ///< Also what only the coded data tells.
    };

    /// Throws MediaError when it cannot be opened or is no media file.
    MediaInput(Descriptor opened, std::filesystem::path const& file, Detail detail,
               ReadingActivity activity = {});

    std::filesystem::path const& path() const { return m_path; }
    AVFormatContext* format() const { return m_format.get(); }
    AVStream* video() const { return m_video; } ///< Null when there is none.
    AVStream* audio() const { return m_audio; }

    /// Reads only the packets of one stream from now on.
    void readOnly(AVStream const& stream);

    /// Where time 0 of the file lies, in the time base of one of its streams.
    ///
    /// MP4, MOV and Matroska count from 0 and mean it: a stream may begin later. Elsewhere the
    /// first time is arbitrary and the earliest stream begins at 0.
    std::int64_t zero(AVStream const& stream) const;

    /// What an encoder put before the first real sample, where the container says so but counts
    /// it as time: `zero` of the sound lies behind it from now on. To be called before the first
    /// packet is read.
    void findEncoderDelay();

    /// Where a stream ends, in seconds after time 0; below 0 when only reading it all can tell.
    double end(AVStream const& stream) const;

    /// Opens a decoder for a stream. Throws MediaError.
    CodecHandle openDecoder(AVStream const& stream, int threads) const;

    /// Reads the next packet. False at the end; throws MediaError for damage, after which reading
    /// may go on.
    bool read(AVPacket& packet);

    /// The time of the first packet of a stream, as far as it is known.
    std::int64_t firstTime(AVStream& stream) const;

    /// The next packets read are those from a keyframe on, if all goes well the last one at or
    /// before `time`. Throws MediaError.
    void seek(AVStream& stream, std::int64_t time);

    /// The next packets read are the first ones of a stream. Throws MediaError.
    void seekToStart(AVStream& stream);

    /// Whether `seek` finds its place and the packets behind it have their right times.
    bool seeksReliably() const;

private:
    struct CloseInput {
        void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
    };

    void openContainer();
    void findStreamFacts(Detail detail);
    void chooseStreams();
    void checkStreams() const;
    bool isTruncated() const;
    bool is(char const* demuxer) const;
    bool isMov() const;
    bool hasAbsoluteTimes() const;

    std::filesystem::path m_path;
    std::unique_ptr<Descriptor> m_file;    ///< Where it is must not change: m_io refers to it.
    std::unique_ptr<ReadingWatch> m_watch; ///< And to it.
    std::unique_ptr<DescriptorIO> m_io;
    std::unique_ptr<AVFormatContext, CloseInput> m_format;
    AVStream* m_video = nullptr;
    AVStream* m_audio = nullptr;
    std::int64_t m_encoderDelay = 0;     ///< In the time base of the sound.
    bool m_isTruncationReported = false; ///< That it is cut short, since the last seek.
};

/// "is not a video, photo or audio file."
MediaError notMedia(std::filesystem::path const& file);

} // namespace framewright
