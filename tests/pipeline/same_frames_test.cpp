#include "composition/composition_builder.h"
#include "pipeline/frame_producer.h"
#include "rendering/made_media.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <numeric>
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

    std::shared_ptr<BuiltComposition const> composition(PixelSize size = {270, 480}) const
    {
        return std::make_shared<BuiltComposition const>(
            CompositionBuilder::build(piece, assets, {size, 30, true, DynamicRange::standard}));
    }

    /// The frames one after the other, without anything opened ahead.
    std::vector<std::string> forward(int threads) const
    {
        FrameDrawer drawer({.order = FrameDrawer::Order::forward, .decoderThreads = threads});
        drawer.show(composition());
        std::vector<std::string> drawn;
        for (int n = 0; n < frames; ++n)
            drawn.push_back(bytesOf(drawer.draw(n / 30.0)));
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

    // As stills are drawn: in any order, with decoders left open.
    FrameDrawer drawer({});
    std::vector<std::size_t> order(once.size());
    std::iota(order.begin(), order.end(), 0);
    std::ranges::shuffle(order, std::mt19937(7));
    for (std::size_t const n : order) {
        drawer.show(composition());
        ASSERT_TRUE(bytesOf(drawer.draw(double(n) / 30)) == once[n]) << "frame " << n;
    }
}

TEST_F(SameFrames, FromAProducerThatSeeksAndIsEdited)
{
    std::vector<std::string> const once = forward(1);
    std::mt19937 random(11);
    FrameProducer producer(composition(), {.capacity = 3, .decoderThreads = 2});
    EXPECT_FALSE(producer.next()) << "nothing was asked for";
    auto const expect = [&](int first, int count) {
        for (int n = first; n < first + count; ++n) {
            auto const produced = producer.next();
            ASSERT_TRUE(produced) << "frame " << n;
            ASSERT_NEAR(produced->time, n / 30.0, 1e-9);
            ASSERT_TRUE(bytesOf(produced->frame) == once[std::size_t(n)]) << "frame " << n;
        }
    };
    producer.seek(0);
    expect(0, frames);
    EXPECT_FALSE(producer.next()) << "the end";
    for (int round = 0; round < 6; ++round) {
        int const first = int(random() % 40);
        producer.seek(first / 30.0);
        expect(first, round);
        producer.replace(composition({136, 240}));
        for (int n = 0; n < 2; ++n)
            EXPECT_EQ(producer.next().value().frame.width(), 136);
        producer.replace(composition());
        expect(first + round + 2, 5);
    }
    producer.seek(1, 3);
    expect(30, 3);
    EXPECT_FALSE(producer.next()) << "so many were asked for";
}

} // namespace framewright
