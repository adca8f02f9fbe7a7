#include "raster/frame_compositor.h"

#include "composition/composition_builder.h"
#include "media/media_error.h"
#include "raster/asset_loading.h"
#include "rendering/layer_making.h"
#include "rendering/project_making.h"
#include "rendering/synthetic_frames.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace framewright {

namespace {

std::array<int, 3> pixel(Frame const& frame, int x, int y)
{
    return {sample(frame, 0, x, y), sample(frame, 1, x / 2, y / 2), sample(frame, 2, x / 2, y / 2)};
}

constexpr std::array<int, 3> blackPixel{16, 128, 128};

/// What the compositor should draw of a picture whose samples are straight planes of values: for
/// each sample of the canvas, the picture's value where the placement says it comes from.
struct Reference {
    Layer const& layer;
    Paint const& paint;

    Rect rounded() const
    {
        Rect const& frame = layer.placement.frame;
        double const left = std::round(frame.x), top = std::round(frame.y);
        return {left, top, std::round(frame.right()) - left, std::round(frame.bottom()) - top};
    }

    double at(int plane, double x, double y) const
    {
        Rect const to = rounded();
        Rect const& exact = layer.placement.frame;
        Point const point = layer.placement.transform.inverse().apply(
            Point{exact.x + (x - to.x) / to.width * exact.width,
                  exact.y + (y - to.y) / to.height * exact.height});
        return paint(plane, point.x, point.y);
    }
};

struct Difference {
    double worst = 0;
    double mean = 0;   ///< Signed: a picture that is off by a part of a pixel shows here.
    double chance = 1; ///< What rounding alone may make of the mean.
};

/// Over the samples of a plane at least `margin` pixels inside the layer.
Difference difference(Frame const& drawn, int plane, Reference const& reference, double margin)
{
    Difference found;
    Rect const inside = reference.rounded();
    int count = 0;
    Frame::Plane const samples = drawn.plane(plane);
    for (int row = 0; row < samples.height; ++row) {
        for (int column = 0; column < samples.width; ++column) {
            double const x = sampleX(drawn.layout(), drawn.colors(), plane, column);
            double const y = sampleY(drawn.layout(), plane, row);
            if (x < inside.x + margin || y < inside.y + margin || x > inside.right() - margin ||
                y > inside.bottom() - margin)
                continue;
            double const off = sample(drawn, plane, column, row) - reference.at(plane, x, y);
            found.worst = std::max(found.worst, std::abs(off));
            found.mean += off;
            ++count;
        }
    }
    if (count > 0) {
        found.mean /= count;
        found.chance = 0.15 + 1 / std::sqrt(count);
    }
    return found;
}

} // namespace

TEST(Compositor, FitsAPictureBetweenBlackBands)
{
    PaintedSource source;
    source.show(1, painted(64, 32, flat(200, 90, 170)));
    FrameCompositor compositor(drawing({layer(1, sized(64, 32)), black()}), source);
    Frame const frame = compositor.draw(0);

    EXPECT_EQ(frame.width(), 64);
    EXPECT_EQ(frame.height(), 96);
    EXPECT_EQ(frame.layout(), PixelLayout::yuv420p8());
    EXPECT_EQ(frame.colors(), ColorTags::bt709());
    for (int x : {0, 31, 63}) {
        for (int y : {0, 31, 64, 95})
            EXPECT_EQ(pixel(frame, x, y), blackPixel) << x << "," << y;
        for (int y : {32, 48, 63})
            EXPECT_EQ(pixel(frame, x, y), (std::array{200, 90, 170})) << x << "," << y;
    }
}

TEST(Compositor, EdgesOffTheChromaGridShareTheirChroma)
{
    // 20 by 20, moved to an odd place: [23, 43) across, [39, 59) down.
    PaintedSource source;
    source.show(1, painted(20, 20, flat(200, 60, 220)));
    double const fit = 64 / 20.0;
    ClipTransform const transform{.scale = 1 / fit, .offsetX = 1 / 64.0, .offsetY = 1 / 96.0};
    FrameCompositor compositor(drawing({layer(1, sized(20, 20), transform), black()}), source);
    Frame const frame = compositor.draw(0);

    struct Case {
        int x, y, luma;
    };
    for (Case const& c : {Case{22, 45, 16}, Case{23, 45, 200}, Case{42, 45, 200}, Case{43, 45, 16},
                          Case{30, 38, 16}, Case{30, 39, 200}, Case{30, 58, 200}, Case{30, 59, 16}})
        EXPECT_EQ(sample(frame, 0, c.x, c.y), c.luma) << c.x << "," << c.y;
    auto const chroma = [&](int x, int y) { return sample(frame, 1, x, y); };
    EXPECT_EQ(chroma(10, 22), 128);
    EXPECT_NEAR(chroma(11, 22), (128 + 60) / 2, 1);
    EXPECT_EQ(chroma(12, 22), 60);
    EXPECT_NEAR(chroma(21, 22), (128 + 60) / 2, 1);
    EXPECT_EQ(chroma(22, 22), 128);
    EXPECT_NEAR(chroma(11, 19), 128 - (128 - 60) / 4, 1);
}

