#include "raster/internal/color_cube.h"

#include "raster/internal/color_light.h"

#include <algorithm>
#include <cmath>
#include <list>
#include <mutex>

namespace framewright {

namespace {

constexpr int chromaStep = 16; ///< Between grid points, in 10-bit samples.
constexpr int chromaPoints = 1024 / chromaStep + 1;
constexpr int lumaStep = 8;
constexpr int lumaValues = 1024;
constexpr int lumaPoints = lumaValues / lumaStep + 1;

constexpr int standardTransfer = 1, hlgTransfer = 18, pqTransfer = 16;
constexpr int bt709 = 1, bt2020 = 9;

bool isKnown(ColorTags colors)
{
    bool const knowsTransfer = colors.transfer == standardTransfer || colors.isHDR();
    return knowsTransfer && (colors.primaries == bt709 || colors.primaries == bt2020 ||
                             colors.primaries == 11 || colors.primaries == 12);
}

/// Luma, 0 to 1, and two colour differences, -0.5 to 0.5.
using YUV = std::array<float, 3>;

struct LumaWeights {
    float red;
    float blue;

    float green() const { return 1 - red - blue; }
};

LumaWeights lumaWeights(int matrix)
{
    return matrix == bt2020 ? LumaWeights{0.2627F, 0.0593F} : LumaWeights{0.2126F, 0.0722F};
}

RGB signalOf(YUV const& color, LumaWeights weights)
{
    float const red = color[0] + 2 * (1 - weights.red) * color[2];
    float const blue = color[0] + 2 * (1 - weights.blue) * color[1];
    return {red, (color[0] - weights.red * red - weights.blue * blue) / weights.green(), blue};
}

YUV codedOf(RGB const& signal, LumaWeights weights)
{
    float const luma =
        weights.red * signal[0] + weights.green() * signal[1] + weights.blue * signal[2];
    return {luma, (signal[2] - luma) / (2 * (1 - weights.blue)),
            (signal[0] - luma) / (2 * (1 - weights.red))};
}

/// Fractional bits, so that the largest sample just fits 16 bits.
int fractionBits(int depth)
{
    return 14 - depth;
}

std::int16_t fixed(float sample, int depth)
{
    float const largest = float((1 << depth) - 1);
    return std::int16_t(
        std::lround(std::clamp(sample, 0.0F, largest) * float(1 << fractionBits(depth))));
}

/// The bits of the weights of `Corners`.
constexpr int weightBits = 8;
static_assert(chromaStep * chromaStep == 1 << weightBits);

/// The four grid points around a chroma sample, and how much each of them counts.
struct Corners {
    std::array<int, 4> point;
    std::array<int, 4> weight;

