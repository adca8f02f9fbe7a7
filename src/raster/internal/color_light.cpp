#include "raster/internal/color_light.h"

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

constexpr float referenceWhite = 203; // cd/m²
constexpr float hlgPeak = 1000;
constexpr float pqPeak = 10000;
constexpr float hlgGamma = 1.2F; // Of a screen of 1000 cd/m².
constexpr float displayGamma = 2.4F;

constexpr float hlgA = 0.17883277F, hlgB = 0.28466892F, hlgC = 0.55991073F;
constexpr float pqM1 = 2610.0F / 16384, pqM2 = 2523.0F / 32;
constexpr float pqC1 = 3424.0F / 4096, pqC2 = 2413.0F / 128, pqC3 = 2392.0F / 128;

using Matrix = std::array<RGB, 3>;

constexpr Matrix wideFromBT709 = {RGB{0.6274039F, 0.3292830F, 0.0433131F},
                                  RGB{0.0690973F, 0.9195404F, 0.0113623F},
                                  RGB{0.0163914F, 0.0880133F, 0.8955953F}};
constexpr Matrix wideFromP3 = {RGB{0.7538330F, 0.1985974F, 0.0475696F},
                               RGB{0.0457438F, 0.9417772F, 0.0124789F},
                               RGB{-0.0012103F, 0.0176017F, 0.9836086F}};
constexpr Matrix bt709FromWide = {RGB{1.6604910F, -0.5876411F, -0.0728499F},
                                  RGB{-0.1245505F, 1.1328999F, -0.0083494F},
                                  RGB{-0.0181508F, -0.1005789F, 1.1187297F}};
constexpr RGB wideLuminance = {0.2627F, 0.6780F, 0.0593F};
constexpr RGB bt709Luminance = {0.2126F, 0.7152F, 0.0722F};

float product(RGB const& a, RGB const& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

RGB product(Matrix const& matrix, RGB const& color)
{
    return {product(matrix[0], color), product(matrix[1], color), product(matrix[2], color)};
}

RGB scaled(RGB color, float factor)
{
    return {color[0] * factor, color[1] * factor, color[2] * factor};
}

/// Each by a curve that goes on below 0 as it does above: what lies just outside of a gamut then
/// leads smoothly into it.
template <typename Curve>
RGB each(RGB color, Curve curve)
{
    for (float& value : color)
        value = std::copysign(curve(std::abs(value)), value);
    return color;
}

float hlgScene(float signal)
{
    return signal <= 0.5F ? signal * signal / 3 : (std::exp((signal - hlgC) / hlgA) + hlgB) / 12;
}

float hlgCoded(float scene)
{
    return scene <= 1 / 12.0F ? std::sqrt(3 * scene) : hlgA * std::log(12 * scene - hlgB) + hlgC;
}

float pqLight(float signal)
{
    float const root = std::pow(std::min(signal, 1.0F), 1 / pqM2);
    float const light = std::pow(std::max(0.0F, root - pqC1) / (pqC2 - pqC3 * root), 1 / pqM1);
    return light * (pqPeak / referenceWhite);
}

RGB toWide(RGB light, int primaries)
{
    constexpr int bt709 = 1, theaterP3 = 11, displayP3 = 12;
    if (primaries == bt709)
        return product(wideFromBT709, light);
    if (primaries == theaterP3 || primaries == displayP3)
        return product(wideFromP3, light);
    return light;
}

/// As it is up to `knee`, then ever more slowly towards `peak`.
float bentBelow(float light, float knee, float peak)
{
    if (light <= knee)
        return light;
    float const above = (light - knee) / (peak - knee);
    return knee + (peak - knee) * above / (1 + above);
}

/// Nearer to its grey, until all of it is between 0 and 1.
RGB fitted(RGB color)
{
    float const gray = std::clamp(product(bt709Luminance, color), 0.0F, 1.0F);
    float kept = 1;
    for (float const value : color) {
        if (value > 1)
            kept = std::min(kept, (1 - gray) / (value - gray));
        else if (value < 0)
            kept = std::min(kept, gray / (gray - value));
    }
    for (float& value : color)
        value = std::clamp(gray + kept * (value - gray), 0.0F, 1.0F);
    return color;
}

} // namespace

RGB lightOf(RGB signal, ColorTags colors)
{
    constexpr int pq = 16, hlg = 18;
    if (colors.transfer == pq)
        return toWide(each(signal, pqLight), colors.primaries);
    if (colors.transfer != hlg)
        return toWide(each(signal, [](float v) { return std::pow(v, displayGamma); }),
                      colors.primaries);
    RGB const scene = toWide(each(signal, hlgScene), colors.primaries);
    float const luminance = std::max(0.0F, product(wideLuminance, scene));
    return scaled(scene, std::pow(luminance, hlgGamma - 1) * (hlgPeak / referenceWhite));
}

RGB hlgSignal(RGB light)
{
    constexpr float peak = hlgPeak / referenceWhite;
    constexpr float knee = peak * 3 / 4;
    float const brightest = std::max({light[0], light[1], light[2]});
    if (brightest > knee)
        light = scaled(light, bentBelow(brightest, knee, peak) / brightest);
    RGB const shown = scaled(light, 1 / peak);
    float const luminance = product(wideLuminance, shown);
    if (luminance <= 0)
        return {};
    RGB const scene = scaled(shown, std::pow(luminance, 1 / hlgGamma - 1));
    RGB signal = each(scene, hlgCoded);
    for (float& value : signal)
        value = std::clamp(value, 0.0F, 1.0F);
    return signal;
}

RGB standardSignal(RGB light, float peak)
{
    auto const bent = [&](float value) {
        float const x = std::min(value, peak);
        return x * (1 + x / (peak * peak)) / (1 + x);
    };
    float const brightest = std::max({light[0], light[1], light[2]});
    if (brightest <= 0)
        return {};
    RGB const paler = each(light, bent);
    RGB color = scaled(light, bent(brightest) / brightest);
    for (std::size_t n = 0; n < 3; ++n)
        color[n] = (color[n] + paler[n]) / 2;
    return each(fitted(product(bt709FromWide, color)),
                [](float v) { return std::pow(v, 1 / displayGamma); });
}

float peakLight(ColorTags colors)
{
    constexpr int pq = 16, hlg = 18;
    if (colors.transfer == pq)
        return pqPeak / referenceWhite;
    return colors.transfer == hlg ? hlgPeak / referenceWhite : 1;
}

} // namespace framewright
