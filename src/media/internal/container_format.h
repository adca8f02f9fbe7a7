#pragma once

#include <string_view>

struct AVInputFormat;

namespace framewright {

/// The peculiarities of a container format, as the media library reads it.
class ContainerFormat {
public:
    explicit ContainerFormat(AVInputFormat const& demuxer);

    /// Whether files contain their media. Others are never opened: a playlist would make us read
    /// whatever file or address it names.
    bool isSelfContained() const;

    /// MP4 and MOV: their index lists all packets, and edit lists apply.
    bool isMov() const;

    /// Whether timestamp 0 is the start of the file. Other formats start anywhere.
    bool hasAbsoluteTimes() const;

    /// Whether frames have no times but are numbered, in decoding order.
    bool hasFrameNumbersAsTimes() const;

    /// False for audio formats whose header lacks the duration; their files are small.
    bool givesExactDuration() const;

    /// Whether packet durations include the encoder's padding.
    bool hasPaddingInDurations() const;

    /// Whether seeking finds its target, and packets after it have correct timestamps. When seeking
    /// in Ogg, the library sometimes assigns the requested time to the page it found.
    bool seeksReliably() const;

    /// Whether seeking to the first timestamp leads to the first packet. Formats with discontinuous
    /// timestamps may have it twice.
    bool findsStartByTime() const;

    /// Whether packets flagged as corrupt mostly decode: transport streams flag them after any
    /// reception error.
    bool overreportsCorruption() const;

private:
    bool isOgg() const;

    AVInputFormat const& m_demuxer;
    std::string_view m_name;
};

} // namespace framewright