    Corners(int u, int v)
    {
        int const column = u / chromaStep, row = v / chromaStep;
        int const right = u % chromaStep, down = v % chromaStep;
        int const first = row * chromaPoints + column;
        point = {first, first + 1, first + chromaPoints, first + chromaPoints + 1};
        weight = {(chromaStep - right) * (chromaStep - down), right * (chromaStep - down),
                  (chromaStep - right) * down, right * down};
    }
};

template <typename Sample>
Sample* rowOf(Frame::WritablePlane const& plane, int y)
{
    return reinterpret_cast<Sample*>(plane.data + y * plane.stride);
}

std::uint16_t const* rowOf(Frame::Plane const& plane, int y)
{
    return reinterpret_cast<std::uint16_t const*>(plane.data + y * plane.stride);
}

} // namespace

ColorTags ColorCube::inputColors(ColorTags from)
{
    bool const isWide = from.isHDR() || from.primaries == bt2020;
    return {from.primaries, from.transfer, isWide ? bt2020 : bt709, false, false};
}

std::shared_ptr<ColorCube const> ColorCube::between(ColorTags from, ColorTags to)
{
    bool const isSame = from.transfer == to.transfer && from.primaries == to.primaries;
    bool const isStandard = !from.isHDR() && !to.isHDR();
    bool const isMade = to == ColorTags::bt709() || to == ColorTags::hlg();
    if (isSame || isStandard || !isMade || !isKnown(from))
        return nullptr;

    struct Kept {
        ColorTags from;
        ColorTags to;
        std::shared_ptr<ColorCube const> cube;
    };
    static std::mutex mutex;
    static std::list<Kept> all;
    std::lock_guard const lock(mutex);
    ColorTags const input = inputColors(from);
    auto const found = std::ranges::find_if(
        all, [&](Kept const& kept) { return kept.from == input && kept.to == to; });
    if (found != all.end())
        return found->cube;
    all.push_back({input, to, std::make_shared<ColorCube const>(input, to)});
    return all.back().cube;
}

ColorCube::ColorCube(ColorTags from, ColorTags to)
    : m_outputDepth(to.isHDR() ? 10 : 8),
      m_luma(std::size_t(chromaPoints) * chromaPoints * lumaValues),
      m_chroma(std::size_t(chromaPoints) * chromaPoints * lumaPoints)
{
    LumaWeights const decoding = lumaWeights(inputColors(from).matrix);
    LumaWeights const coding = lumaWeights(to.matrix);
    float const peak = peakLight(from);
    float const unit = float(1 << (m_outputDepth - 8));
    for (int point = 0; point < chromaPoints * chromaPoints; ++point) {
        float const u = float(point % chromaPoints * chromaStep - 512) / 896;
        float const v = float(point / chromaPoints * chromaStep - 512) / 896;
        std::int16_t* const luma = &m_luma[std::size_t(point) * lumaValues];
        Chroma* const chroma = &m_chroma[std::size_t(point) * lumaPoints];
        float before = 0;
        for (int n = 0; n < lumaPoints; ++n) {
            float const y = float(n * lumaStep - 64) / 876;
            RGB const light = lightOf(signalOf({y, u, v}, decoding), from);
            RGB const signal = to.isHDR() ? hlgSignal(light) : standardSignal(light, peak);
            YUV const color = codedOf(signal, coding);
            float const sample = (16 + 219 * color[0]) * unit;
            for (int i = 0; i < lumaStep && n > 0; ++i)
                luma[(n - 1) * lumaStep + i] =
                    fixed(before + (sample - before) * float(i) / lumaStep, m_outputDepth);
            before = sample;
            chroma[n] = {fixed((128 + 224 * color[1]) * unit, m_outputDepth),
                         fixed((128 + 224 * color[2]) * unit, m_outputDepth)};
        }
    }
}

template <typename Sample>
void ColorCube::convertRows(Frame const& picture, FrameTarget const& target) const
{
    int const shift = weightBits + fractionBits(m_outputDepth);
    int const half = 1 << (shift - 1);
    auto const luma = [&](std::array<std::int16_t const*, 4> const& columns, Corners const& corners,
                          int y) {
        int sum = half;
        for (std::size_t i = 0; i < 4; ++i)
            sum += columns[i][y] * corners.weight[i];
        return Sample(sum >> shift);
    };
    Frame::Plane const from[] = {picture.plane(0), picture.plane(1), picture.plane(2)};
    for (int row = 0; row < from[1].height; ++row) {
        std::uint16_t const* const us = rowOf(from[1], row);
        std::uint16_t const* const vs = rowOf(from[2], row);
        std::uint16_t const* const ys[] = {rowOf(from[0], 2 * row), rowOf(from[0], 2 * row + 1)};
        Sample* const toU = rowOf<Sample>(target.planes[1], row);
        Sample* const toV = rowOf<Sample>(target.planes[2], row);
        Sample* const toY[] = {rowOf<Sample>(target.planes[0], 2 * row),
                               rowOf<Sample>(target.planes[0], 2 * row + 1)};
        for (int x = 0; x < from[1].width; ++x) {
            Corners const corners(us[x] & 1023, vs[x] & 1023);
            std::array<std::int16_t const*, 4> columns;
            for (std::size_t i = 0; i < 4; ++i)
                columns[i] = &m_luma[std::size_t(corners.point[i]) * lumaValues];
            int const block[] = {ys[0][2 * x] & 1023, ys[0][2 * x + 1] & 1023, ys[1][2 * x] & 1023,
                                 ys[1][2 * x + 1] & 1023};
            for (int i = 0; i < 4; ++i)
                toY[i / 2][2 * x + i % 2] = luma(columns, corners, block[i]);

            int const mean = block[0] + block[1] + block[2] + block[3];
            int const point = (mean + 2 * lumaStep) / (4 * lumaStep);
            int u = half, v = half;
            for (std::size_t i = 0; i < 4; ++i) {
                Chroma const& chroma =
                    m_chroma[std::size_t(corners.point[i]) * lumaPoints + std::size_t(point)];
                u += chroma.u * corners.weight[i];
                v += chroma.v * corners.weight[i];
            }
            toU[x] = Sample(u >> shift);
            toV[x] = Sample(v >> shift);
        }
    }
}

void ColorCube::convert(Frame const& picture, FrameTarget const& target) const
{
    if (m_outputDepth == 8)
        convertRows<std::uint8_t>(picture, target);
    else
        convertRows<std::uint16_t>(picture, target);
}

} // namespace framewright
