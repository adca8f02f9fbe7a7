#include "media/internal/container_format.h"

#include <algorithm>

extern "C" {
#include <libavformat/avformat.h>
}

namespace framewright {

namespace {

/// Self-contained formats only: a playlist would make us open whatever file or address it names.
constexpr std::string_view demuxers[] = {
    "mov,mp4,m4a,3gp,3g2,mj2",
    "matroska,webm",
    "avi",
    "mpegts",
    "mpeg",
    "flv",
    "asf",
    "mxf",
    "dv",
    "ivf",
    "yuv4mpegpipe",
    "ogg",
    "wav",
    "w64",
    "aiff",
    "flac",
    "mp3",
    "aac",
    "ac3",
    "eac3",
    "dts",
    "amr",
    "caf",
    "au",
    "ape",
    "wv",
    "tta",
};

constexpr std::string_view needFullScan[] = {"mp3", "ogg", "aac", "ac3", "eac3", "dts", "amr"};

} // namespace

ContainerFormat::ContainerFormat(AVInputFormat const& demuxer)
    : m_demuxer(demuxer), m_name(demuxer.name)
{
}

bool ContainerFormat::isSelfContained() const
{
    return std::ranges::find(demuxers, m_name) != std::end(demuxers);
}

bool ContainerFormat::isMov() const
{
    return m_name == "mov,mp4,m4a,3gp,3g2,mj2";
}

bool ContainerFormat::isOgg() const
{
    return m_name == "ogg";
}

bool ContainerFormat::hasAbsoluteTimes() const
{
    return isMov() || m_name == "matroska,webm";
}

bool ContainerFormat::hasFrameNumbersAsTimes() const
{
    return m_name == "avi";
}

bool ContainerFormat::givesExactDuration() const
{
    return std::ranges::find(needFullScan, m_name) == std::end(needFullScan);
}

bool ContainerFormat::hasPaddingInDurations() const
{
    return !isOgg();
}

bool ContainerFormat::seeksReliably() const
{
    return !isOgg();
}

bool ContainerFormat::findsStartByTime() const
{
    return !(m_demuxer.flags & AVFMT_TS_DISCONT) || isOgg();
}

bool ContainerFormat::overreportsCorruption() const
{
    return m_name == "mpegts";
}

} // namespace framewright
