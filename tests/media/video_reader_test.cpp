#include "media/video_reader.h"

#include "media/bytes.h"
#include "media/made_media.h"
#include "media/media_error.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <random>

namespace framewright {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

namespace {

constexpr int frameCount = 100;

Arguments const x264 = {"-c:v", "libx264", "-preset", "veryfast", "-bf",
                        "3",    "-g",      "24",      "-crf",     "12"};

bool samePixels(Frame const& a, Frame const& b)
{
    if (a.layout() != b.layout() || a.width() != b.width() || a.height() != b.height())
        return false;
    for (int i = 0; i < a.layout().planeCount(); ++i) {
        auto const first = a.plane(i);
        auto const second = b.plane(i);
        for (int y = 0; y < first.height; ++y) {
            if (std::memcmp(first.data + y * first.stride, second.data + y * second.stride,
                            std::size_t(first.width * a.layout().bytesPerSample())) != 0)
                return false;
        }
    }
    return true;
}

struct Movie {
    char const* name;
    std::string rate;
    double framesPerSecond;
    Arguments encoding;
    double firstTime = 0; ///< When frame 0 begins.
};

/// One for each way in which containers and codecs represent time.
std::vector<Movie> const& movies()
{
    static std::vector<Movie> const all = {
        {"h264 23.976.mp4", "24000/1001", 24000.0 / 1001, x264},
        {"h264 25.mp4", "25", 25, x264},
        {"h264 29.97.mov", "30000/1001", 30000.0 / 1001, x264},
        {"h264 30.mkv", "30", 30, x264},
        {"h264 29.97.ts", "30000/1001", 30000.0 / 1001, x264},
        {"h264 open 30.mp4", "30", 30,
         x264 + Arguments{"-x264-params", "open-gop=1:b-pyramid=strict"}},
        {"h264 without edit list.mp4", "25", 25, x264 + Arguments{"-use_editlist", "0"}, 0.08},
        {"h264 in fragments.mp4", "30", 30,
         x264 + Arguments{"-movflags", "frag_keyframe+empty_moov"}, 2.0 / 30},
        {"hevc open 30.mp4",
         "30",
         30,
         {"-c:v", "libx265", "-preset", "ultrafast", "-x265-params",
          "log-level=none:open-gop=1:keyint=24:bframes=3:crf=12"}},
        {"mpeg2 25.ts", "25", 25, {"-c:v", "mpeg2video", "-bf", "2", "-g", "12", "-b:v", "2M"}},
        {"mpeg4 30.avi", "30", 30, {"-c:v", "mpeg4", "-bf", "2", "-g", "20", "-q:v", "2"}},
        {"vp9 30.webm",
         "30",
         30,
         {"-c:v", "libvpx-vp9", "-g", "30", "-cpu-used", "8", "-crf", "20"}},
        {"prores 24.mov", "24", 24, {"-c:v", "prores_ks"}},
        {"ffv1 30.mkv", "30", 30, {"-c:v", "ffv1"}},
    };
    return all;
}

fs::path made(Movie const& movie)
{
    return madeWith(movie.name, numberedInput(frameCount, movie.rate) + movie.encoding);
}

} // namespace

TEST(VideoReader, GivesTheLastFrameAtOrBeforeTheTime)
{
    for (Movie const& movie : movies()) {
        SCOPED_TRACE(movie.name);
        VideoReader reader(made(movie), 2);
        EXPECT_EQ(numberIn(reader.frameAt(-1)), 0);
        for (int n = 0; n < frameCount; ++n) {
            double const begin = movie.firstTime + n / movie.framesPerSecond;
            double const end = movie.firstTime + (n + 1) / movie.framesPerSecond;
            ASSERT_EQ(numberIn(reader.frameAt(begin)), n);
            Frame const again = reader.frameAt((begin + end) / 2);
            // Timestamps in milliseconds may be half a millisecond early.
            ASSERT_EQ(numberIn(reader.frameAt(end - 0.0015)), n);
            ASSERT_TRUE(again.sharesPixelsWith(reader.frameAt(begin)));
        }
        EXPECT_EQ(numberIn(reader.frameAt(1000)), frameCount - 1);
    }
}

TEST(VideoReader, SeekingGivesTheSameFramesAsReadingOn)
{
    for (Movie const& movie : movies()) {
        SCOPED_TRACE(movie.name);
        std::vector<Frame> inOrder;
        VideoReader sequential(made(movie), 1);
        for (int n = 0; n < frameCount; ++n)
            inOrder.push_back(sequential.frameAt(movie.firstTime + n / movie.framesPerSecond));

        VideoReader jumping(made(movie), 2);
        std::mt19937 random(7);
        for (int i = 0; i < 60; ++i) {
            auto const n = std::uniform_int_distribution<int>(0, frameCount - 1)(random);
            Frame const frame =
                jumping.frameAt(movie.firstTime + (n + 0.5) / movie.framesPerSecond);
            ASSERT_EQ(numberIn(frame), n) << "seek " << i;
            ASSERT_TRUE(samePixels(frame, inOrder[std::size_t(n)])) << "frame " << n;
        }
    }
}

TEST(VideoReader, FollowsVariableFrameRates)
{
    // Gaps of 20 ms to 2 s, longer than the margin within which a seek skips nothing.
    auto const timeOf = [](int n) { return 0.02 * n + (n > 60 ? 2.0 * (n - 60) : 0); };
    Arguments const variable = {"-vf", "setpts=N+max(0\\,100*(N-60))", "-vsync",
                                "vfr", "-video_track_timescale",       "90000"};
    for (char const* const name : {"vfr.mp4", "vfr.mkv"}) {
        SCOPED_TRACE(name);
        fs::path const file = madeWith(name, numberedInput(80, "50") + variable + x264);
        VideoReader reader(file);
        std::mt19937 random(3);
        for (int i = 0; i < 150; ++i) {
            int const n = i < 80 ? i : std::uniform_int_distribution<int>(0, 78)(random);
            double const length = timeOf(n + 1) - timeOf(n);
            ASSERT_EQ(numberIn(reader.frameAt(timeOf(n) + 0.0005)), n);
            if (n < 79) {
                ASSERT_EQ(numberIn(reader.frameAt(timeOf(n) + length - 0.0015)), n);
            }
        }
    }
}

TEST(VideoReader, HonoursEditLists)
{
    fs::path const source = made(movies()[1]);
    // A stream copy from between keyframes makes an edit list that hides the frames before.
    fs::path const cut = madeWith("cut.mp4", {"-ss", "1.4", "-i", source, "-c", "copy"});
    VideoReader reader(cut);
    EXPECT_EQ(numberIn(reader.frameAt(0)), 35);
    EXPECT_EQ(numberIn(reader.frameAt(1)), 60);
    EXPECT_EQ(numberIn(reader.frameAt(0.5)), 47);

    fs::path const late = madeWith(
        "late.mp4", Arguments{"-f", "lavfi", "-i", "sine=duration=5", "-itsoffset", "1", "-i"} +
                        Arguments{source, "-map", "0", "-map", "1", "-c:v", "copy"});
    VideoReader lateReader(late);
    EXPECT_EQ(numberIn(lateReader.frameAt(0)), 0);
    EXPECT_EQ(numberIn(lateReader.frameAt(0.9)), 0);
    EXPECT_EQ(numberIn(lateReader.frameAt(1.5)), 12);
}

TEST(VideoReader, DeliversEveryFormatAsPlanar)
{
    using enum PixelLayout::Model;
    struct Case {
        char const* name;
        Arguments encoding;
        PixelLayout layout;
        ColorTags colors;
    };
    ColorTags const sd{6, 6, 6, false, false};
    for (Case const& c : {
             Case{"rgb.avi",
                  {"-c:v", "rawvideo", "-pix_fmt", "bgr24"},
                  {gbr, 8, 0, 0, false},
                  {1, 1, 0, true, false}},
             Case{"packed.avi",
                  {"-c:v", "rawvideo", "-pix_fmt", "yuyv422"},
                  {yuv, 8, 1, 0, false},
                  sd},
             Case{"alpha.mov",
                  {"-c:v", "qtrle", "-pix_fmt", "argb"},
                  {gbr, 8, 0, 0, true},
                  {1, 1, 0, true, false}},
             Case{"alpha.webm",
                  {"-c:v", "libvpx-vp9", "-pix_fmt", "yuva420p", "-cpu-used", "8"},
                  {yuv, 8, 1, 1, true},
                  sd},
             Case{"gray.mkv",
                  {"-c:v", "ffv1", "-pix_fmt", "gray10le"},
                  {gray, 10, 0, 0, false},
                  {6, 6, 6, true, false}},
             Case{"jpeg.avi",
                  {"-c:v", "mjpeg", "-pix_fmt", "yuvj420p", "-q:v", "2"},
                  {yuv, 8, 1, 1, false},
                  {1, 1, 5, true, true}},
             Case{"tagged.mp4",
                  {"-c:v", "libx264", "-color_primaries", "bt2020", "-color_trc", "smpte2084",
                   "-colorspace", "bt2020nc", "-pix_fmt", "yuv420p10le"},
                  {yuv, 10, 1, 1, false},
                  {9, 16, 9, false, false}},
         }) {
        SCOPED_TRACE(c.name);
        fs::path const file = madeWith(c.name, numberedInput(10, "25") + c.encoding);
        Frame const frame = VideoReader(file).frameAt(0.2);
        EXPECT_EQ(frame.layout(), c.layout);
        EXPECT_EQ(frame.colors(), c.colors);
        EXPECT_EQ(numberIn(frame), 5);
        for (int i = 0; i < frame.layout().planeCount(); ++i)
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(frame.plane(i).data) % 32, 0u);
    }
    fs::path const hd = madeWith("hd.mp4", {"-f", "lavfi", "-i", "color=s=1280x720:d=0.1", "-c:v",
                                            "libx264", "-preset", "ultrafast"});
    EXPECT_EQ(VideoReader(hd).frameAt(0).colors(), ColorTags::bt709());
}