TEST(Compositor, ScalesAndTurnsEveryWay)
{
    std::mt19937 random(11);
    auto const number = [&](double from, double to) {
        return std::uniform_real_distribution(from, to)(random);
    };
    for (int round = 0; round < 160; ++round) {
        Orientation const orientation{round % 4, round / 4 % 2 == 1};
        int const width = 40 + 2 * int(number(0, 60)), height = 40 + 2 * int(number(0, 60));
        LoadedAsset const asset = sized(width, height, orientation);
        ClipTransform transform;
        if (round >= 8) {
            transform = {.scale = number(0.4, 3),
                         .offsetX = number(-0.3, 0.3),
                         .offsetY = number(-0.3, 0.3)};
            if (round % 3 == 0)
                transform = {.scale = number(0.6, 2),
                             .cropLeft = number(0, 0.4),
                             .cropRight = number(0, 0.4),
                             .cropTop = number(0, 0.4),
                             .cropBottom = number(0, 0.4)};
        }
        Layer const placed = layer(1, asset, transform);
        double const across = 160.0 / width, down = 50.0 / height;
        Paint const slopes = [&](int plane, double x, double y) {
            return plane == 0   ? 30 + x * across + y * down
                   : plane == 1 ? 220 - x * across - y * 0.3 * down
                                : 40 + x * 0.2 * across + 2.5 * y * down;
        };
        PaintedSource source;
        source.show(1, painted(width, height, slopes));
        FrameCompositor compositor(drawing({placed, black()}), source);
        Frame const frame = compositor.draw(0);

        Rect const& shown = placed.placement.frame;
        double const enlarged = std::max(1.0, shown.width * shown.height / (width * height));
        double const reach =
            4 * std::max(1.0, std::sqrt(enlarged)); // The filter reaches past edges.
        for (int plane = 0; plane < 3; ++plane) {
            Difference const off =
                difference(frame, plane, {placed, slopes}, reach * (plane ? 2 : 1));
            EXPECT_LT(off.worst, 1.6) << "round " << round << " plane " << plane;
            EXPECT_LT(std::abs(off.mean), off.chance) << "round " << round << " plane " << plane;
        }
    }
}

TEST(Compositor, WhatIsCroppedAwayDoesNotLeakIn)
{
    // White bars above and below a grey middle, cropped away and enlarged.
    Paint const bars = [](int plane, double, double y) {
        return plane ? 128.0 : y < 16 || y >= 48 ? 235.0 : 80.0;
    };
    PaintedSource source;
    source.show(1, painted(64, 64, bars));
    ClipTransform const cropped{.scale = 2, .cropTop = 0.25, .cropBottom = 0.25};
    Layer const placed = layer(1, sized(64, 64), cropped);
    FrameCompositor compositor(drawing({placed, black()}), source);
    Frame const frame = compositor.draw(0);
    for (int y = 0; y < 96; ++y) {
        bool const isInside = y >= 16 && y < 80;
        EXPECT_EQ(sample(frame, 0, 30, y), isInside ? 80 : 16) << y;
    }
}

