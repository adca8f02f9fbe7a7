#include "media/frame.h"

#include "media/internal/frame_storage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>

namespace framewright {

namespace {

void fill(Frame& frame, std::uint8_t value)
{
    for (int i = 0; i < frame.layout().planeCount(); ++i) {
        auto const plane = frame.writablePlane(i);
        for (int y = 0; y < plane.height; ++y)
            std::fill_n(plane.data + y * plane.stride,
                        plane.width * frame.layout().bytesPerSample(), value);
    }
}

FrameHandle allocated(AVPixelFormat format)
{
    FrameHandle frame = newFrame();
    frame->format = format;
    frame->width = 64;
    frame->height = 32;
    av_frame_get_buffer(frame.get(), 0);
    return frame;
}

constexpr auto yuv = PixelLayout::Model::yuv;
constexpr auto gray = PixelLayout::Model::gray;
constexpr auto gbr = PixelLayout::Model::gbr;

} // namespace

TEST(Frame, PlanesHaveTheSizeOfTheirSamples)
{
    struct Case {
        char const* name;
        PixelLayout layout;
        int planes, chromaWidth, chromaHeight;
    };
    for (Case const& c : {
             Case{"4:2:0", {yuv, 8, 1, 1, false}, 3, 22, 4},
             Case{"4:2:0 with 10 bits", {yuv, 10, 1, 1, false}, 3, 22, 4},
             Case{"4:2:2 with alpha", {yuv, 8, 1, 0, true}, 4, 22, 7},
             Case{"4:4:4 with 16 bits", {yuv, 16, 0, 0, false}, 3, 43, 7},
             Case{"gray", {gray, 8, 0, 0, false}, 1, 0, 0},
             Case{"RGB with alpha", {gbr, 8, 0, 0, true}, 4, 43, 7},
         }) {
        Frame frame(43, 7, c.layout, ColorTags::bt709());
        ASSERT_EQ(frame.layout(), c.layout) << c.name;
        ASSERT_EQ(c.layout.planeCount(), c.planes) << c.name;
        for (int i = 0; i < c.planes; ++i) {
            auto const plane = frame.plane(i);
            bool const isChroma = c.layout.model != gray && (i == 1 || i == 2);
            EXPECT_EQ(plane.width, isChroma ? c.chromaWidth : 43) << c.name << i;
            EXPECT_EQ(plane.height, isChroma ? c.chromaHeight : 7) << c.name << i;
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(plane.data) % 64, 0u) << c.name << i;
            EXPECT_EQ(plane.stride % 64, 0) << c.name << i;
        }
        fill(frame, 1); // The address sanitizer checks the bounds.
    }
}

TEST(Frame, CopiesShareUntilOneChanges)
{
    Frame first(64, 32, PixelLayout::yuv420p8(), ColorTags::bt709());
    fill(first, 10);
    Frame second = first;
    EXPECT_TRUE(second.sharesPixelsWith(first));

    second.writablePlane(1).data[0] = 99;
    EXPECT_FALSE(second.sharesPixelsWith(first));
    EXPECT_EQ(first.plane(1).data[0], 10);
    EXPECT_EQ(second.plane(1).data[0], 99);
    EXPECT_EQ(second.plane(0).data[40], 10) << "the other planes are copied too";
    EXPECT_EQ(second.colors(), ColorTags::bt709());

    auto const* const alone = second.plane(0).data;
    EXPECT_EQ(second.writablePlane(0).data, alone) << "no copy without sharing";
}

TEST(Frame, MemoryIsReused)
{
    std::uint8_t const* data = nullptr;
    {
        Frame const frame(640, 362, PixelLayout::yuv420p8(), {});
        data = frame.plane(0).data;
    }
    EXPECT_EQ(Frame(640, 362, PixelLayout::yuv420p8(), {}).plane(0).data, data);
}

TEST(Frame, RejectsImpossibleSizes)
{
    for (auto const& [width, height] :
         {std::pair{0, 10}, {10, -1}, {1 << 30, 1 << 30}, {1 << 17, 1 << 17}})
        EXPECT_THROW(Frame(width, height, PixelLayout::yuv420p8(), {}), std::bad_alloc);
}

TEST(Frame, AdoptsEveryPlanarFormat)
{
    struct Case {
        AVPixelFormat format;
        PixelLayout layout;
        bool isFullRange;
    };
    for (Case const& c : {
             Case{AV_PIX_FMT_YUV420P, {yuv, 8, 1, 1, false}, false},
             Case{AV_PIX_FMT_YUVJ420P, {yuv, 8, 1, 1, false}, true},
             Case{AV_PIX_FMT_YUVJ444P, {yuv, 8, 0, 0, false}, true},
             Case{AV_PIX_FMT_YUVA420P, {yuv, 8, 1, 1, true}, false},
             Case{AV_PIX_FMT_YUV422P10LE, {yuv, 10, 1, 0, false}, false},
             Case{AV_PIX_FMT_YUV410P, {yuv, 8, 2, 2, false}, false},
             Case{AV_PIX_FMT_GRAY10LE, {gray, 10, 0, 0, false}, false},
             Case{AV_PIX_FMT_GBRP, {gbr, 8, 0, 0, false}, true},
             Case{AV_PIX_FMT_GBRAP12LE, {gbr, 12, 0, 0, true}, true},
         }) {
        Frame const frame = frameOf(allocated(c.format));
        EXPECT_EQ(frame.layout(), c.layout) << c.format;
        EXPECT_EQ(frame.colors().isFullRange, c.isFullRange) << c.format;
    }
    for (AVPixelFormat const format :
         {AV_PIX_FMT_NV12, AV_PIX_FMT_RGB24, AV_PIX_FMT_YUYV422, AV_PIX_FMT_P010LE,
          AV_PIX_FMT_GBRPF32LE, AV_PIX_FMT_YUV420P10BE})
        EXPECT_THROW(frameOf(allocated(format)), std::invalid_argument) << format;
}

} // namespace framewright
