#include "stills/still_frames.h"

#include "media/media_error.h"
#include "rendering/made_media.h"

#include <QImage>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace framewright {

namespace {

using testing::HasSubstr;

class Stills : public MadeMedia {
protected:
    StillFrames stills{burner, 4};
};

std::array<int, 3> pixel(RGBImage const& image, double x, double y)
{
    std::uint8_t const* const found = image.row(int(y * image.height)) + 3 * int(x * image.width);
    return {found[0], found[1], found[2]};
}

testing::Matcher<std::array<int, 3>> isAbout(int red, int green, int blue)
{
    constexpr int off = 12; // The media are compressed.
    auto const near = [](int value) {
        return testing::AllOf(testing::Ge(value - off), testing::Le(value + off));
    };
    return testing::ElementsAre(near(red), near(green), near(blue));
}

constexpr std::array<int, 3> black{0, 0, 0};

/// One colour for each second.
char const* const threeColors =
    "-f lavfi -i \"color=red:s=160x120:r=30:d=1\" -f lavfi -i \"color=lime:s=160x120:r=30:d=1\""
    " -f lavfi -i \"color=blue:s=160x120:r=30:d=1\" -filter_complex "
    "\"[0][1][2]concat=n=3,scale=out_color_matrix=bt709,format=yuv420p[v]\""
    " -map \"[v]\" -c:v libx264 -preset ultrafast -qp 10 -colorspace bt709";

} // namespace

TEST_F(Stills, ShowThePieceAtATime)
{
    Id const id = loaded(made(threeColors, "colors.mp4"));
    Project const piece = project({videoTrack(
        {clip(id, 0, 1, 0), clip(Clip::placeholderAssetID, 1, 1), clip(id, 2, 0.5, 0.9)})});
    struct Case {
        double time;
        std::array<int, 3> color;
    };
    for (Case const& c : {
             Case{0, {255, 0, 0}},
             Case{0.99, {255, 0, 0}},
             Case{1.5, {0, 0, 0}},
             Case{2.05, {255, 0, 0}},
             Case{2.1, {0, 255, 0}},
             Case{2.5, {0, 255, 0}},
             Case{900, {0, 255, 0}},
             Case{-1, {255, 0, 0}},
         }) {
        RGBImage const image = stills.image(piece, assets, c.time, 90);
        EXPECT_EQ(image.width, 90);
        EXPECT_EQ(image.height, 160);
        EXPECT_THAT(pixel(image, 0.5, 0.5), isAbout(c.color[0], c.color[1], c.color[2])) << c.time;
        EXPECT_EQ(pixel(image, 0.5, 0.1), black) << c.time;
    }
}

TEST_F(Stills, OfOverlappingClipsShowTheFirstInTheTracksOrder)
{
    auto const plain = [&](std::string const& color, std::string const& size) {
        return loaded(made("-f lavfi -i color=" + color + ":s=" + size +
                               ":r=30:d=4 -vf scale=out_color_matrix=bt709 -pix_fmt yuv420p"
                               " -c:v libx264 -preset ultrafast -qp 10 -colorspace bt709",
                           color + ".mp4"));
    };
    Clip const wide = clip(plain("red", "320x180"), 0, 4);
    Clip const tall = clip(plain("blue", "180x320"), 1, 1);
    auto const red = isAbout(255, 0, 0), blue = isAbout(0, 0, 255);
    struct Case {
        char const* name;
        std::vector<Clip> clips;
        double time;
        testing::Matcher<std::array<int, 3>> middle;
        bool isTall;
    };
    for (Case const& c : {
             Case{"within the first", {wide, tall}, 1.5, red, false},
             Case{"the shorter one is first", {tall, wide}, 1.5, blue, true},
             Case{"behind it", {tall, wide}, 2.5, red, false},
         }) {
        RGBImage const image = stills.image(project({videoTrack(c.clips)}), assets, c.time, 90);
        EXPECT_THAT(pixel(image, 0.5, 0.5), c.middle) << c.name;
        EXPECT_THAT(pixel(image, 0.5, 0.1), c.isTall ? c.middle : isAbout(0, 0, 0)) << c.name;
    }
}

TEST_F(Stills, AreTurnedUpright)
{
    // Red left of blue as stored; turned clockwise, red is on top.
    auto const file = made("-f lavfi -i "
                           "\"color=red:s=160x240:r=30:d=1[l];color=blue:s=160x240:r=30:d=1[r];[l]["
                           "r]hstack,scale=out_color_matrix=bt709,format=yuv420p\""
                           " -c:v libx264 -preset ultrafast -colorspace bt709",
                           "plain.mp4");
    auto const turned =
        made("-i '" + file.string() + "' -c copy -metadata:s:v rotate=270", "turned.mp4");
    int const turns = probeMedia(turned).orientation.quarterTurns;
    ASSERT_EQ(turns % 2, 1);
    RGBImage const image =
        stills.image(project({videoTrack({clip(loaded(turned), 0, 1)})}), assets, 0.5, 160);
    bool const isClockwise = turns == 1;
    EXPECT_THAT(pixel(image, 0.5, 0.2), isClockwise ? isAbout(255, 0, 0) : isAbout(0, 0, 255));
    EXPECT_THAT(pixel(image, 0.5, 0.8), isClockwise ? isAbout(0, 0, 255) : isAbout(255, 0, 0));
}

