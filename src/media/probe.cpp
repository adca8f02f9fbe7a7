#include "media/media_info.h"

#include "media/internal/av_handles.h"
#include "media/internal/media_failure.h"
#include "media/internal/media_file.h"
#include "media/internal/media_input.h"
#include "media/internal/photo_decoding.h"
#include "media/internal/stream_mastering.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace framewright {

namespace {

MediaInfo photoInfo(Descriptor const& opened, PhotoFormat format, std::filesystem::path const& file)
{
    QSize const size = photoSize(opened, format, file);
    MediaInfo info;
    info.kind = MediaKind::image;
    info.hasVideo = true;
    info.width = size.width();
    info.height = size.height();
    return info;
}

Orientation orientationOf(AVStream const& stream)
{
    std::size_t size = 0;
    auto const* const matrix = reinterpret_cast<std::int32_t const*>(
        av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size));
    if (!matrix || size < 9 * sizeof(std::int32_t))
        return {};
    // In the upright image the stored x axis points along (a, b), the y axis along (c, d).
    double a = matrix[0];
    double b = matrix[1];
    double const c = matrix[3];
    double const d = matrix[4];
    Orientation orientation;
    orientation.isMirrored = a * d - b * c < 0;
    if (orientation.isMirrored) {
        a = -a;
        b = -b;
    }
    long const turns = std::lround(std::atan2(b, a) / (std::numbers::pi / 2));
    orientation.quarterTurns = int((turns + 4) % 4);
    return orientation;
}

/// The width in square pixels. The height is kept, so that no lines are resampled.
int squareWidth(AVFormatContext& format, AVStream& stream)
{
    int const width = stream.codecpar->width;
    AVRational const aspect = av_guess_sample_aspect_ratio(&format, &stream, nullptr);
    double const ratio = aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1;
    if (ratio < 0.1 || ratio > 10) // Implausible: an error in the file.
        return width;
    return std::clamp(int(std::lround(width * ratio)), 1, maxImageSide);
}

double frameRateOf(AVStream const& stream)
{
    for (AVRational const rate : {stream.avg_frame_rate, stream.r_frame_rate}) {
        if (rate.num > 0 && rate.den > 0)
            return av_q2d(rate);
    }
    return 0;
}

std::string tagOf(AVStream const& stream)
{
    if (stream.codecpar->codec_tag == 0)
        return "";
    char text[AV_FOURCC_MAX_STRING_SIZE];
    return av_fourcc_make_string(text, stream.codecpar->codec_tag);
}

void addVideoFacts(MediaInfo& info, AVFormatContext& format, AVStream& stream)
{
    info.hasVideo = true;
    info.width = squareWidth(format, stream);
    info.height = stream.codecpar->height;
    info.orientation = orientationOf(stream);
    info.frameRate = frameRateOf(stream);
    info.isHDR = stream.codecpar->color_trc == AVCOL_TRC_SMPTE2084 ||
                 stream.codecpar->color_trc == AVCOL_TRC_ARIB_STD_B67;
    info.mastering = masteringDisplayOf(stream);
    info.videoCodec = avcodec_get_name(stream.codecpar->codec_id);
    info.videoTag = tagOf(stream);
    info.colors = {stream.codecpar->color_primaries, stream.codecpar->color_trc,
                   stream.codecpar->color_space, stream.codecpar->color_range == AVCOL_RANGE_JPEG,
                   stream.codecpar->chroma_location == AVCHROMA_LOC_CENTER};
}

void addAudioFacts(MediaInfo& info, AVStream const& stream)
{
    info.hasAudio = true;
    info.channels = stream.codecpar->ch_layout.nb_channels;
    info.sampleRate = stream.codecpar->sample_rate;
    info.audioCodec = avcodec_get_name(stream.codecpar->codec_id);
}

/// The encoder's padding at the end of a packet, as far as the packet's duration includes it.
std::int64_t droppedAtEnd(AVPacket const& packet, AVStream const& stream,
                          ContainerFormat const& container)
{
    if (!container.hasPaddingInDurations())
        return 0;
    std::size_t size = 0;
    std::uint8_t const* const skip =
        av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
    if (!skip || size < 8 || stream.codecpar->sample_rate <= 0)
        return 0;
    std::uint32_t const samples =
        skip[4] | skip[5] << 8 | skip[6] << 16 | std::uint32_t(skip[7]) << 24;
    return av_rescale_q(samples, {1, stream.codecpar->sample_rate}, stream.time_base);
}

/// The end of the last packet, found by reading all of them without decoding.
double measuredEnd(MediaInput& input)
{
    PacketHandle const packet = newPacket();
    double end = 0;
    while (true) {
        try {
            if (!input.read(*packet))
                return end;
        } catch (MediaError const&) {
            return end; // What cannot be read doesn't count.
        }
        AVStream const& stream = *input.format()->streams[packet->stream_index];
        if ((&stream == input.video() || &stream == input.audio()) &&
            packet->pts != AV_NOPTS_VALUE) {
            std::int64_t const last =
                packet->pts + packet->duration - droppedAtEnd(*packet, stream, input.container());
            end = std::max(end, double(last - input.zero(stream)) * av_q2d(stream.time_base));
        }
        av_packet_unref(packet.get());
    }
}

double durationOf(MediaInput& input)
{
    double end = 0;
    for (AVStream const* const stream : {input.video(), input.audio()}) {
        if (!stream)
            continue;
        double const its = input.end(*stream);
        if (its < 0)
            return measuredEnd(input);
        end = std::max(end, its);
    }
    return end;
}

} // namespace

MediaInfo probeMedia(std::filesystem::path const& file)
{
    Descriptor opened = openMediaFile(file);
    PhotoFormat const format = photoFormat(readHead(opened, file));
    if (format != PhotoFormat::none)
        return photoInfo(opened, format, file);

    MediaInput input(std::move(opened), file, MediaInput::Detail::complete);
    input.findEncoderDelay();
    MediaInfo info;
    info.kind = input.video() ? MediaKind::video : MediaKind::audio;
    // Opening the decoders reports an unsupported codec now rather than at the first frame.
    if (AVStream* const video = input.video()) {
        input.openDecoder(*video, 1);
        addVideoFacts(info, *input.format(), *video);
    }
    if (AVStream* const audio = input.audio()) {
        input.openDecoder(*audio, 1);
        addAudioFacts(info, *audio);
    }
    info.duration = durationOf(input);
    return info;
}

} // namespace framewright
