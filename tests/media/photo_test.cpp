#include "media/photo.h"

#include "media/bytes.h"
#include "media/made_media.h"
#include "media/media_error.h"
#include "media/media_info.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

namespace framewright {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

namespace {

int lumaAt(Frame const& frame, int x, int y)
{
    auto const plane = frame.plane(0);
    return plane.data[y * plane.stride + x];
}

/// The luma at the centre of each quadrant: top left, top right, bottom left, bottom right.
std::array<int, 4> quarters(Frame const& frame)
{
    int const w = frame.width();
    int const h = frame.height();
    return {lumaAt(frame, w / 4, h / 4), lumaAt(frame, 3 * w / 4, h / 4),
            lumaAt(frame, w / 4, 3 * h / 4), lumaAt(frame, 3 * w / 4, 3 * h / 4)};
}

/// 64 x 32, with quadrants of RGB gray 200, 150, 100 and 50.
fs::path quarteredPhoto(std::string const& name, Arguments const& encoding)
{
    return madeWith(name, Arguments{"-f", "lavfi", "-i",
                                    "color=black:s=64x32,format=gray,"
                                    "geq=lum='200-50*gt(X,31)-100*gt(Y,15)',format=rgb24",
                                    "-frames:v", "1"} +
                              encoding);
}

int limited(int gray)
{
    return 16 + (gray * 219 + 127) / 255;
}

} // namespace

TEST(ReadPhoto, AppliesEveryOrientation)
{
    std::string const jpeg =
        contentsOf(quarteredPhoto("quarters.jpg", {"-pix_fmt", "yuvj444p", "-q:v", "1"}));
    // Which stored quadrant is at the top left, top right, bottom left and bottom right.
    std::array<std::array<int, 4>, 8> const seen = {{{0, 1, 2, 3},
                                                     {1, 0, 3, 2},
                                                     {3, 2, 1, 0},
                                                     {2, 3, 0, 1},
                                                     {0, 2, 1, 3},
                                                     {2, 0, 3, 1},
                                                     {3, 1, 2, 0},
                                                     {1, 3, 0, 2}}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        fs::path const file = fileOf("turned.jpg", withExifOrientation(jpeg, orientation));
        Frame const photo = readPhoto(file, 1000);
        EXPECT_EQ(photo.width(), orientation < 5 ? 64 : 32);
        EXPECT_EQ(probeMedia(file).displayWidth(), photo.width());
        EXPECT_EQ(probeMedia(file).displayHeight(), photo.height());
        for (std::size_t i = 0; i < 4; ++i) {
            int const gray = 200 - 50 * seen[std::size_t(orientation) - 1][i];
            EXPECT_NEAR(quarters(photo)[i], limited(gray), 3) << "quadrant " << i;
        }
    }
}

TEST(ReadPhoto, ReadsEveryFormat)
{
    for (auto const& [name, encoding, tolerance] : {
             std::tuple{"q.png", Arguments{}, 0},
             std::tuple{"q16.png", Arguments{"-pix_fmt", "rgb48be"}, 1},
             std::tuple{"q gray.png", Arguments{"-pix_fmt", "gray"}, 1},
             std::tuple{"q.tiff", Arguments{}, 0},
             std::tuple{"q.gif", Arguments{}, 16} /* of 256 fixed colours */,
             std::tuple{"q.webp", Arguments{"-lossless", "1"}, 1},
             std::tuple{"q.avif",
                        Arguments{"-c:v", "libaom-av1", "-still-picture", "1", "-crf", "5",
                                  "-pix_fmt", "yuv444p"},
                        4},
         }) {
        SCOPED_TRACE(name);
        fs::path const file = quarteredPhoto(name, encoding);
        MediaInfo const info = probeMedia(file);
        EXPECT_EQ(info.kind, MediaKind::image);
        EXPECT_EQ(info.duration, 0);
        EXPECT_EQ(info.displayWidth(), 64);
        Frame const photo = readPhoto(file, 1000);
        EXPECT_EQ(photo.colors(), ColorTags::bt709());
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(quarters(photo)[i], limited(200 - 50 * int(i)), tolerance) << i;
    }
}

TEST(ReadPhoto, ScalesDownButNeverUp)
{
    fs::path const file = quarteredPhoto("large.png", {"-vf", "scale=3000:1000"});
    Frame const photo = readPhoto(file, 600);
    EXPECT_EQ(photo.width(), 600);
    EXPECT_EQ(photo.height(), 200);
    EXPECT_NEAR(quarters(photo)[3], limited(50), 2);
    EXPECT_EQ(readPhoto(file, 9000).width(), 3000);
}

TEST(ReadPhoto, ConvertsColorsAndPutsTransparencyOnBlack)
{
    // Red on the left, fully transparent green on the right.
    fs::path const file = madeWith(
        "colours.png", {"-f", "lavfi", "-i",
                        "color=black:s=64x32,format=rgba,geq=r='255*lt(X,32)':g='255*gt(X,31)':b=0:"
                        "a='255*lt(X,32)'",
                        "-frames:v", "1"});
    Frame const photo = readPhoto(file, 1000);
    auto const at = [&](int plane, int x) {
        return int(photo.plane(plane).data[10 * photo.plane(plane).stride + x]);
    };
    EXPECT_EQ((std::array{at(0, 5), at(1, 5), at(2, 5)}), (std::array{63, 102, 240}));
    EXPECT_EQ((std::array{at(0, 60), at(1, 60), at(2, 60)}), (std::array{16, 128, 128}));
}

} // namespace framewright