TEST(Compositor, ConvertsColors)
{
    // 75 % bars as their standards give them.
    struct Case {
        char const* name;
        PixelLayout layout;
        ColorTags colors;
        Paint from;
        std::array<int, 3> to;
    };
    constexpr PixelLayout yuv444{PixelLayout::Model::yuv, 8, 0, 0, false};
    constexpr PixelLayout gray{PixelLayout::Model::gray, 8, 0, 0, false};
    constexpr PixelLayout rgb{PixelLayout::Model::gbr, 8, 0, 0, false};
    constexpr PixelLayout yuv422p10{PixelLayout::Model::yuv, 10, 1, 0, false};
    ColorTags const bt601{6, 6, 6, false, false};
    ColorTags const jpeg{1, 13, 6, true, true};
    for (Case const& c : {
             Case{"BT.709", {}, ColorTags::bt709(), flat(63, 102, 240 - 28), {63, 102, 212}},
             Case{"BT.601 red", {}, bt601, flat(65, 100, 212), {51, 109, 212}},
             Case{"BT.601 green", {}, bt601, flat(112, 72, 58), {133, 63, 52}},
             Case{"JPEG red", yuv444, jpeg, flat(57, 96, 224), {51, 109, 212}},
             Case{"made from the primaries",
                  {},
                  {1, 1, 12, false, false},
                  flat(63, 102, 212),
                  {63, 102, 212}},
             Case{"untagged and small", {}, {}, flat(65, 100, 212), {51, 109, 212}},
             Case{"full range grey",
                  {},
                  {1, 1, 1, true, false},
                  flat(128, 128, 128),
                  {126, 128, 128}},
             Case{"10 bits",
                  PixelLayout::yuv420p10(),
                  ColorTags::bt709(),
                  flat(400, 512, 600),
                  {100, 128, 150}},
             Case{"10 bits 4:2:2",
                  yuv422p10,
                  ColorTags::bt709(),
                  flat(400, 512, 600),
                  {100, 128, 150}},
             Case{"grey", gray, {1, 13, 2, true, false}, flat(255, 0, 0), {235, 128, 128}},
             Case{"RGB",
                  rgb,
                  {1, 13, 0, true, false},
                  flat(0, 0, 191),
                  {51, 109, 212}}, // Green, blue, red.
         }) {
        PaintedSource source;
        source.show(1, painted(64, 96, c.from, c.layout, c.colors));
        FrameCompositor compositor(drawing({layer(1, sized(64, 96))}), source);
        auto const found = pixel(compositor.draw(0), 20, 20);
        for (std::size_t n = 0; n < 3; ++n)
            EXPECT_NEAR(found[n], c.to[n], 1.01) << c.name << " plane " << n;
    }
}

TEST(Compositor, ConvertsFromICtCp)
{
    // Red of BT.2100 in HLG, by the standard's own equations.
    PaintedSource source;
    source.show(1, painted(64, 96, flat(717, 328, 908), PixelLayout::yuv420p10(),
                           {9, 18, 14, false, false}));
    VideoComposition wide = drawing({layer(1, sized(64, 96))});
    wide.colors = ColorTags::hlg();
    auto const found = pixel(FrameCompositor(wide, source).draw(0), 20, 20);
    // It lies at the very edge, where a code of ICtCp is several of the other coding.
    EXPECT_NEAR(found[0], 294, 10);
    EXPECT_NEAR(found[1], 387, 10);
    EXPECT_NEAR(found[2], 960, 10);
}

TEST(Compositor, DrawsEveryColourThatAnAssetMayHave)
{
    constexpr int bt2020 = 9, smpte2085 = 11, ictcp = 14;
    VideoComposition wide = drawing({layer(1, sized(64, 96))});
    wide.colors = ColorTags::hlg();
    for (int matrix = 0; matrix <= 15; ++matrix) {
        for (int const transfer : {1, 2, 8, 16, 18}) {
            for (int const primaries : {1, 2, 9, 12}) {
                MediaInfo info;
                info.hasVideo = true;
                info.width = info.height = 64;
                info.colors = {primaries, transfer, matrix, false, false};
                std::string refusal;
                try {
                    loadedAsset("/f/odd.mp4", info);
                } catch (MediaError const& error) {
                    refusal = error.what();
                }
                std::string const name = fmt::format("{}/{}/{}", primaries, transfer, matrix);
                bool const isKnown = matrix <= bt2020;
                bool const isUnknown = matrix == smpte2085 || matrix > ictcp;
                if (isKnown || isUnknown) {
                    EXPECT_EQ(refusal.empty(), isKnown) << name;
                }
                if (!refusal.empty()) {
                    EXPECT_EQ(refusal, "odd.mp4 has colours that can't be shown: they are marked " +
                                           name +
                                           " in the file. Convert it to BT.709 or BT.2020 first.");
                    continue;
                }
                PaintedSource source;
                source.show(
                    1, painted(64, 96, flat(400, 512, 600), PixelLayout::yuv420p10(), info.colors));
                EXPECT_NO_THROW(FrameCompositor(drawing({layer(1, sized(64, 96))}), source).draw(0))
                    << name;
                EXPECT_NO_THROW(FrameCompositor(wide, source).draw(0)) << name;
            }
        }
    }
}