TEST_F(Stills, ShowPhotosAtTheSizeTheyAreSeen)
{
    auto const file = made(
        "-f lavfi -i \"color=red:s=600x300,drawbox=x=300:w=300:h=300:c=lime:t=fill\" -frames:v 1",
        "photo.png");
    Clip zoomed = clip(loaded(file), 0, 2);
    zoomed.transform = {.scale = 4, .offsetX = 0.3};
    RGBImage const image = stills.image(project({videoTrack({zoomed})}), assets, 1, 100);
    EXPECT_THAT(pixel(image, 0.78, 0.5), isAbout(255, 0, 0));
    EXPECT_THAT(pixel(image, 0.82, 0.5), isAbout(0, 255, 0));
}

TEST_F(Stills, AreAsWideAsAskedFor)
{
    for (auto const& [width, height] :
         {std::pair{1, 2}, std::pair{2, 4}, std::pair{35, 62}, std::pair{361, 642}}) {
        RGBImage const image = stills.image(newProject(), assets, 0, width);
        EXPECT_EQ(image.width, width);
        EXPECT_EQ(image.height, height);
        EXPECT_EQ(image.pixels,
                  std::vector<std::uint8_t>(image.pixels.size(), 0)); // An empty piece is black.
    }
}

TEST_F(Stills, AreFilledByFootageOfTheirShape)
{
    struct Case {
        AspectPreset canvas;
        char const* size;
    };
    for (Case const& c :
         {Case{AspectPreset::portrait, "180x320"}, Case{AspectPreset::landscape, "320x180"},
          Case{AspectPreset::square, "180x180"}, Case{AspectPreset::fourFive, "144x180"}}) {
        auto const file = made(std::string("-f lavfi -i color=yellow:r=30:d=1:s=") + c.size +
                                   ",scale=out_color_matrix=bt709,format=yuv420p -c:v libx264"
                                   " -preset ultrafast -qp 4 -colorspace bt709",
                               std::string(c.size) + ".mp4");
        Project piece = project({videoTrack({clip(loaded(file), 0, 1)})});
        piece.aspect = c.canvas;
        for (int const width : {97, 240, 359, 361}) {
            RGBImage const image = stills.image(piece, assets, 0.5, width);
            double const right = 1 - 0.5 / image.width, bottom = 1 - 0.5 / image.height;
            for (double const along : {0.0, 0.25, 0.5, 0.75}) {
                for (auto const& [x, y] : {std::pair(along, 0.0), std::pair(along, bottom),
                                           std::pair(0.0, along), std::pair(right, along)})
                    EXPECT_THAT(pixel(image, x, y), isAbout(255, 255, 0))
                        << c.size << " at " << width << ": " << x << ", " << y;
            }
        }
    }
}

TEST_F(Stills, SeeFilesThatWereChanged)
{
    auto const file = made(threeColors, "colors.mp4");
    Project const piece = project({videoTrack({clip(loaded(file), 0, 3)})});
    EXPECT_THAT(pixel(stills.image(piece, assets, 0.5, 90), 0.5, 0.5), isAbout(255, 0, 0));
    made("-f lavfi -i \"color=white:s=160x120:r=30:d=3\" -c:v libx264 -preset ultrafast -pix_fmt "
         "yuv420p",
         "new.mp4");
    std::filesystem::rename(folder / "new.mp4", file);
    EXPECT_THAT(pixel(stills.image(piece, assets, 0.5, 90), 0.5, 0.5), isAbout(255, 255, 255));
}

TEST_F(Stills, NameTheClipThatCannotBeRead)
{
    auto const file = made(threeColors, "colors.mp4");
    Project const piece = project({videoTrack({clip(loaded(file), 0, 3)})});
    std::filesystem::resize_file(file, 40);
    try {
        stills.image(piece, assets, 0.5, 90);
        FAIL();
    } catch (MediaError const& error) {
        EXPECT_THAT(error.what(), HasSubstr("clip 1 on Video"));
        EXPECT_THAT(error.what(), HasSubstr("colors.mp4"));
    }
}

TEST(PNG, HoldsTheVeryPixels)
{
    RGBImage image{3, 2, {}};
    for (int n = 0; n < 18; ++n)
        image.pixels.push_back(std::uint8_t(n * 14));
    auto const bytes = pngFile(image);
    QImage const read = QImage::fromData(bytes.data(), int(bytes.size()), "png");
    ASSERT_EQ(read.size(), QSize(3, 2));
    for (int n = 0; n < 6; ++n) {
        QRgb const found = read.pixel(n % 3, n / 3);
        EXPECT_EQ((std::array{qRed(found), qGreen(found), qBlue(found)}),
                  (std::array{n * 42, n * 42 + 14, n * 42 + 28}));
    }
}

} // namespace framewright
