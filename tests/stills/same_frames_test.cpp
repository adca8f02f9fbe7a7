#include "composition/composition_builder.h"
#include "pipeline/clip_frame_source.h"
#include "rendering/made_media.h"
#include "stills/still_frames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>

namespace framewright {

namespace {

std::string bytesOf(Frame const& frame)
{
    std::string bytes;
    for (int i = 0; i < frame.layout().planeCount(); ++i) {
        Frame::Plane const plane = frame.plane(i);
        for (int y = 0; y < plane.height; ++y)
            bytes.append(reinterpret_cast<char const*>(plane.data + y * plane.stride),
                         std::size_t(plane.width) * frame.layout().bytesPerSample());
    }
    return bytes;
}

/// A frame of a piece is a function of the project and the time, whatever was drawn before it.
class SameFrames : public MadeMedia {
protected:
    static constexpr int frames = 60;

    SameFrames()
    {
        Id const wide =
            loaded(made("-f lavfi -i testsrc2=s=640x360:r=24:d=4,noise=alls=9:all_seed=3"
                        " -c:v libx264 -preset veryfast -g 30 -bf 3 -pix_fmt yuv420p",
                        "wide.mp4"));
        Id const fitting = loaded(made("-f lavfi -i testsrc=s=270x480:r=30:d=4"
                                       " -f lavfi -i sine=r=48000:d=4 -c:v libx264 -bf 0"
                                       " -pix_fmt yuv420p -c:a aac",
                                       "fitting.mp4"));
        Id const odd = loaded(
            made("-f lavfi -i testsrc2=s=427x239:r=30:d=4 -c:v libvpx-vp9 -cpu-used 8 -threads 1",
                 "odd.webm"));
        Clip cover = clip(wide, 0, 0.7, 1.3);
        cover.transform.scale = 3.2;
        Clip inset = clip(odd, 0.4, 1.2, 0.5);
        inset.transform.scale = 0.6;
        inset.transform.offsetX = 0.13;
        Track above = videoTrack({inset});
        above.opacity = 0.8F;
        piece = project({above, videoTrack({cover, clip(fitting, 0.7, 0.7), clip(wide, 1.4, 0.6)}),
                         audioTrack({clip(fitting, 0, 2)})});
    }

    BuiltComposition composition() const
    {
        return CompositionBuilder::build(piece, assets,
                                         {{270, 480}, 30, true, DynamicRange::standard});
    }

    /// The frames as an export draws them.
    std::vector<std::string> forward(int threads) const
    {
        BuiltComposition const built = composition();
        OpenReaders readers(4, threads);
        ReadPhotos photos(2);
        ClipFrameSource source(built, readers, photos, ClipFrameSource::Reading::forward);
        FrameCompositor compositor(built.video, source);
        std::vector<std::string> drawn;
        for (int n = 0; n < frames; ++n)
            drawn.push_back(bytesOf(compositor.draw(n / 30.0)));
        return drawn;
    }

    Project piece;
};

} // namespace

TEST_F(SameFrames, WhateverTheThreadsAndTheOrder)
{
    std::vector<std::string> const once = forward(1);
    for (int const threads : {1, 2, 5}) {
        std::vector<std::string> const again = forward(threads);
        for (std::size_t n = 0; n < once.size(); ++n)
            ASSERT_TRUE(again[n] == once[n]) << "frame " << n << ", " << threads << " threads";
    }

    // As single pictures are drawn: each by itself, in any order, with decoders left open.
    BuiltComposition const built = composition();
    OpenReaders readers(8);
    ReadPhotos photos(2);
    std::vector<std::size_t> order(once.size());
    std::ranges::generate(order, [n = std::size_t(0)]() mutable { return n++; });
    std::ranges::shuffle(order, std::mt19937(7));
    for (std::size_t const n : order) {
        ClipFrameSource source(built, readers, photos, ClipFrameSource::Reading::anywhere);
        FrameCompositor compositor(built.video, source);
        ASSERT_TRUE(bytesOf(compositor.draw(double(n) / 30)) == once[n]) << "frame " << n;
    }
}

TEST_F(SameFrames, InStillsDrawnWarmAndCold)
{
    StillFrames warm(burner);
    for (double const time : {1.9, 0.1, 0.75, 0.7, 1.4}) {
        RGBImage const image = warm.image(piece, assets, time, 270);
        EXPECT_TRUE(image.pixels == StillFrames(burner).image(piece, assets, time, 270).pixels)
            << time;
    }
}

} // namespace framewright
