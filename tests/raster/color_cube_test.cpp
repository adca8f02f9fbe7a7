#include "raster/internal/color_cube.h"

#include "rendering/made_media.h"
#include "rendering/synthetic_frames.h"
#include "stills/still_frames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace framewright {

namespace {

constexpr ColorTags pq{9, 16, 9, false, false};

using Color = std::array<double, 3>;

PixelLayout layoutOf(ColorTags colors)
{
    return colors.isHDR() ? PixelLayout::yuv420p10() : PixelLayout::yuv420p8();
}

/// What becomes of a flat picture: the sample of each plane.
Color converted(Color const& yuv, ColorTags from, ColorTags to)
{
    Frame const picture =
        painted(64, 16, flat(yuv[0], yuv[1], yuv[2]), PixelLayout::yuv420p10(), from);
    Frame drawn(64, 16, layoutOf(to), to);
    Rect const whole{0, 0, 64, 16};
    FrameScaler().scale(picture, whole, whole, wholeOf(drawn));
    return {double(sample(drawn, 0, 33, 9)), double(sample(drawn, 1, 16, 5)),
            double(sample(drawn, 2, 16, 5))};
}

/// Luma, of limited range, of what a grey becomes.
double gray(double code, ColorTags from, ColorTags to)
{
    Color const found = converted({code, 512, 512}, from, to);
    double const unit = to.isHDR() ? 4 : 1;
    EXPECT_NEAR(found[1], 128 * unit, 1);
    EXPECT_NEAR(found[2], 128 * unit, 1);
    return (found[0] / unit - 16) / 219;
}

double codeOf(double signal)
{
    return 64 + 876 * signal;
}

/// Tone mapping by the formulas of the standards, step by step.
Color obvious(Color const& rgb, bool isPQ)
{
    Color light;
    for (std::size_t n = 0; n < 3; ++n) {
        double const v = rgb[n];
        double const root = std::pow(v, 32 / 2523.0);
        light[n] =
            isPQ ? 10000 * std::pow(std::max(root - 0.8359375, 0.0) / (18.8515625 - 18.6875 * root),
                                    16384 / 2610.0)
            : v <= 0.5 ? v * v / 3
                       : (std::exp((v - 0.55991073) / 0.17883277) + 0.28466892) / 12;
    }
    double const luminance = 0.2627 * light[0] + 0.678 * light[1] + 0.0593 * light[2];
    double const peak = isPQ ? 10000 / 203.0 : 1000 / 203.0;
    for (double& value : light)
        value = isPQ ? value / 203 : value * 1000 * std::pow(luminance, 0.2) / 203;

    auto const bent = [&](double x) { return x * (1 + x / (peak * peak)) / (1 + x); };
    double const most = *std::ranges::max_element(light);
    Color mapped;
    for (std::size_t n = 0; n < 3; ++n)
        mapped[n] = most > 0 ? (bent(light[n]) + light[n] / most * bent(most)) / 2 : 0;
    Color narrow{1.660491 * mapped[0] - 0.587641 * mapped[1] - 0.07285 * mapped[2],
                 -0.12455 * mapped[0] + 1.1329 * mapped[1] - 0.008349 * mapped[2],
                 -0.018151 * mapped[0] - 0.100579 * mapped[1] + 1.11873 * mapped[2]};
    double const gray = 0.2126 * narrow[0] + 0.7152 * narrow[1] + 0.0722 * narrow[2];
    double kept = 1;
    while (std::ranges::any_of(narrow, [&](double value) {
        double const paler = gray + kept * (value - gray);
        return paler < -1e-6 || paler > 1 + 1e-6;
    }))
        kept = std::max(0.0, kept - 0.0005);
    Color shown;
    for (std::size_t n = 0; n < 3; ++n)
        shown[n] = std::pow(std::clamp(gray + kept * (narrow[n] - gray), 0.0, 1.0), 1 / 2.4);
    return shown;
}

} // namespace

TEST(ColorCube, PutsTheLevelsWhereTheyBelong)
{
    struct Case {
        char const* name;
        ColorTags from, to;
        double code, signal, tolerance;
    };
    ColorTags const sdr = ColorTags::bt709(), hlg = ColorTags::hlg();
    for (Case const& c : {
             Case{"HLG black", hlg, sdr, codeOf(0), 0, 0.003},
             Case{"HLG below black", hlg, sdr, 10, 0, 0.003},
             Case{"HLG grey card", hlg, sdr, codeOf(0.38), 0.41, 0.015},
             Case{"HLG reference white", hlg, sdr, codeOf(0.75), 0.765, 0.015},
             Case{"HLG peak", hlg, sdr, codeOf(1), 1, 0.003},
             Case{"PQ black", pq, sdr, codeOf(0), 0, 0.003},
             Case{"PQ grey card, 26 cd/m2", pq, sdr, codeOf(0.38), 0.41, 0.015},
             Case{"PQ reference white", pq, sdr, codeOf(0.5807), 0.75, 0.015},
             Case{"PQ 1000 cd/m2", pq, sdr, codeOf(0.7518), 0.927, 0.015},
             Case{"PQ peak", pq, sdr, codeOf(1), 1, 0.003},
             Case{"standard black", sdr, hlg, codeOf(0), 0, 0.002},
             Case{"standard white", sdr, hlg, codeOf(1), 0.75, 0.003},
             Case{"PQ grey card to HLG", pq, hlg, codeOf(0.38), 0.38, 0.006},
             Case{"PQ reference white to HLG", pq, hlg, codeOf(0.5807), 0.75, 0.004},
             Case{"PQ peak to HLG", pq, hlg, codeOf(1), 0.985, 0.016},
         })
        EXPECT_NEAR(gray(c.code, c.from, c.to), c.signal, c.tolerance) << c.name;
}

