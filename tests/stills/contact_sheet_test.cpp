#include "stills/contact_sheet.h"

#include "rendering/made_media.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace framewright {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<double> timesOf(SheetMoments const& moments, double duration)
{
    auto const times = sheetTimes(moments, duration);
    return times ? *times : std::vector<double>{};
}

Refusal refusalOf(SheetMoments const& moments, double duration)
{
    return sheetTimes(moments, duration).refusal();
}

std::array<int, 3> pixelAt(RGBImage const& image, int x, int y)
{
    std::uint8_t const* const found = image.row(y) + 3 * x;
    return {found[0], found[1], found[2]};
}

bool isAbout(std::array<int, 3> color, std::array<int, 3> wanted)
{
    return std::ranges::equal(color, wanted, [](int a, int b) { return std::abs(a - b) < 25; });
}

class Sheet : public MadeMedia {};

} // namespace

TEST(SheetTimes, AreSpreadOverTheRange)
{
    EXPECT_THAT(timesOf({}, 6), ElementsAre(0, 0.5, 1, 1.5, 2, 2.5, 3, 3.5, 4, 4.5, 5, 5.5));
    EXPECT_THAT(timesOf({.every = 2}, 6), ElementsAre(0, 2, 4));
    EXPECT_THAT(timesOf({.every = 2}, 6.1), ElementsAre(0, 2, 4, 6));
    EXPECT_THAT(timesOf({.every = 2, .start = 1, .end = 5}, 60), ElementsAre(1, 3));
    EXPECT_THAT(timesOf({.every = 5, .end = 99}, 6), ElementsAre(0, 5));
    EXPECT_THAT(timesOf({.every = 100}, 6), ElementsAre(0));
    EXPECT_THAT(timesOf({.times = {5, 1, 99}}, 6), ElementsAre(5, 1, 99));
    EXPECT_EQ(timesOf({.every = 0.125}, 6).size(), 48u);
}

TEST(SheetTimes, RefusalsSayWhy)
{
    Refusal const tooMany = {.reason = Reason::tooManyFrames, .value = 49};
    Refusal const noStep = {Reason::outOfRange, Subject::setting(Setting::sheetStep)};
    EXPECT_EQ(refusalOf({.every = 6.0 / 49}, 6), tooMany);
    EXPECT_EQ(refusalOf({.every = 1e-9}, 6).reason, Reason::tooManyFrames);
    EXPECT_EQ(refusalOf({.times = std::vector<double>(49)}, 6), tooMany);
    EXPECT_EQ(refusalOf({.every = 0}, 6), noStep);
    EXPECT_EQ(refusalOf({.every = -1}, 6), noStep);
    EXPECT_EQ(refusalOf({.start = 3, .end = 3}, 6).reason, Reason::endNotAfterStart);
    EXPECT_EQ(refusalOf({.start = 7}, 6).reason, Reason::endNotAfterStart);
    EXPECT_EQ(refusalOf({}, 0).reason, Reason::noPicture);
}

TEST(TimeLabel, CountsMinutes)
{
    EXPECT_EQ(timeLabel(0), "0:00.00");
    EXPECT_EQ(timeLabel(59.999), "1:00.00");
    EXPECT_EQ(timeLabel(754.321), "12:34.32");
}

TEST_F(Sheet, ShowsTheFramesInTheOrderAskedFor)
{
    auto const file = made(
        "-f lavfi -i \"color=red:s=90x160:r=30:d=1\" -f lavfi -i "
        "\"color=lime:s=90x160:r=30:d=1\" -f lavfi -i \"color=blue:s=90x160:r=30:d=1\" "
        "-filter_complex \"[0][1][2]concat=n=3,scale=out_color_matrix=bt709,format=yuv420p[v]\""
        " -map \"[v]\" -c:v libx264 -preset ultrafast -qp 10 -colorspace bt709",
        "colors.mp4");
    Project const piece = project({videoTrack({clip(loaded(file), 0, 3)})});
    StillFrames stills(burner);
    ContactSheet const sheet{2, 90};
    std::vector<double> const times{2.5, 0.5, 1.5};
    RGBImage const image = sheet.draw(stills, piece, assets, times);
    PixelSize const size = sheet.size(piece.aspect, times.size());
    ASSERT_EQ(std::pair(image.width, image.height), std::pair(size.width, size.height));
    ASSERT_GE(size.width, 2 * 90);
    ASSERT_GE(size.height, 2 * 160);

    int const left = size.width / 4, right = size.width * 3 / 4;
    int const top = size.height / 4, bottom = size.height * 3 / 4;
    EXPECT_TRUE(isAbout(pixelAt(image, left, top), {0, 0, 255}));
    EXPECT_TRUE(isAbout(pixelAt(image, right, top), {255, 0, 0}));
    EXPECT_TRUE(isAbout(pixelAt(image, left, bottom), {0, 255, 0}));
    EXPECT_TRUE(isAbout(pixelAt(image, right, bottom), {20, 20, 22}));

    // The frames are those that are drawn one by one, and a label stands below each.
    RGBImage const one = stills.image(piece, assets, 0.5, 90);
    int const gap = 2, rightFrame = gap + 90 + gap;
    for (int y = 0; y < one.height; ++y)
        ASSERT_TRUE(
            std::equal(one.row(y), one.row(y) + 90 * 3, image.row(gap + y) + rightFrame * 3))
            << y;
    int brightest = 0;
    for (int y = gap + one.height; y < size.height / 2; ++y)
        for (int x = rightFrame; x < rightFrame + 90; ++x)
            brightest = std::max(brightest, pixelAt(image, x, y)[1]);
    EXPECT_GT(brightest, 150);
}

TEST_F(Sheet, NeverCutsALabel)
{
    auto const file = made("-f lavfi -i color=black:s=90x160:r=30:d=1 -pix_fmt yuv420p -c:v libx264"
                           " -preset ultrafast",
                           "black.mp4");
    Project const piece = project({videoTrack({clip(loaded(file), 0, 1)})});
    StillFrames stills(burner);
    struct Case {
        int width;
        double time;
        bool isLabelled;
    };
    for (Case const& c : {Case{24, 0.5, false},
                          {40, 0.5, true},
                          {40, 6000, false},
                          {90, 6000, true},
                          {240, 0.5, true}}) {
        std::vector<double> const times{c.time};
        RGBImage const image = ContactSheet{1, c.width}.draw(stills, piece, assets, times);
        int inside = 0, atEdges = 0;
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x)
                (x < 2 || x >= image.width - 2 ? atEdges : inside) += pixelAt(image, x, y)[1] > 100;
        }
        EXPECT_EQ(inside > 0, c.isLabelled) << c.width << " px at " << c.time;
        EXPECT_EQ(atEdges, 0) << c.width << " px at " << c.time;
    }
}

} // namespace framewright
