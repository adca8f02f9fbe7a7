#include "media/internal/pixel_format.h"

#include <algorithm>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixdesc.h>
}

namespace framewright {

namespace {

struct Known {
    AVPixelFormat format;
    PixelLayout layout;
};

bool isFullRangeVariant(AVPixelFormat format)
{
    return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P ||
           format == AV_PIX_FMT_YUVJ444P || format == AV_PIX_FMT_YUVJ440P ||
           format == AV_PIX_FMT_YUVJ411P;
}

std::optional<PixelLayout> described(AVPixelFormat format)
{
    AVPixFmtDescriptor const* const description = av_pix_fmt_desc_get(format);
    constexpr auto foreign = AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM |
                             AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER |
                             AV_PIX_FMT_FLAG_FLOAT;
    if (!description || (description->flags & foreign))
        return std::nullopt;

    bool const hasAlpha = description->flags & AV_PIX_FMT_FLAG_ALPHA;
    bool const isRGB = description->flags & AV_PIX_FMT_FLAG_RGB;
    int const components = description->nb_components;
    bool const isPlanar = av_pix_fmt_count_planes(format) == components;
    int const depth = description->comp[0].depth;
    bool const isInLowBits = std::all_of(
        description->comp, description->comp + components, [&](AVComponentDescriptor const& c) {
            return c.depth == depth && c.shift == 0 && c.step == (depth > 8 ? 2 : 1);
        });
    if (!isPlanar || !isInLowBits || depth < 8 || depth > 16)
        return std::nullopt;

    if (components - int(hasAlpha) == 1)
        return PixelLayout{PixelLayout::Model::gray, depth, 0, 0, hasAlpha};
    return PixelLayout{isRGB ? PixelLayout::Model::gbr : PixelLayout::Model::yuv, depth,
                       description->log2_chroma_w, description->log2_chroma_h, hasAlpha};
}

/// The plain format of every layout, in the library's order: common ones come first.
std::vector<Known> const& knownFormats()
{
    static std::vector<Known> const known = [] {
        std::vector<Known> formats;
        AVPixFmtDescriptor const* description = nullptr;
        while ((description = av_pix_fmt_desc_next(description))) {
            AVPixelFormat const format = av_pix_fmt_desc_get_id(description);
            if (auto const layout = described(format); layout && !isFullRangeVariant(format))
                formats.push_back({format, *layout});
        }
        return formats;
    }();
    return known;
}

} // namespace

std::optional<PixelLayout> layoutOf(AVPixelFormat format)
{
    return described(format);
}

AVPixelFormat formatOf(PixelLayout layout)
{
    auto const found = std::ranges::find(knownFormats(), layout, &Known::layout);
    return found == knownFormats().end() ? AV_PIX_FMT_NONE : found->format;
}

PixelLayout nearestLayout(AVPixelFormat format)
{
    std::vector<AVPixelFormat> choice;
    for (Known const& known : knownFormats())
        choice.push_back(known.format);
    choice.push_back(AV_PIX_FMT_NONE);
    AVPixelFormat const best =
        avcodec_find_best_pix_fmt_of_list(choice.data(), format, /*has_alpha*/ 1, nullptr);
    return described(best).value_or(PixelLayout{});
}

ColorTags colorsOf(AVFrame const& frame)
{
    return {frame.color_primaries, frame.color_trc, frame.colorspace,
            frame.color_range == AVCOL_RANGE_JPEG,
            frame.chroma_location == AVCHROMA_LOC_CENTER ||
                frame.chroma_location == AVCHROMA_LOC_TOP ||
                frame.chroma_location == AVCHROMA_LOC_BOTTOM};
}

void setColors(AVFrame& frame, ColorTags colors)
{
    frame.color_primaries = static_cast<AVColorPrimaries>(colors.primaries);
    frame.color_trc = static_cast<AVColorTransferCharacteristic>(colors.transfer);
    frame.colorspace = static_cast<AVColorSpace>(colors.matrix);
    frame.color_range = colors.isFullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    frame.chroma_location = colors.chromaIsCentered ? AVCHROMA_LOC_CENTER : AVCHROMA_LOC_LEFT;
}

} // namespace framewright