TEST(ColorCube, BendsHighlightsWithoutAStep)
{
    for (ColorTags const from : {ColorTags::hlg(), pq}) {
        double before = gray(64, from, ColorTags::bt709());
        for (int code = 72; code <= 940; code += 12) {
            double const now = gray(code, from, ColorTags::bt709());
            EXPECT_GE(now, before) << code;
            EXPECT_LT(now - before, 0.03) << code;
            before = now;
        }
        EXPECT_GT(gray(940, from, ColorTags::bt709()) - gray(850, from, ColorTags::bt709()), 0.01);
    }
}

TEST(ColorCube, AgreesWithTheFormulas)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> any(0, 1);
    for (bool const isPQ : {false, true}) {
        ColorTags const from = isPQ ? pq : ColorTags::hlg();
        double sum = 0;
        int far = 0, count = 0;
        for (int n = 0; n < 1500; ++n) {
            // As colours are in pictures: the half or more of each is grey.
            double const level = any(random);
            Color rgb;
            for (double& value : rgb)
                value = level * (0.5 + 0.5 * any(random));
            double const luma = 0.2627 * rgb[0] + 0.678 * rgb[1] + 0.0593 * rgb[2];
            Color const found = converted({codeOf(luma), 512 + 896 * (rgb[2] - luma) / 1.8814,
                                           512 + 896 * (rgb[0] - luma) / 1.4746},
                                          from, ColorTags::bt709());
            Color const want = obvious(rgb, isPQ);
            double const y = 0.2126 * want[0] + 0.7152 * want[1] + 0.0722 * want[2];
            Color const coded{16 + 219 * y, 128 + 224 * (want[2] - y) / 1.8556,
                              128 + 224 * (want[0] - y) / 1.5748};
            for (std::size_t i = 0; i < 3; ++i) {
                double const off = std::abs(found[i] - coded[i]);
                far += off > 5;
                sum += off;
                ++count;
            }
        }
        // Where colours leave BT.709 the formulas have an edge, and the cube has it rounded.
        EXPECT_LT(far, count / 50) << isPQ;
        EXPECT_LT(sum / count, 0.8) << isPQ;
    }
}

TEST(ColorCube, KeepsHues)
{
    // Where a saturated colour of HDR goes, by what is strongest and weakest in it.
    for (std::size_t strongest = 0; strongest < 3; ++strongest) {
        Color rgb{0.2, 0.2, 0.2};
        rgb[strongest] = 0.95;
        double const luma = 0.2627 * rgb[0] + 0.678 * rgb[1] + 0.0593 * rgb[2];
        Color const found = converted({codeOf(luma), 512 + 896 * (rgb[2] - luma) / 1.8814,
                                       512 + 896 * (rgb[0] - luma) / 1.4746},
                                      ColorTags::hlg(), ColorTags::bt709());
        double const y = (found[0] - 16) / 219;
        double const red = y + 1.5748 * (found[2] - 128) / 224;
        double const blue = y + 1.8556 * (found[1] - 128) / 224;
        Color const shown{red, (y - 0.2126 * red - 0.0722 * blue) / 0.7152, blue};
        double const rest = std::max(shown[(strongest + 1) % 3], shown[(strongest + 2) % 3]);
        EXPECT_GT(shown[strongest], 0.75) << strongest;
        EXPECT_GT(shown[strongest] - rest, 0.3) << strongest;
    }
}

class RealHDR : public MadeMedia {};

TEST_F(RealHDR, ShowsNeitherDarkNorWashedOutNorClipped)
{
    for (char const* const name :
         {"iphone_hlg_1080p_rot90_dovi84_editlist.mp4", "phone_av1_pq10_720x1280.mp4"}) {
        auto const file = std::filesystem::path(FRAMEWRIGHT_SHARED_MEDIA) / "video" / name;
        if (!std::filesystem::exists(file))
            GTEST_SKIP() << file << " is not there.";
        Id const id = loaded(file);
        Project const piece = project({videoTrack({clip(id, 0, 2)})});
        RGBImage const image = StillFrames(burner, 1).image(piece, assets, 1, 270);
        std::vector<std::uint8_t> sorted = image.pixels;
        std::ranges::sort(sorted);
        auto const part = [&](double fraction) {
            return int(sorted[std::size_t(fraction * double(sorted.size() - 1))]);
        };
        EXPECT_LT(part(0.02), 50) << name;
        EXPECT_GT(part(0.5), 85) << name;
        EXPECT_LT(part(0.5), 165) << name;
        EXPECT_GT(part(0.98), 190) << name;
        EXPECT_LT(part(0.98), 253) << name;
    }
}

} // namespace framewright
