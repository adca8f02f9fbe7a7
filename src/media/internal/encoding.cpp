#include "media/internal/encoding.h"

#include "media/internal/media_failure.h"
#include "media/internal/pixel_format.h"
#include "media/internal/stream_mastering.h"

#include <fmt/format.h>

#include <algorithm>

extern "C" {
#include <libavutil/opt.h>
}

namespace framewright {

namespace {

CodecHandle newEncoder(AVCodec const* codec, char const* name, std::filesystem::path const& file)
{
    if (!codec)
        throw failure(MediaError::Cause::unsupported, file,
                      fmt::format("couldn't be written: the encoder {} is not installed.", name));
    auto encoder = made<CodecHandle>(avcodec_alloc_context3(codec));
    // MP4 stores the parameter sets once, in its index, not with every keyframe.
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    return encoder;
}

void open(AVCodecContext& encoder, std::filesystem::path const& file)
{
    forgetLibraryMessages();
    int const result = avcodec_open2(&encoder, nullptr, nullptr);
    if (result < 0)
        throw libraryFailure(file, "written", result);
}

/// Limits the bit rate to 20 Mbit/s at 1080p, over any one second. Ordinary footage stays below;
/// noise, water and confetti at constant quality would exceed what platforms accept.
void setCap(AVCodecContext& encoder)
{
    constexpr double atFullHD = 20e6;
    constexpr double fullHD = 1920.0 * 1080;
    constexpr double least = 1e6;
    double const cap = std::max(least, atFullHD * encoder.width * encoder.height / fullHD);
    encoder.rc_max_rate = std::int64_t(cap);
    encoder.rc_buffer_size = int(std::min(cap, 2e9));
}

void setColors(AVCodecContext& encoder, ColorTags colors)
{
    encoder.color_primaries = static_cast<AVColorPrimaries>(colors.primaries);
    encoder.color_trc = static_cast<AVColorTransferCharacteristic>(colors.transfer);
    encoder.colorspace = static_cast<AVColorSpace>(colors.matrix);
    encoder.color_range = AVCOL_RANGE_MPEG;
    encoder.chroma_sample_location = AVCHROMA_LOC_LEFT;
}

} // namespace

CodecHandle openVideoEncoder(MovieSettings const& settings, std::filesystem::path const& file)
{
    quietLibrary();
    bool const isHLG = settings.codec == MovieSettings::Codec::hevcHLG;
    char const* const name = isHLG ? "libx265" : "libx264";
    if (settings.width <= 0 || settings.height <= 0 || settings.width % 2 != 0 ||
        settings.height % 2 != 0 || settings.framesPerSecond <= 0)
        throw failure(MediaError::Cause::unsupported, file,
                      fmt::format("couldn't be written: {} × {} pixels at {} frames per second "
                                  "cannot be encoded.",
                                  settings.width, settings.height, settings.framesPerSecond));

    auto encoder = newEncoder(avcodec_find_encoder_by_name(name), name, file);
    encoder->width = settings.width;
    encoder->height = settings.height;
    encoder->sample_aspect_ratio = {1, 1};
    encoder->time_base = {1, settings.framesPerSecond};
    encoder->framerate = {settings.framesPerSecond, 1};
    encoder->thread_count = settings.threads;
    encoder->max_b_frames = 2;
    // Closed GOPs of half a second: quick to seek in, and each can be cut out without re-encoding.
    encoder->gop_size = std::max(1, settings.framesPerSecond / 2);
    encoder->flags |= AV_CODEC_FLAG_CLOSED_GOP;
    encoder->pix_fmt = formatOf(isHLG ? PixelLayout::yuv420p10() : PixelLayout::yuv420p8());
    setCap(*encoder);
    setColors(*encoder, isHLG ? ColorTags::hlg() : ColorTags::bt709());

    av_opt_set(encoder->priv_data, "preset", settings.preset, 0);
    av_opt_set_double(encoder->priv_data, "crf", settings.quality, 0);
    av_opt_set(encoder->priv_data, "profile", isHLG ? "main10" : "high", 0);
    if (isHLG) {
        // Some players accept HEVC in MP4 only under this tag: all parameter sets in the index.
        encoder->codec_tag = MKTAG('h', 'v', 'c', '1');
        std::string parameters = "log-level=none:open-gop=0";
        if (settings.mastering)
            parameters += ":" + masteringParameter(*settings.mastering);
        if (settings.threads > 0)
            parameters += fmt::format(":pools={}", settings.threads);
        av_opt_set(encoder->priv_data, "x265-params", parameters.c_str(), 0);
    }
    open(*encoder, file);
    return encoder;
}

CodecHandle openAudioEncoder(int bitRate, std::filesystem::path const& file)
{
    quietLibrary();
    auto encoder = newEncoder(avcodec_find_encoder(AV_CODEC_ID_AAC), "aac", file);
    encoder->sample_rate = 48000;
    encoder->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
    encoder->bit_rate = bitRate;
    encoder->time_base = {1, encoder->sample_rate};
    encoder->profile = FF_PROFILE_AAC_LOW;
    open(*encoder, file);
    return encoder;
}

} // namespace framewright
