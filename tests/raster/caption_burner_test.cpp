#include "raster/caption_burner.h"

#include "export/exporter.h"
#include "media/video_reader.h"
#include "rendering/made_media.h"
#include "rendering/synthetic_frames.h"
#include "stills/still_frames.h"

#include <gmock/gmock.h>

#include <cmath>

namespace framewright {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

CaptionStyle boxed(RGBAColor const& color)
{
    CaptionStyle style;
    style.name = "Boxed";
    style.fontName = "DejaVuSans-Bold";
    style.backgroundEnabled = true;
    style.backgroundColor = color;
    style.padding = 40;
    return style;
}

Clip text(std::string words, double start, double length, RGBAColor const& box = {1, 0, 0, 1})
{
    Clip made = clip(Clip::textAssetID, start, length);
    made.text = TextOverlay{std::move(words), boxed(box)};
    return made;
}

Track textTrack(std::vector<Clip> clips)
{
    Track track;
    track.id = Id::random();
    track.kind = TrackKind::text;
    track.clips = std::move(clips);
    return track;
}

Track captions(std::vector<CaptionBar> bars)
{
    Track track;
    track.id = Id::random();
    track.kind = TrackKind::subtitles;
    SubtitleData data;
    data.style = boxed({0, 0, 1, 1});
    data.bars = std::move(bars);
    track.subtitles = std::move(data);
    return track;
}

CaptionBar bar(double start, double end, std::string words)
{
    return {Id::random(), start, end, std::move(words), {}};
}

Clip placeholder(std::string name, double start, double length)
{
    Clip made = clip(Clip::placeholderAssetID, start, length);
    made.placeholderName = std::move(name);
    return made;
}

/// When overlays are seen, in the order they are drawn.
std::vector<std::string> timesOf(std::vector<Overlay> const& overlays)
{
    std::vector<std::string> times;
    for (Overlay const& overlay : overlays)
        times.push_back(std::to_string(overlay.timeRange.start.value) + "-" +
                        std::to_string(overlay.timeRange.end.value));
    return times;
}

constexpr PixelSize canvas{360, 640};

} // namespace

TEST(Burner, StacksTracksAndLeavesOutWhatIsNotSeen)
{
    Track hidden = textTrack({text("Hidden", 0, 9)});
    hidden.isHidden = true;
    Track hiddenCaptions = captions({bar(0, 9, "Hidden")});
    hiddenCaptions.isHidden = true;
    Project const piece = project({
        hidden,
        textTrack({text("Top", 1, 1), text("  \n ", 2, 1)}),
        hiddenCaptions,
        // The second one begins before the first one ends.
        captions({bar(0, 2, "One"), bar(1.5, 3, "Two"), bar(4, 4, "No time"), bar(5, 6, " ")}),
        videoTrack({placeholder("Coffee", 0, 4), clip(photo, 4, 1)}),
    });
    auto const burner = testBurner();
    auto const all = burner->overlays(piece, store(), canvas);
    EXPECT_THAT(timesOf(all), ElementsAre("0-2400", "0-2400", "0-900", "900-1800", "600-1200"));
    EXPECT_EQ(all, burner->overlays(piece, store(), canvas));
    EXPECT_THAT(timesOf(burner->overlays(piece, store(), canvas, TimeRange{2.5, 2.5})),
                ElementsAre("0-2400", "0-2400", "900-1800"));
    EXPECT_THAT(timesOf(burner->overlays(piece, store(), canvas, TimeRange{4.5, 4.9})), IsEmpty());
}

TEST(Burner, ShowsOneCaptionAtATime)
{
    struct Case {
        char const* what;
        std::vector<CaptionBar> bars;
        std::vector<std::string> times; // In 600ths of a second.
    };
    for (Case const& c : {
             Case{"one after another", {bar(0, 1, "A"), bar(1, 2, "B")}, {"0-600", "600-1200"}},
             Case{"begun together", {bar(0, 1, "A"), bar(0, 2, "B")}, {"0-1200"}},
             Case{"over no time", {bar(0, 4, "A"), bar(1, 1, "B")}, {"0-2400"}},
             Case{"over the one after next",
                  {bar(0, 4, "A"), bar(1, 1, "B"), bar(2, 3, "C")},
                  {"0-1200", "1200-1800"}},
             Case{"a blank one", {bar(0, 4, "A"), bar(1, 2, " ")}, {"0-2400"}},
             Case{"out of order", {bar(2, 4, "B"), bar(0, 3, "A")}, {"0-1200", "1200-2400"}},
             Case{"backwards", {bar(3, 2, "A")}, {}},
         }) {
        auto const overlays = testBurner()->overlays(project({captions(c.bars)}), store(), canvas);
        EXPECT_EQ(timesOf(overlays), c.times) << c.what;
    }
}

TEST(Burner, PutsCaptionsWhereTheyBelong)
{
    auto const middleOf = [](CaptionPosition position, double offset) {
        Track track = captions({bar(0, 1, "H")});
        track.subtitles->edit().placement = {position, offset};
        auto const overlays = testBurner()->overlays(project({track}), store(), canvas);
        auto const image = overlays.at(0).picture->draw();
        return image->y + image->height / 2;
    };
    for (auto const& [position, offset, middle] : {std::tuple{CaptionPosition::top, 0.2, 91},
                                                   {CaptionPosition::top, 0.5, 91},
                                                   {CaptionPosition::center, 0.2, 320},
                                                   {CaptionPosition::center, 0.5, 320},
                                                   {CaptionPosition::bottom, 0.2, 498},
                                                   {CaptionPosition::bottom, 0.5, 306},
                                                   {CaptionPosition::bottom, 7.0, 36}})
        EXPECT_NEAR(middleOf(position, offset), middle, 6) << offset;
}

