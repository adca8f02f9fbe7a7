#include "text/internal/text_painter.h"

#include "text/text_images.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

namespace framewright {

namespace {

FontRegistry const& fonts()
{
    static FontRegistry const registry(CARRIED_FONTS);
    return registry;
}

CaptionStyle plain(char const* font = "DejaVuSans-Bold", float size = 80)
{
    CaptionStyle style;
    style.fontName = font;
    style.fontSize = size;
    return style;
}

CaptionStyle with(CaptionStyle style, void (*change)(CaptionStyle&))
{
    change(style);
    return style;
}

CaptionStyle outlined()
{
    return with(plain(), [](CaptionStyle& style) {
        style.outlineEnabled = true;
        style.strokeWidth = 8;
        style.strokeColor = {1, 0, 0, 1};
    });
}

CaptionStyle boxed()
{
    return with(plain(), [](CaptionStyle& style) {
        style.backgroundEnabled = true;
        style.backgroundColor = {0, 0, 1, 1};
        style.padding = 30;
        style.cornerRadius = 20;
    });
}

CaptionStyle shadowed()
{
    return with(plain(), [](CaptionStyle& style) {
        style.shadowEnabled = true;
        style.shadowOpacity = 1;
        style.shadowRadius = 20;
    });
}

TextBlock block(std::string text, CaptionStyle style, PixelSize canvas = {1080, 1920})
{
    TextBlock block;
    block.text = std::move(text);
    block.style = std::move(style);
    block.canvas = canvas;
    block.x = canvas.width / 2.0;
    block.y = canvas.height / 2.0;
    return block;
}

using Color = std::array<int, 4>;

Color pixel(PlacedImage const& image, int x, int y)
{
    x -= image.x;
    y -= image.y;
    if (x < 0 || y < 0 || x >= image.width || y >= image.height)
        return {};
    auto const* const found =
        &image.pixels[(std::size_t(y) * std::size_t(image.width) + std::size_t(x)) * 4];
    return {found[0], found[1], found[2], found[3]};
}

/// The bounding rectangle of the pixels with a wanted colour.
struct Bounds {
    int left = std::numeric_limits<int>::max(), top = left;
    int right = std::numeric_limits<int>::min(), bottom = right;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
};

template <class Wanted>
Bounds boundsOf(PlacedImage const& image, Wanted wanted)
{
    Bounds bounds;
    for (int y = image.y; y < image.y + image.height; ++y) {
        for (int x = image.x; x < image.x + image.width; ++x) {
            if (!wanted(pixel(image, x, y)))
                continue;
            bounds.left = std::min(bounds.left, x);
            bounds.top = std::min(bounds.top, y);
            bounds.right = std::max(bounds.right, x + 1);
            bounds.bottom = std::max(bounds.bottom, y + 1);
        }
    }
    return bounds;
}

bool isSeen(Color const& color)
{
    return color[3] >= 128;
}
bool isWhite(Color const& color)
{
    return color[0] > 200 && color[1] > 200 && color[2] > 200;
}
bool isRed(Color const& color)
{
    return color[0] > 200 && color[1] < 50;
}
bool isBlue(Color const& color)
{
    return color[2] > 200 && color[0] < 50;
}
bool isColorful(Color const& color)
{
    auto const [least, most] = std::minmax({color[0], color[1], color[2]});
    return most - least > 40;
}

} // namespace

TEST(TextPainter, PlacesAndSizesLetters)
{
    // An H of DejaVu Sans Bold is 0.729 em high and 0.653 em wide; 0.837 em with its sides.
    Bounds const one = boundsOf(paintText(block("H", plain()), fonts()), isSeen);
    EXPECT_NEAR(one.height(), 0.729 * 80, 2);
    EXPECT_NEAR(one.width(), 0.653 * 80, 2);
    EXPECT_NEAR((one.left + one.right) / 2, 540, 2);
    EXPECT_NEAR((one.top + one.bottom) / 2, 960, 2); // Capitals are centred vertically.

    struct Case {
        char const* what;
        TextBlock block;
        double width, height;
    };
    auto const changed = [](TextBlock block, auto change) {
        change(block);
        return block;
    };
    double const wide = 0.837 * 80 + 0.653 * 80; // "HH".
    for (Case const& c : {
             Case{"two letters", block("HH", plain()), wide, 0.729 * 80},
             Case{"half the canvas", block("HH", plain(), {540, 960}), wide / 2, 0.729 * 40},
             Case{"landscape", block("HH", plain(), {1920, 1080}), wide * 16 / 9,
                  0.729 * 80 * 16 / 9},
             Case{"larger", changed(block("HH", plain()), [](auto& b) { b.scale = 2; }), wide * 2,
                  0.729 * 160},
             Case{"spaced", block("HH", with(plain(), [](auto& s) { s.letterSpacing = 20; })),
                  wide + 20, 0.729 * 80},
             Case{"capitals", block("hh", with(plain(), [](auto& s) { s.uppercase = true; })), wide,
                  0.729 * 80},
             Case{"two lines", block("HH\nHH", plain()), wide, (0.729 + 1.164) * 80},
             Case{"a blank line", block("\nH\n\nH\n\n", plain()), 0.653 * 80,
                  (0.729 + 2 * 1.164) * 80},
             Case{"an outline", block("H", outlined()), 0.653 * 80 + 16, 0.729 * 80 + 16},
         }) {
        Bounds const bounds = boundsOf(paintText(c.block, fonts()), isSeen);
        EXPECT_NEAR(bounds.width(), c.width, 2) << c.what;
        EXPECT_NEAR(bounds.height(), c.height, 2) << c.what;
        EXPECT_NEAR((bounds.left + bounds.right) / 2.0, c.block.canvas.width / 2.0, 2) << c.what;
    }
}

TEST(TextPainter, DrawsBuiltInStylesAsApproved)
{
    // Measured in an image that was checked by eye: the bounds, and a pixel in a letter or its box.
    struct Case {
        char const* style;
        Bounds bounds;
        int x, y;
        Color color;
    };
    for (Case const& c : {
             Case{"Classic", {383, 882, 697, 1038}, 417, 888, {255, 255, 255, 255}},
             Case{"Modern", {381, 858, 699, 1062}, 405, 860, {255, 255, 255, 255}},
             Case{"Strong", {363, 836, 717, 1084}, 399, 841, {255, 255, 255, 255}},
             Case{"Neon", {297, 829, 780, 1096}, 365, 857, {242, 29, 182, 242}},
             Case{"Typewriter", {356, 875, 724, 1045}, 380, 877, {236, 230, 216, 245}},
             Case{"Meme", {358, 849, 722, 1071}, 400, 860, {255, 255, 255, 255}},
             Case{"Elegant", {323, 852, 757, 1063}, 564, 860, {255, 248, 233, 255}},
             Case{"Directional", {373, 860, 707, 1060}, 454, 895, {255, 255, 255, 255}},
             Case{"Editor", {374, 871, 706, 1049}, 462, 907, {140, 245, 181, 255}},
             Case{"Deco", {331, 886, 749, 1035}, 371, 892, {255, 233, 200, 255}},
             Case{"Poster", {234, 855, 848, 1058}, 371, 862, {255, 226, 61, 255}},
             Case{"Squeeze", {365, 844, 715, 1076}, 392, 846, {255, 226, 61, 255}},
             Case{"Journal", {373, 844, 717, 1074}, 441, 850, {255, 255, 255, 255}},
             Case{"Rosalia", {334, 838, 743, 1076}, 563, 847, {255, 244, 234, 255}},
         }) {
        auto const style = std::ranges::find(CaptionStyle::textPresets(), c.style,
                                             [](CaptionStyle const& style) { return style.name; });
        ASSERT_NE(style, CaptionStyle::textPresets().end()) << c.style;
        auto const image = paintText(block("Six days\nin Lisbon", *style), fonts());
        Bounds const bounds = boundsOf(image, isSeen);
        EXPECT_NEAR(bounds.left, c.bounds.left, 2) << c.style;
        EXPECT_NEAR(bounds.top, c.bounds.top, 2) << c.style;
        EXPECT_NEAR(bounds.right, c.bounds.right, 2) << c.style;
        EXPECT_NEAR(bounds.bottom, c.bounds.bottom, 2) << c.style;
        Color const color = pixel(image, c.x, c.y);
        for (std::size_t part = 0; part < color.size(); ++part)
            EXPECT_NEAR(color[part], c.color[part], 8) << c.style;
    }
}

TEST(TextPainter, KeepsLettersWholeInsideTheirOutline)
{
    auto const bare = paintText(block("Bag", plain()), fonts());
    auto const image = paintText(block("Bag", outlined()), fonts());
    Bounds const before = boundsOf(bare, isWhite), letters = boundsOf(image, isWhite);
    EXPECT_EQ(before.width(), letters.width());
    EXPECT_EQ(before.height(), letters.height());
    Bounds const outline = boundsOf(image, isRed);
    EXPECT_NEAR(letters.left - outline.left, 8, 1);
    EXPECT_NEAR(outline.bottom - letters.bottom, 8, 1);
    // Translucent letters don't show their own outline.
    auto const ghost = with(outlined(), [](CaptionStyle& s) { s.textColor.alpha = 0; });
    auto const hollow = paintText(block("I", ghost), fonts());
    EXPECT_EQ(pixel(hollow, 540, 960)[3], 0);
    EXPECT_GT(boundsOf(hollow, isRed).width(), 16);
}

TEST(TextPainter, FitsTheBoxToItsLines)
{
    auto const image = paintText(block("HHHHHH\nHH", boxed()), fonts());
    Bounds const box = boundsOf(image, isBlue), letters = boundsOf(image, isWhite);
    EXPECT_NEAR(letters.left - box.left, 30 + 0.092 * 80, 2); // The side bearing of an H.
    EXPECT_TRUE(isBlue(pixel(image, 540, box.top + 3)));
    EXPECT_EQ(pixel(image, box.left + 2, box.top + 2)[3], 0); // A convex corner,
    EXPECT_TRUE(isBlue(pixel(image, 540, box.bottom - 3)));
    EXPECT_EQ(pixel(image, box.left + 20, box.bottom - 20)[3], 0); // and as narrow as its line.
    EXPECT_TRUE(isBlue(pixel(image, 540, (box.top + box.bottom) / 2)));
}

TEST(TextPainter, CastsASoftShadow)
{
    auto const image = paintText(block("I", shadowed()), fonts());
    Bounds const letter = boundsOf(image, isWhite);
    int last = 256;
    for (int x = letter.right + 1; x < letter.right + 20; ++x) {
        Color const color = pixel(image, x, 960);
        EXPECT_LT(color[0], 30);
        EXPECT_LE(color[3], last) << x;
        last = color[3];
    }
    EXPECT_LT(last, 40);
    EXPECT_GT(pixel(image, letter.right + 3, 960)[3], 20);
    // A box casts it instead, but not beneath itself.
    auto style = boxed();
    style.backgroundColor.alpha = 0.5;
    style.shadowEnabled = true;
    style.shadowOpacity = 1;
    style.shadowRadius = 20;
    Color const inBox = pixel(paintText(block("I", style), fonts()), 540 - 30, 960);
    EXPECT_NEAR(inBox[3], 128, 2);
    EXPECT_NEAR(inBox[2], 128, 2);
}

TEST(TextPainter, DrawsEveryScriptAndEmojiInColor)
{
    for (char const* const text : {"😀", "❤️", "1️⃣", "🇩🇪", "👍🏽"}) {
        for (char const* const font : {"DejaVuSans-Bold", "BebasNeue-Regular", "system:bold"}) {
            auto style = outlined();
            style.fontName = font;
            auto const image = paintText(block(text, style), fonts());
            EXPECT_GT(boundsOf(image, isColorful).width(), 40) << text << " in " << font;
            EXPECT_LT(boundsOf(image, isSeen).width(), 120) << text << " is split in " << font;
        }
    }
    // In right-to-left text the last character is on the left.
    auto const hebrew = paintText(block("שלום 😀", plain()), fonts());
    Bounds const all = boundsOf(hebrew, isSeen), emoji = boundsOf(hebrew, isColorful);
    EXPECT_NEAR(emoji.left, all.left, 6);
    EXPECT_LT(emoji.right, 560);
    // Script letters extend far beyond their line; nothing is clipped.
    for (char const* const font :
         {"Neonderthaw-Regular", "CaveatRoman-Bold", "MarckScript-Regular"}) {
        auto const image = paintText(block("fjÅgQy", plain(font, 120)), fonts());
        Bounds const seen = boundsOf(image, [](Color const& c) { return c[3] > 0; });
        EXPECT_GT(seen.left, image.x) << font;
        EXPECT_GT(seen.top, image.y) << font;
        EXPECT_LT(seen.right, image.x + image.width) << font;
        EXPECT_LT(seen.bottom, image.y + image.height) << font;
    }
}

TEST(TextPainter, SurvivesAnyInput)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const infinity = std::numeric_limits<float>::infinity();
    CaptionStyle mad = outlined();
    mad.backgroundEnabled = mad.shadowEnabled = true;
    mad.fontSize = mad.padding = mad.maxWidthFraction = mad.letterSpacing = nan;
    mad.strokeWidth = -infinity;
    mad.cornerRadius = mad.shadowRadius = mad.shadowOpacity = infinity;
    mad.textColor = {-1, 2, nan, nan};
    TextBlock nowhere = block("Words", outlined());
    nowhere.x = nan;
    nowhere.y = infinity;
    nowhere.scale = nan;
    TextBlock gone = block("Words", outlined());
    gone.x = -1e9;
    std::string longText;
    while (longText.size() < 10'000)
        longText += "words without an end ";
    auto const huge = with(boxed(), [](CaptionStyle& s) { s.padding = 1e9F; });
    struct Case {
        char const* what;
        TextBlock block;
        bool isSeen;
    };
    for (Case const& c : {
             Case{"nothing", block("", boxed()), false},
             Case{"spaces", block(" \t  ", boxed()), false},
             Case{"newlines", block("\n\r\n\n", boxed()), false},
             Case{"nonsense", block("Words", mad), true},
             Case{"no place", nowhere, true},
             Case{"far away", gone, false},
             Case{"broken bytes", block("a\xff\xc3", plain()), true},
             Case{"a control", block("a\x01\x1b b", plain()), true},
             Case{"long", block(longText, outlined()), true},
             Case{"long, one word", block(std::string(10'000, 'w'), outlined()), true},
             Case{"a box beyond the canvas", block("Words", huge), true},
             Case{"a tiny canvas", block("Words", outlined(), {2, 2}), true},
         }) {
        PlacedImage const image = paintText(c.block, fonts());
        EXPECT_EQ(!image.isEmpty(), c.isSeen) << c.what;
        EXPECT_EQ(image.pixels.size(), std::size_t(image.width) * std::size_t(image.height) * 4)
            << c.what;
        EXPECT_TRUE(image.isEmpty() || (image.x >= 0 && image.y >= 0 &&
                                        image.x + image.width <= c.block.canvas.width &&
                                        image.y + image.height <= c.block.canvas.height))
            << c.what;
    }
}

TEST(TextPainter, KeepsLinesWithinTheirWidthAndTheSameInEverySize)
{
    std::string const text =
        "Here are three small things that I learned on the road 東京都庁の展望室";
    auto style = plain("system:semibold", 60);
    style.maxWidthFraction = 0.5;
    double ratio = 0;
    for (int const width : {2160, 1080, 360}) {
        Bounds const bounds =
            boundsOf(paintText(block(text, style, {width, width * 16 / 9}), fonts()), isSeen);
        EXPECT_LE(bounds.width(), width / 2 + 2) << width;
        if (ratio == 0)
            ratio = double(bounds.height()) / width;
        EXPECT_NEAR(double(bounds.height()) / width, ratio, 0.02) << width;
    }
}

TEST(TextPainter, StaysOnTheCanvasWhenAsked)
{
    TextBlock low = block("One\ntwo", boxed());
    low.anchor = TextBlock::Anchor::bottom;
    low.y = 1919;
    EXPECT_EQ(boundsOf(paintText(low, fonts()), isBlue).bottom, 1920);
    low.edges = TextBlock::Edges::inside;
    EXPECT_NEAR(boundsOf(paintText(low, fonts()), isBlue).bottom, 1920 - 32, 2);
}

TEST(TextImages, AreEqualOnAnyThread)
{
    auto const shared = std::shared_ptr<FontRegistry const>(&fonts(), [](auto*) {});
    std::vector<TextBlock> blocks;
    for (auto const& style : {outlined(), boxed(), shadowed(), plain("Neonderthaw-Regular")})
        blocks.push_back(block("Emoji 😀 and שלום fjord", style));
    std::vector<PlacedImage> expected;
    for (TextBlock const& one : blocks)
        expected.push_back(paintText(one, fonts()));
    TextImages const images(shared, 4 << 20);
    std::vector<int> wrong(4);
    {
        std::vector<std::jthread> threads;
        for (std::size_t n = 0; n < wrong.size(); ++n) {
            threads.emplace_back([&, n] {
                for (std::size_t i = 0; i < 2 * blocks.size(); ++i) {
                    std::size_t const at = (i + n) % blocks.size();
                    wrong[n] += paintText(blocks[at], fonts()) != expected[at];
                    wrong[n] += *images.image(blocks[at]) != expected[at];
                }
            });
        }
    }
    EXPECT_EQ(wrong, std::vector<int>(4));
    EXPECT_EQ(images.image(blocks[0]), images.image(blocks[0])); // Cached.
}

} // namespace framewright