TEST(VideoReader, ReportsWhereFramesAreMissing)
{
    fs::path const whole = madeWith("front.mp4", numberedInput(frameCount, "25") + x264 +
                                                     Arguments{"-movflags", "+faststart"});
    std::string const bytes = contentsOf(whole);
    fs::path const cut =
        fileOf("cut front.mp4", bytes.substr(0, (bytes.find("mdat") + bytes.size()) / 2));
    VideoReader reader(cut, 2);
    int good = 0;
    while (good < frameCount) {
        try {
            ASSERT_EQ(numberIn(reader.frameAt(good / 25.0)), good);
        } catch (MediaError const& error) {
            EXPECT_EQ(error.cause, MediaError::Cause::damaged);
            EXPECT_THAT(error.what(), testing::HasSubstr("cannot be decoded."));
            break;
        }
        ++good;
    }
    EXPECT_GT(good, frameCount / 4);
    EXPECT_LT(good, frameCount * 3 / 4);
    EXPECT_THROW(reader.frameAt(3.9), MediaError);
    EXPECT_EQ(numberIn(reader.frameAt(0.4)), 10) << "other times can still be read";

    // Only the last packets are missing: the frame before them is shown.
    fs::path const nearly = fileOf("nearly.mp4", bytes.substr(0, bytes.size() - 20));
    VideoReader forgiving(nearly);
    EXPECT_GT(numberIn(forgiving.frameAt(10)), frameCount - 5);
}

