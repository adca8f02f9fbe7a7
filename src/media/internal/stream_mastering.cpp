#include "media/internal/stream_mastering.h"

#include <fmt/format.h>

#include <cmath>
#include <new>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/mastering_display_metadata.h>
}

namespace framewright {

namespace {

// The units of the HEVC SEI message.
constexpr int chromaticityUnits = 50'000;
constexpr int luminanceUnits = 10'000;

/// Rounded to the precision of the bit stream, so that a value survives being written and read.
double number(AVRational value, int units)
{
    return std::round(av_q2d(value) * units) / units;
}

MasteringDisplay::Chromaticity chromaticity(AVRational const (&point)[2])
{
    return {number(point[0], chromaticityUnits), number(point[1], chromaticityUnits)};
}

void set(AVRational (&point)[2], MasteringDisplay::Chromaticity const& value)
{
    point[0] = {int(std::lround(value.x * chromaticityUnits)), chromaticityUnits};
    point[1] = {int(std::lround(value.y * chromaticityUnits)), chromaticityUnits};
}

std::string text(MasteringDisplay::Chromaticity const& value)
{
    return fmt::format("({:.0f},{:.0f})", value.x * chromaticityUnits, value.y * chromaticityUnits);
}

} // namespace

std::optional<MasteringDisplay> masteringDisplayOf(AVStream const& stream)
{
    std::size_t size = 0;
    auto const* const data = reinterpret_cast<AVMasteringDisplayMetadata const*>(
        av_stream_get_side_data(&stream, AV_PKT_DATA_MASTERING_DISPLAY_METADATA, &size));
    if (!data || size < sizeof(*data) || !data->has_primaries || !data->has_luminance)
        return std::nullopt;
    return MasteringDisplay{
        chromaticity(data->display_primaries[0]),    chromaticity(data->display_primaries[1]),
        chromaticity(data->display_primaries[2]),    chromaticity(data->white_point),
        number(data->min_luminance, luminanceUnits), number(data->max_luminance, luminanceUnits)};
}

void setMasteringDisplay(AVStream& stream, MasteringDisplay const& display)
{
    AVMasteringDisplayMetadata* const data = av_mastering_display_metadata_alloc();
    if (!data ||
        av_stream_add_side_data(&stream, AV_PKT_DATA_MASTERING_DISPLAY_METADATA,
                                reinterpret_cast<std::uint8_t*>(data), sizeof(*data)) < 0) {
        av_free(data);
        throw std::bad_alloc();
    }
    set(data->display_primaries[0], display.red);
    set(data->display_primaries[1], display.green);
    set(data->display_primaries[2], display.blue);
    set(data->white_point, display.white);
    data->min_luminance = {int(std::lround(display.minLuminance * luminanceUnits)), luminanceUnits};
    data->max_luminance = {int(std::lround(display.maxLuminance * luminanceUnits)), luminanceUnits};
    data->has_primaries = data->has_luminance = 1;
}

std::string masteringParameter(MasteringDisplay const& display)
{
    return fmt::format("master-display=G{}B{}R{}WP{}L({:.0f},{:.0f})", text(display.green),
                       text(display.blue), text(display.red), text(display.white),
                       display.maxLuminance * luminanceUnits,
                       display.minLuminance * luminanceUnits);
}

} // namespace framewright