TEST(Compositor, BlendsByOpacityAndAlpha)
{
    constexpr PixelLayout withAlpha{PixelLayout::Model::yuv, 8, 1, 1, true};
    struct Case {
        char const* name;
        float opacity;
        PixelLayout layout;
        double alpha;
        std::array<int, 3> seen;
    };
    for (Case const& c : {
             Case{"half", 0.5f, {}, 255, {150, 75, 165}},
             Case{"a quarter", 0.25f, {}, 255, {125, 88, 148}},
             Case{"alpha", 1, withAlpha, 127.5, {150, 75, 165}},
             Case{"clear", 1, withAlpha, 0, {100, 100, 130}},
             Case{"solid alpha", 1, withAlpha, 255, {200, 50, 200}},
             Case{"both", 0.5f, withAlpha, 127.5, {125, 88, 148}},
         }) {
        PaintedSource source;
        source.show(1, painted(64, 96, flat(200, 50, 200, c.alpha), c.layout));
        source.show(2, painted(64, 96, flat(100, 100, 130)));
        LoadedAsset const asset = sized(64, 96);
        FrameCompositor compositor(
            drawing({layer(1, asset, {}, c.opacity), layer(2, asset), black()}), source);
        auto const found = pixel(compositor.draw(0), 20, 20);
        for (std::size_t n = 0; n < 3; ++n)
            EXPECT_NEAR(found[n], c.seen[n], 1) << c.name << " plane " << n;
    }
}

TEST(Compositor, AlphaIsTurnedWithItsPicture)
{
    constexpr PixelLayout withAlpha{PixelLayout::Model::yuv, 8, 1, 1, true};
    // Only the stored left quarter is there; a quarter turn brings it to the top.
    Paint const quarter = [](int plane, double x, double) {
        return plane == 3 ? (x < 24 ? 255.0 : 0.0) : plane ? 128.0 : 200.0;
    };
    PaintedSource source;
    source.show(1, painted(96, 64, quarter, withAlpha));
    FrameCompositor compositor(drawing({layer(1, sized(96, 64, {1, false})), black()}), source);
    Frame const frame = compositor.draw(0);
    EXPECT_EQ(sample(frame, 0, 5, 10), 200);
    EXPECT_EQ(sample(frame, 0, 60, 10), 200);
    EXPECT_EQ(sample(frame, 0, 5, 60), 16);
}

TEST(Compositor, NeverAsksForWhatIsHidden)
{
    LoadedAsset const full = sized(64, 96);
    Layer const small = layer(2, full, {.scale = 0.5});
    struct Case {
        char const* name;
        std::vector<Layer> layers;
        std::map<CompositionTrackID, int> asked;
    };
    for (Case const& c : {
             Case{"under a full one", {layer(1, full), layer(2, full)}, {{1, 1}}},
             Case{"under a faded one",
                  {layer(1, full, {}, 0.5f), layer(2, full), layer(3, full)},
                  {{1, 1}, {2, 1}}},
             Case{"under a placeholder", {black(), layer(2, full)}, {}},
             Case{"under a larger one",
                  {layer(1, full, {.scale = 0.6}), small, layer(3, full)},
                  {{1, 1}, {3, 1}}},
             Case{"not quite under it",
                  {layer(1, full, {.scale = 0.6, .offsetX = 0.2}), small},
                  {{1, 1}, {2, 1}}},
             Case{"off the canvas", {layer(1, full, {.offsetX = 1.5}), small}, {{2, 1}}},
             Case{"invisible", {layer(1, full, {}, 0.001f), small}, {{2, 1}}},
         }) {
        PaintedSource source;
        for (CompositionTrackID track : {1, 2, 3})
            source.show(track, painted(64, 96, flat(100, 100, 100)));
        FrameCompositor(drawing(c.layers), source).draw(0);
        EXPECT_EQ(source.asked, c.asked) << c.name;
    }
}

