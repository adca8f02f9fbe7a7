#include "media/internal/stereo_converter.h"

#include "media/audio_reader.h"
#include "media/internal/media_failure.h"

#include <algorithm>
#include <cmath>
#include <numeric>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace framewright {

namespace {

constexpr int outputRate = AudioReader::sampleRate;
constexpr int outputChannels = 2;

/// Gaps are filled in chunks, since a damaged file may have one that exceeds memory.
constexpr std::int64_t maxSilenceChunk = 16384;

/// The planes of a frame from sample `offset` on.
std::vector<std::uint8_t const*> planesFrom(AVFrame const& frame, int offset)
{
    auto const format = static_cast<AVSampleFormat>(frame.format);
    int const channels = frame.ch_layout.nb_channels;
    bool const isPlanar = av_sample_fmt_is_planar(format);
    int const step = av_get_bytes_per_sample(format) * (isPlanar ? 1 : channels);
    std::vector<std::uint8_t const*> planes(std::size_t(isPlanar ? channels : 1));
    for (std::size_t i = 0; i < planes.size(); ++i)
        planes[i] = frame.extended_data[i] + std::ptrdiff_t(offset) * step;
    return planes;
}

/// Mixing coefficients where the library's defaults are unsuitable: mono goes to both sides at full
/// level (not at -3 dB), and of channels without a layout the first two are left and right. Empty
/// for layouts that the library mixes.
std::vector<double> customMixMatrix(AVChannelLayout const& layout)
{
    auto const channels = std::size_t(layout.nb_channels);
    if (channels > 1 && layout.order == AV_CHANNEL_ORDER_NATIVE)
        return {};
    std::vector<double> matrix(outputChannels * channels);
    matrix[0] = 1;
    matrix[channels + (channels > 1 ? 1 : 0)] = 1;
    return matrix;
}

} // namespace

StereoConverter::StereoConverter(int sourceRate, std::filesystem::path const& file)
    : m_path(file), m_rate(sourceRate)
{
}

std::int64_t StereoConverter::startFor(std::int64_t output) const
{
    std::int64_t const step = m_rate / std::gcd(m_rate, outputRate);
    std::int64_t const source =
        av_rescale_rnd(std::max<std::int64_t>(0, output), m_rate, outputRate, AV_ROUND_DOWN);
    return source / step * step;
}

std::int64_t StereoConverter::outputFor(std::int64_t source) const
{
    return av_rescale_rnd(source, outputRate, m_rate, AV_ROUND_UP);
}

void StereoConverter::startAt(std::int64_t source)
{
    m_resampler.reset();
    m_expected = source;
    m_position = outputFor(source);
    m_ready.clear();
}

void StereoConverter::adaptTo(AVFrame const& frame)
{
    if (m_resampler && m_format == frame.format && m_channels == frame.ch_layout.nb_channels)
        return;
    if (m_resampler)
        finish();
    AVChannelLayout layout{};
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&layout, frame.ch_layout.nb_channels);
    else if (av_channel_layout_copy(&layout, &frame.ch_layout) < 0)
        throw std::bad_alloc();
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    std::vector<double> const matrix = customMixMatrix(layout);

    forgetLibraryMessages();
    SwrContext* resampler = nullptr;
    int result = swr_alloc_set_opts2(&resampler, &stereo, AV_SAMPLE_FMT_FLT, outputRate, &layout,
                                     static_cast<AVSampleFormat>(frame.format), m_rate, 0, nullptr);
    m_resampler.reset(resampler);
    if (result >= 0 && !matrix.empty())
        result = swr_set_matrix(resampler, matrix.data(), layout.nb_channels);
    if (result >= 0)
        result = swr_init(resampler);
    av_channel_layout_uninit(&layout);
    if (result < 0)
        throw libraryFailure(m_path, "read", result);
    m_format = frame.format;
    m_channels = frame.ch_layout.nb_channels;
}

bool StereoConverter::add(AudioBlock const& block)
{
    adaptTo(*block.frame);
    std::int64_t const gap = block.position - m_expected;
    if (gap > 0) {
        addSilence(*block.frame, int(std::min(gap, maxSilenceChunk)));
        return false;
    }
    int const overlap = int(std::min<std::int64_t>(-gap, block.length()));
    auto planes = planesFrom(*block.frame, block.begin + overlap);
    convert(planes.data(), block.length() - overlap);
    return true;
}

void StereoConverter::addSilence(AVFrame const& like, int count)
{
    auto const format = static_cast<AVSampleFormat>(like.format);
    FrameHandle const silence = newFrame();
    silence->format = like.format;
    silence->nb_samples = count;
    if (av_channel_layout_copy(&silence->ch_layout, &like.ch_layout) < 0 ||
        av_frame_get_buffer(silence.get(), 0) < 0)
        throw std::bad_alloc();
    av_samples_set_silence(silence->extended_data, 0, count, like.ch_layout.nb_channels, format);
    auto planes = planesFrom(*silence, 0);
    convert(planes.data(), count);
}

void StereoConverter::convert(std::uint8_t const** planes, int count)
{
    int const room = swr_get_out_samples(m_resampler.get(), count);
    std::size_t const before = m_ready.size();
    m_ready.resize(before + std::size_t(std::max(0, room)) * outputChannels);
    auto* out = reinterpret_cast<std::uint8_t*>(m_ready.data() + before);
    int const got = swr_convert(m_resampler.get(), &out, room, planes, count);
    if (got < 0)
        throw libraryFailure(m_path, "read", got);
    m_ready.resize(before + std::size_t(got) * outputChannels);
    // Floating-point files may contain NaN and infinity, which mixing would spread.
    std::replace_if(
        m_ready.begin() + std::ptrdiff_t(before), m_ready.end(),
        [](float sample) { return !std::isfinite(sample); }, 0.0F);
    m_expected += count;
}

void StereoConverter::finish()
{
    if (!m_resampler)
        return;
    convert(nullptr, 0);
    m_resampler.reset();
    std::int64_t const length = std::max<std::int64_t>(0, outputFor(m_expected) - m_position);
    if (std::int64_t(m_ready.size()) > length * outputChannels)
        m_ready.resize(std::size_t(length) * outputChannels);
}

void StereoConverter::take(std::int64_t first, std::span<float> interleaved)
{
    auto const count = std::int64_t(interleaved.size()) / outputChannels;
    std::int64_t const from = std::clamp(first, m_position, readyUpTo());
    std::int64_t const upTo = std::clamp(first + count, from, readyUpTo());
    auto const sample = [&](std::int64_t n) {
        return m_ready.begin() + std::ptrdiff_t((n - m_position) * outputChannels);
    };
    auto const rest = std::copy(sample(from), sample(upTo), interleaved.begin());
    std::fill(rest, interleaved.end(), 0.0F);
    m_ready.erase(m_ready.begin(), sample(upTo));
    m_position = std::max(upTo, first + count);
    if (m_position > upTo)
        m_ready.clear();
}

} // namespace framewright