TEST(VideoReader, ReadsRealFiles)
{
    struct Case {
        char const* name;
        double at;
        int width, height;
        PixelLayout layout;
        ColorTags colors;
    };
    using enum PixelLayout::Model;
    for (Case const& c : {
             Case{"video/iphone_hlg_1080p_rot90_dovi84_editlist.mp4",
                  1.2,
                  1920,
                  1080,
                  {yuv, 10, 1, 1, false},
                  {9, 18, 9, false, false}},
             Case{"video/phone_av1_pq10_720x1280.mp4",
                  2,
                  720,
                  1280,
                  {yuv, 10, 1, 1, false},
                  {9, 16, 9, false, false}},
             Case{"video/phone_4k60_rot90_short.mp4",
                  0.2,
                  3840,
                  2160,
                  {yuv, 8, 1, 1, false},
                  {5, 6, 5, true, false}},
             Case{"video/alpha_200_vp9_vorbis.webm",
                  1,
                  200,
                  200,
                  {yuv, 8, 1, 1, true},
                  {1, 1, 5, false, false}},
             Case{"video/gen_odd_427x239_vp9_opus.webm",
                  1,
                  427,
                  239,
                  {yuv, 8, 1, 1, false},
                  {1, 1, 1, false, false}},
             Case{"video/gen_prores422_720p30_pcm24.mov",
                  0.5,
                  1280,
                  720,
                  {yuv, 10, 1, 0, false},
                  {1, 1, 1, false, false}},
         }) {
        fs::path const file = sharedMedia(c.name);
        if (file.empty())
            GTEST_SKIP() << "The shared media are not on this machine.";
        SCOPED_TRACE(c.name);
        VideoReader reader(file, 2);
        Frame const frame = reader.frameAt(c.at);
        EXPECT_EQ(frame.width(), c.width);
        EXPECT_EQ(frame.height(), c.height);
        EXPECT_EQ(frame.layout(), c.layout);
        EXPECT_EQ(frame.colors(), c.colors)
            << frame.colors().primaries << frame.colors().transfer << frame.colors().matrix;
        Frame const first = reader.frameAt(0);
        EXPECT_TRUE(samePixels(reader.frameAt(c.at), frame));
        EXPECT_TRUE(samePixels(reader.frameAt(-5), first));
    }
}

} // namespace framewright