TEST(Compositor, APictureThatFitsGoesThroughUntouched)
{
    LoadedAsset const full = sized(64, 96);
    constexpr PixelLayout yuv422{PixelLayout::Model::yuv, 8, 1, 0, false};
    ColorTags const sameLook{1, 6, 1, false, false};
    ColorTags const otherPlace{1, 1, 1, false, true};
    ColorTags const fullRange{1, 1, 1, true, false};
    Frame const plain = painted(64, 96, flat(100, 90, 80));
    auto const tagged = [](ColorTags colors) {
        return painted(64, 96, flat(100, 90, 80), {}, colors);
    };
    struct Case {
        char const* name;
        Frame picture;
        std::vector<Layer> layers;
        bool goesThrough;
    };
    for (Case const& c : {
             Case{"alone", plain, {layer(1, full), black()}, true},
             Case{"other tags, same look", tagged(sameLook), {layer(1, full)}, true},
             Case{"faded", plain, {layer(1, full, {}, 0.9f), black()}, false},
             Case{"enlarged", plain, {layer(1, full, {.scale = 1.1})}, false},
             Case{"cropped", plain, {layer(1, full, {.cropTop = 0.01}), black()}, false},
             Case{"upside down", plain, {layer(1, sized(64, 96, {2, false}))}, false},
             Case{"mirrored", plain, {layer(1, sized(64, 96, {0, true}))}, false},
             Case{"under another", plain, {layer(2, full, {.scale = 0.2}), layer(1, full)}, false},
             Case{"chroma elsewhere", tagged(otherPlace), {layer(1, full)}, false},
             Case{"full range", tagged(fullRange), {layer(1, full)}, false},
             Case{"another size", painted(32, 48, flat(100, 90, 80)), {layer(1, full)}, false},
             Case{"another layout",
                  painted(64, 96, flat(100, 90, 80), yuv422),
                  {layer(1, full)},
                  false},
         }) {
        PaintedSource source;
        source.show(1, c.picture);
        source.show(2, plain);
        FrameCompositor compositor(drawing(c.layers), source);
        EXPECT_EQ(compositor.draw(0).sharesPixelsWith(c.picture), c.goesThrough) << c.name;
    }
}

TEST(Compositor, EqualInputsGiveTheSamePictureAgain)
{
    LoadedAsset const full = sized(64, 96);
    Frame const first = painted(32, 48, flat(100, 90, 80)),
                second = painted(32, 48, flat(50, 90, 80));
    PaintedSource source;
    source.pictures[1] = [&](double time) { return time < 1 ? first : second; };
    VideoComposition video = drawing({layer(1, full, {.scale = 0.5}), black()});
    video.instructions = {{{{0}, {900}}, video.instructions[0].layers, {}},
                          {{{900}, {1800}}, video.instructions[0].layers, {}},
                          {{{1800}, {2400}}, {layer(1, full, {.scale = 0.6}), black()}, {}}};
    FrameCompositor compositor(video, source);
    Frame const a = compositor.draw(0), b = compositor.draw(0.5), c = compositor.draw(1.0),
                d = compositor.draw(1.6), e = compositor.draw(3.1);
    EXPECT_TRUE(a.sharesPixelsWith(b));
    EXPECT_FALSE(b.sharesPixelsWith(c)); // Another picture.
    EXPECT_TRUE(c.sharesPixelsWith(d));  // Over a cut that changes nothing.
    EXPECT_FALSE(d.sharesPixelsWith(e)); // Another place.
    EXPECT_EQ(sample(b, 0, 32, 48), 100);
    EXPECT_EQ(sample(d, 0, 32, 48), 50);
}

TEST(Compositor, PicturesMayBeOfAnySize)
{
    // Anamorphic footage, photos read smaller than they are, and sides no chroma fits in.
    for (PixelSize const decoded : {PixelSize{32, 96}, {720, 576}, {1, 1}, {33, 17}, {2, 200}}) {
        PaintedSource source;
        Paint const halves = [&](int plane, double x, double) {
            return plane ? 128.0 : x < decoded.width / 2.0 ? 60.0 : 180.0;
        };
        source.show(1, painted(decoded.width, decoded.height, halves));
        FrameCompositor compositor(drawing({layer(1, sized(64, 96)), black()}), source);
        Frame const frame = compositor.draw(0);
        if (decoded.width > 1) {
            EXPECT_NEAR(sample(frame, 0, 4, 50), 60, 16) << decoded.width;
        }
        EXPECT_NEAR(sample(frame, 0, 60, 50), 180, 16) << decoded.width;
    }
}

} // namespace framewright