TEST(Burner, NamesOfPlaceholdersFitThePicture)
{
    std::string wide, chinese;
    for (int n = 0; n < 300; ++n) {
        wide += n % 9 < 8 ? "W" : "\n";
        chinese += "東";
    }
    for (std::string const& name :
         {std::string("Coffee"), wide, chinese, wide.substr(0, 60), std::string(300, 'W')}) {
        Project piece = project({videoTrack({placeholder(name, 0, 1)})});
        piece.aspect = AspectPreset::landscape;
        PixelSize const size = canvasWithWidth(piece.aspect, 640);
        auto const overlays = testBurner()->overlays(piece, store(), size);
        ASSERT_EQ(overlays.size(), 2U);
        auto const image = overlays[1].picture->draw();
        EXPECT_GT(image->width, 100);
        EXPECT_GE(image->y, size.height / 2 - 4);
        EXPECT_LT(image->y + image->height, size.height - 10) << name;
    }
}

TEST(Burner, NamesPlaceholdersWhileTheirPlateIsSeen)
{
    Clip inset = clip(camera, 3, 1);
    inset.transform = {.scale = 0.5, .offsetY = -0.35};
    Track hidden = videoTrack({clip(portrait, 0, 9)});
    hidden.isHidden = true;
    Project const piece = project({
        hidden,
        // Something unloaded is not drawn, and an inset near the top leaves the name free.
        videoTrack({clip(portrait, 1, 1), clip(unloaded, 2, 1), inset, placeholder("Upper", 5, 1)}),
        videoTrack({placeholder("Lower", 0, 6)}),
    });
    std::vector<PlaceholderPlate> const expected = {
        {5, 6, "Upper"}, {0, 1, "Lower"}, {2, 5, "Lower"}};
    EXPECT_EQ(CaptionBurner::placeholderPlates(piece, store()), expected);
}

class BurnedIn : public MadeMedia {};

TEST_F(BurnedIn, FramesAndExportsShowTheSame)
{
    auto const file = made("-f lavfi -i \"color=0x607080:s=360x640:r=30:d=2\" -vf "
                           "scale=out_color_matrix=bt709,format=yuv420p -c:v libx264 -preset "
                           "ultrafast -qp 8 -colorspace bt709",
                           "grey.mp4");
    Clip upper = text("Title 😀", 0.5, 1);
    upper.text->edit().y = 0.3;
    Project const piece =
        project({textTrack({upper}), textTrack({text("Below", 0, 2, {0, 1, 0, 1})}),
                 captions({bar(0, 1, "three small things"), bar(1, 2, "more")}),
                 videoTrack({clip(loaded(file), 0, 2)})});
    auto const movie = folder / "out.mp4";
    Exporter(piece, assets, burner, {.file = movie, .height = 640}).run();
    Project exported = project({videoTrack({clip(loaded(movie), 0, 2)})});
    StillFrames stills(burner, 4);
    for (double const time : {0.1, 0.5, 1.0, 1.4, 1.6}) {
        RGBImage const frame = stills.image(piece, assets, time, 360);
        RGBImage const decoded = stills.image(exported, assets, time, 360);
        ASSERT_EQ(frame.pixels.size(), decoded.pixels.size());
        double difference = 0;
        int drawn = 0;
        for (std::size_t n = 0; n < frame.pixels.size(); ++n) {
            difference += std::abs(frame.pixels[n] - decoded.pixels[n]);
            drawn += std::abs(frame.pixels[n] - frame.pixels[n % 3]) > 60;
        }
        EXPECT_LE(difference / double(frame.pixels.size()), 2) << time;
        EXPECT_GT(drawn, 3000) << time;
    }
    // The first track covers the second: red, not green, where both are.
    auto const covering =
        project({textTrack({text("MMMMM", 0, 2)}), textTrack({text("MMMMM", 0, 2, {0, 1, 0, 1})}),
                 videoTrack({clip(loaded(file), 0, 2)})});
    RGBImage const image = stills.image(covering, assets, 1, 360);
    std::uint8_t const* const edge = image.row(320) + 3 * 120;
    EXPECT_GT(edge[0], 200);
    EXPECT_LT(edge[1], 60);
}

TEST_F(BurnedIn, AFramePaysForItsOwnTextsOnly)
{
    std::vector<CaptionBar> bars;
    for (int n = 0; n < 2000; ++n)
        bars.push_back(bar(n * 0.5, n * 0.5 + 0.5, "Bar " + std::to_string(n)));
    Project const piece = project({captions(bars), videoTrack({placeholder("", 0, 1000)})});
    EXPECT_EQ(burner->overlays(piece, assets, canvas, TimeRange{500.2, 500.2}).size(), 2u);
    auto const overlays = burner->overlays(piece, assets, canvas);
    EXPECT_EQ(overlays.size(), 2001u);
    auto const built = CompositionBuilder::build(piece, assets, {canvas, 30}, overlays);
    EXPECT_EQ(built.video.instructions.at(0).overlays.size(), 2001u);
    EXPECT_NE(StillFrames(burner).image(piece, assets, 500.2, 360).pixels,
              StillFrames(burner).image(piece, assets, 500.7, 360).pixels);
}

} // namespace framewright
