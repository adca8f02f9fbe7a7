#include "raster/frame_compositor.h"
#include "rendering/layer_making.h"
#include "rendering/painted_overlay.h"
#include "rendering/synthetic_frames.h"

#include <gtest/gtest.h>

namespace framewright {

TEST(Overlays, LieInFront)
{
    auto const at = [](int x, int y) {
        PlacedImage image{x, y, 3, 3, {}};
        for (int n = 0; n < 9; ++n)
            image.pixels.insert(image.pixels.end(), {128, 0, 0, 128}); // Half transparent red.
        return Overlay{{{0}, {600}}, std::make_shared<PaintedOverlay>(image)};
    };
    PaintedSource source;
    source.show(1, painted(64, 96, flat(100, 128, 128)));
    VideoComposition video = drawing({layer(1, sized(64, 96))});
    video.instructions[0].overlays = {at(11, 21), at(62, 94), at(-9, 0)};
    Frame const frame = FrameCompositor(video, source).draw(0);
    int const half = (100 + 63) / 2; // BT.709 red is 63, 102, 240.
    struct Case {
        int x, y, luma;
    };
    for (Case const& c : {Case{10, 22, 100}, Case{11, 22, half}, Case{13, 23, half},
                          Case{14, 22, 100}, Case{12, 20, 100}, Case{12, 24, 100},
                          Case{62, 94, half}, Case{63, 95, half}, Case{0, 0, 100}})
        EXPECT_NEAR(sample(frame, 0, c.x, c.y), c.luma, 1) << c.x << "," << c.y;
    EXPECT_NEAR(sample(frame, 2, 6, 11), 128 + 56, 1);
    EXPECT_NEAR(sample(frame, 2, 5, 10), 128 + 14, 1); // One of its four pixels.
    EXPECT_EQ(sample(frame, 2, 4, 11), 128);
}

TEST(Overlays, AreDrawnWhenTheyAreSeen)
{
    auto const image = std::make_shared<PaintedOverlay>(
        PlacedImage{10, 20, 4, 4, std::vector<std::uint8_t>(64, 255)});
    auto const never = std::make_shared<PaintedOverlay>(PlacedImage());
    PaintedSource source;
    source.show(1, painted(64, 96, flat(100, 128, 128)));
    VideoComposition video = drawing({layer(1, sized(64, 96))});
    video.instructions[0].overlays = {{{{60}, {120}}, image}, {{{400}, {600}}, never}};
    FrameCompositor compositor(video, source);
    // It comes at its start, goes at its end, and comes again.
    for (auto const& [time, luma] : {std::pair{0.0, 100},
                                     {0.099, 100},
                                     {0.1, 235},
                                     {0.15, 235},
                                     {0.199, 235},
                                     {0.2, 100},
                                     {0.5, 100},
                                     {0.12, 235}})
        EXPECT_EQ(sample(compositor.draw(time), 0, 12, 22), luma) << time;
    EXPECT_EQ(image->timesDrawn, 2); // Once each time: it is not kept while it isn't seen.
    EXPECT_EQ(never->timesDrawn, 0);
}

TEST(Overlays, ArePutAtReferenceWhiteInHDRLikeAnyStandardRange)
{
    // White of BT.709 is 75 % of HLG, whether it is a picture's or a text's.
    auto const image = std::make_shared<PaintedOverlay>(
        PlacedImage{10, 4, 4, 4, std::vector<std::uint8_t>(64, 255)});
    PaintedSource source;
    source.show(1, painted(64, 48, flat(235, 128, 128)));
    VideoComposition video = drawing({layer(1, sized(64, 48))});
    video.colors = ColorTags::hlg();
    video.instructions[0].overlays = {{{{0}, {600}}, image}};
    Frame const frame = FrameCompositor(video, source).draw(0);
    ASSERT_EQ(frame.layout(), PixelLayout::yuv420p10());
    constexpr int white = 64 + 876 * 3 / 4;
    struct Case {
        int x, y, luma;
    };
    for (Case const& c : {Case{30, 48, white}, Case{12, 6, white}, Case{40, 6, 64}}) {
        EXPECT_NEAR(sample(frame, 0, c.x, c.y), c.luma, 2) << c.x << "," << c.y;
        EXPECT_NEAR(sample(frame, 1, c.x / 2, c.y / 2), 512, 2) << c.x << "," << c.y;
    }
}

} // namespace framewright
