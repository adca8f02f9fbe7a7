#include "composition/composition_builder.h"

#include "composition/composition_validator.h"
#include "raster/asset_loading.h"
#include "rendering/painted_overlay.h"
#include "rendering/project_making.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace framewright {

namespace {

using Output = CompositionBuilder::Output;
using testing::ElementsAre;

constexpr Output portraitOutput{{1080, 1920}, 30};

void expectNear(Rect const& actual, Rect const& expected, char const* name)
{
    EXPECT_NEAR(actual.x, expected.x, 1e-9) << name;
    EXPECT_NEAR(actual.y, expected.y, 1e-9) << name;
    EXPECT_NEAR(actual.width, expected.width, 1e-9) << name;
    EXPECT_NEAR(actual.height, expected.height, 1e-9) << name;
}

/// The instructions as a line for each: "0-600: 1 2* 3" with * for a black plate, in 600ths.
std::vector<std::string> drawing(VideoComposition const& video)
{
    std::vector<std::string> lines;
    for (CompositorInstruction const& instruction : video.instructions) {
        std::string line = fmt::format("{}-{}:", instruction.timeRange.start.value,
                                       instruction.timeRange.end.value);
        for (Layer const& layer : instruction.layers)
            line += fmt::format(" {}{}", layer.trackID, layer.isBlackPlate ? "*" : "");
        lines.push_back(line);
    }
    return lines;
}

LoadedAsset turned(int quarterTurns, bool isMirrored)
{
    MediaInfo info;
    info.hasVideo = true;
    info.width = 1920;
    info.height = 1080;
    info.orientation = {quarterTurns, isMirrored};
    return loadedAsset("/turned.mp4", info);
}

} // namespace

TEST(Placement, FitsThenScalesThenMoves)
{
    LoadedAsset offAxis = moving(1920, 1080);
    offAxis.preferredTransform = {0, 1, -1, 0, 5000, -7}; // A quarter turn that lands far away.
    struct Case {
        char const* name;
        LoadedAsset asset;
        ClipTransform transform;
        PixelSize size;
        Rect frame;
    };
    for (Case const& c : {
             Case{"landscape fits the width",
                  moving(1920, 1080),
                  {},
                  {1080, 1920},
                  {0, 656.25, 1080, 607.5}},
             Case{"portrait fills", moving(1080, 1920), {}, {1080, 1920}, {0, 0, 1080, 1920}},
             Case{"wide canvas", moving(1080, 1920), {}, {1920, 1080}, {656.25, 0, 607.5, 1080}},
             Case{"scaled about its centre",
                  moving(1080, 1920),
                  {.scale = 2},
                  {1080, 1920},
                  {-540, -960, 2160, 3840}},
             Case{"moved",
                  moving(1080, 1920),
                  {.scale = 0.5, .offsetX = 0.25, .offsetY = -0.1},
                  {1080, 1920},
                  {540, 288, 540, 960}},
             Case{"a quarter turn is upright",
                  turned(1, false),
                  {},
                  {1080, 1920},
                  {0, 0, 1080, 1920}},
             Case{"wherever its transform puts it", offAxis, {}, {1080, 1920}, {0, 0, 1080, 1920}},
             Case{"cropped evenly",
                  moving(1080, 1920),
                  {.cropLeft = 0.1, .cropRight = 0.1, .cropTop = 0.1, .cropBottom = 0.1},
                  {1080, 1920},
                  {108, 192, 864, 1536}},
             Case{"cropped on one side",
                  moving(1080, 1920),
                  {.cropTop = 0.25},
                  {1080, 1920},
                  {0, 480, 1080, 1440}},
             Case{"no video", audioOnly(), {.scale = 3}, {1080, 1920}, {0, 0, 0, 0}},
         }) {
        Placement const placement = CompositionBuilder::placement(c.asset, c.transform, c.size);
        expectNear(placement.frame, c.frame, c.name);
        bool const isCropped = c.transform.cropLeft > 0 || c.transform.cropTop > 0;
        EXPECT_EQ(placement.uncropped, !isCropped) << c.name;
        if (placement.uncropped) {
            EXPECT_EQ(placement.crop, Rect()) << c.name;
        }
        if (c.asset.naturalSize.isEmpty()) {
            EXPECT_EQ(placement, Placement()) << c.name;
            continue;
        }
        // What is visible lands exactly in the frame.
        Rect const whole{0, 0, c.asset.naturalSize.width, c.asset.naturalSize.height};
        expectNear(placement.transform.apply(placement.uncropped ? whole : placement.crop), c.frame,
                   c.name);
    }
}

// `corner` is where the stored top left corner of 300 x 200 is seen; `crop` is what remains of the
// stored 1920 x 1080 when the seen left tenth is cropped.
TEST(Orientation, MirrorsThenTurnsClockwise)
{
    // clang-format off
    struct Case { int quarterTurns; bool isMirrored; Point corner; Rect crop; };
    for (Case const& c : {
             Case{0, false, {0, 0}, {192, 0, 1728, 1080}},
             Case{1, false, {200, 0}, {0, 0, 1920, 972}},
             Case{2, false, {300, 200}, {0, 0, 1728, 1080}},
             Case{3, false, {0, 300}, {0, 108, 1920, 972}},
             Case{0, true, {300, 0}, {0, 0, 1728, 1080}},
             Case{1, true, {200, 300}, {0, 0, 1920, 972}},
             Case{2, true, {0, 200}, {192, 0, 1728, 1080}},
             Case{3, true, {0, 0}, {0, 108, 1920, 972}},
         }) {
        // clang-format on
        std::string const name = fmt::format("{} {}", c.quarterTurns, c.isMirrored);
        auto const transform = uprightTransform({c.quarterTurns, c.isMirrored}, {300, 200});
        EXPECT_EQ(transform.apply(Point{0, 0}), c.corner) << name;
        Rect const shown = c.quarterTurns % 2 ? Rect{0, 0, 200, 300} : Rect{0, 0, 300, 200};
        EXPECT_EQ(transform.apply(Rect{0, 0, 300, 200}), shown) << name;
        auto const placement = CompositionBuilder::placement(turned(c.quarterTurns, c.isMirrored),
                                                             {.cropLeft = 0.1}, {1080, 1920});
        expectNear(placement.crop, c.crop, name.c_str());
    }
}

TEST(LoadedAsset, PhotosAreUprightAlready)
{
    MediaInfo info;
    info.kind = MediaKind::image;
    info.hasVideo = true;
    info.width = 4000;
    info.height = 3000;
    info.orientation = {1, false};
    LoadedAsset const asset = loadedAsset("/p.jpg", info);
    EXPECT_EQ(asset.naturalSize, (Size{3000, 4000}));
    EXPECT_EQ(asset.preferredTransform, AffineTransform());
}

TEST(Instructions, StackWhatIsThereFrontToBack)
{
    Track hidden = videoTrack({clip(portrait, 0, 4)});
    hidden.isHidden = true;
    struct Case {
        char const* name;
        std::vector<Track> tracks;
        std::vector<std::string> drawn;
    };
    for (Case const& c : {
             Case{"nothing", {}, {"0-0: 1*"}},
             Case{"one clip", {videoTrack({clip(camera, 0, 2)})}, {"0-1200: 1 3*"}},
             Case{"a gap", {videoTrack({clip(photo, 1, 1)})}, {"0-600: 2*", "600-1200: 1 2*"}},
             Case{"earlier tracks in front",
                  {videoTrack({clip(photo, 1, 1)}), videoTrack({clip(photo, 0, 3)})},
                  {"0-600: 2 3*", "600-1200: 1 2 3*", "1200-1800: 2 3*"}},
             Case{"a placeholder is black",
                  {videoTrack({clip(Clip::placeholderAssetID, 0, 1)}),
                   videoTrack({clip(photo, 0, 1)})},
                  {"0-600: 3* 2 3*"}},
             Case{"not loaded",
                  {videoTrack({clip(unloaded, 0, 1), clip(photo, 1, 1)}),
                   videoTrack({clip(photo, 0, 2)})},
                  {"0-600: 2 3*", "600-1200: 1 2 3*"}},
             Case{"hidden",
                  {hidden, videoTrack({clip(photo, 1, 1)})},
                  {"0-600: 4*", "600-1200: 3 4*", "1200-2400: 4*"}},
             Case{"cuts that nearly meet",
                  {videoTrack({clip(photo, 0, 1), clip(photo, 1.0004, 1)})},
                  {"0-600: 1 2*", "600-1200: 1 2*"}},
             Case{"cuts that don't",
                  {videoTrack({clip(photo, 0, 1), clip(photo, 1.004, 0.996)})},
                  {"0-600: 1 2*", "600-602: 2*", "602-1200: 1 2*"}},
             Case{"a cut next to the end",
                  {videoTrack({clip(photo, 0, 1)}), videoTrack({clip(photo, 0, 0.9996)})},
                  {"0-600: 1 2 3*"}},
             Case{"audio never lengthens the video",
                  {videoTrack({clip(photo, 0, 1)}), audioTrack({clip(music, 0, 9)})},
                  {"0-600: 1 3*"}},
             Case{"overlapping clips: the first one",
                  {videoTrack({clip(photo, 0, 3), clip(camera, 1, 1)})},
                  {"0-600: 1 3*", "600-1200: 1 3*", "1200-1800: 1 3*"}},
         }) {
        BuiltComposition const built =
            CompositionBuilder::build(project(c.tracks), store(), portraitOutput);
        EXPECT_EQ(drawing(built.video), c.drawn) << c.name;
        EXPECT_EQ(CompositionValidator::problem(built), std::nullopt) << c.name;
    }
}

TEST(Instructions, TracksOpacityIsRoundedOnlyAtTheTop)
{
    struct Case {
        double opacity;
        float drawn;
    };
    for (Case const& c : {Case{0.9995, 1}, Case{0.999, 1}, Case{0.9989, 0.9989f}, Case{0, 0},
                          Case{-1, 0}, Case{2, 1}}) {
        Track faded = videoTrack({clip(photo, 0, 1)});
        faded.opacity = c.opacity;
        auto const built = CompositionBuilder::build(project({faded}), store(), portraitOutput);
        ASSERT_EQ(built.video.instructions[0].layers.size(), 2u);
        EXPECT_EQ(built.video.instructions[0].layers[0].opacity, c.drawn) << c.opacity;
        EXPECT_EQ(built.video.instructions[0].layers[1].opacity, 1) << c.opacity;
    }
}

TEST(Instructions, FillerCoversEveryCanvasAndEveryInstant)
{
    Project timeline = project({videoTrack({clip(unloaded, 0, 130)})});
    for (PixelSize const size : {PixelSize{1080, 1920}, {1920, 1080}, {1080, 1080}, {1080, 1350}}) {
        auto const built = CompositionBuilder::build(timeline, store(), {size, 30});
        Rect const frame = built.video.instructions.at(0).layers.at(0).placement.frame;
        EXPECT_LE(frame.x, 1e-9);
        EXPECT_LE(frame.y, 1e-9);
        EXPECT_GE(frame.right(), size.width - 1e-9);
        EXPECT_GE(frame.bottom(), size.height - 1e-9);
        std::vector<std::int64_t> lengths;
        for (auto const& segment : built.track(*built.fillerTrack)->segments)
            lengths.push_back(segment.timeRange.end.value - segment.timeRange.start.value);
        EXPECT_THAT(lengths, ElementsAre(36000, 36000, 6000));
    }
    AssetStore noFiller = store();
    noFiller.filler.reset();
    auto const built = CompositionBuilder::build(timeline, noFiller, portraitOutput);
    EXPECT_EQ(drawing(built.video), std::vector<std::string>{"0-78000:"});
    EXPECT_FALSE(built.fillerTrack);
}

TEST(CompositionTracks, PlayTheLoadedClipsInTimeOrder)
{
    Project const timeline = project({
        videoTrack({clip(camera, 2, 1, 5), clip(unloaded, 1, 1), clip(photo, 0, 1)}),
        audioTrack({clip(music, 0.5, 2, 0.25)}),
        track(TrackKind::text, "Text", {clip(Clip::textAssetID, 0, 1)}),
        audioTrack({clip(unloaded, 0, 1)}),
    });
    auto const built = CompositionBuilder::build(timeline, store(), portraitOutput);
    ASSERT_EQ(built.tracks.size(), 4u); // Picture, its sound, music, filler.
    EXPECT_EQ(built.videoTrackIDs, (std::map<Id, CompositionTrackID>{{timeline.tracks[0].id, 1}}));
    EXPECT_EQ(built.audioTrackIDs, (std::map<Id, CompositionTrackID>{{timeline.tracks[0].id, 2},
                                                                     {timeline.tracks[1].id, 3}}));
    EXPECT_EQ(built.fillerTrack, 4);
    EXPECT_EQ(built.duration, 3);
    EXPECT_EQ(built.audioDuration, 2.5);

    auto const& video = built.tracks[0].segments;
    ASSERT_EQ(video.size(), 2u);
    EXPECT_EQ(video[0].source, CompositionSegment::Source::still);
    EXPECT_EQ(video[0].name, "clip 1 on Video");
    EXPECT_EQ(video[1].name, "clip 3 on Video");
    EXPECT_EQ(video[1].file, "/footage.mp4");
    EXPECT_EQ(video[1].timeRange, (MediaTimeRange{{1200}, {1800}}));
    EXPECT_EQ(video[1].sourceStart, 5);
    EXPECT_EQ(built.tracks[1].segments.size(), 1u); // The photo is silent.
    EXPECT_EQ(built.tracks[2].segments.at(0).sourceStart, 0.25);
}

TEST(CompositionTracks, RoundingNeverShiftsThePictureAgainstTheTimeline)
{
    double const start = 1 / 29.97, in = 1001 / 30000.0 * 7;
    Project const timeline = project({videoTrack({clip(camera, start, 1, in)})});
    auto const built = CompositionBuilder::build(timeline, store(), portraitOutput);
    CompositionSegment const& segment = built.tracks[0].segments.at(0);
    EXPECT_EQ(segment.timeRange.start.value, 20);
    EXPECT_NEAR(segment.sourceTimeAt(start + 0.5), in + 0.5, 1e-12);
}

TEST(Instructions, RandomProjectsAreCoveredInOrder)
{
    std::mt19937 random(7);
    auto const number = [&](double most) {
        return std::uniform_real_distribution(0.0, most)(random);
    };
    Id const assets[] = {camera, portrait, photo, unloaded, Clip::placeholderAssetID, hdrFootage};
    for (int round = 0; round < 300; ++round) {
        std::vector<Track> tracks;
        for (int t = int(number(4)); t >= 0; --t) {
            std::vector<Clip> clips;
            double end = 0;
            for (int n = int(number(8)); n > 0; --n) {
                double const gap = number(1) < 0.5   ? 0
                                   : number(1) < 0.5 ? number(0.002)
                                                     : number(3);
                clips.push_back(clip(assets[std::size_t(number(6))], end + gap,
                                     number(1) < 0.2 ? 0.1 : 0.1 + number(4), number(5)));
                end = clips.back().end();
            }
            tracks.push_back(videoTrack(clips));
            tracks.back().isHidden = number(1) < 0.2;
        }
        Project const timeline = project(tracks);
        auto const built = CompositionBuilder::build(timeline, store(), portraitOutput);
        ASSERT_EQ(CompositionValidator::problem(built), std::nullopt) << "round " << round;
        EXPECT_EQ(built, CompositionBuilder::build(timeline, store(), portraitOutput));
        for (CompositorInstruction const& instruction : built.video.instructions) {
            double const middle =
                (instruction.timeRange.start.seconds() + instruction.timeRange.end.seconds()) / 2;
            std::vector<CompositionTrackID> expected;
            for (Track const& track : tracks) {
                auto const found = std::ranges::find_if(
                    *track.clips, [&](Clip const& one) { return one.covers(middle); });
                if (track.isHidden || found == track.clips->end() || found->assetID == unloaded)
                    continue;
                expected.push_back(found->isPlaceholder() ? *built.fillerTrack
                                                          : built.videoTrackIDs.at(track.id));
            }
            expected.push_back(*built.fillerTrack);
            // Slivers of a tick or two may belong to either side.
            if (instruction.timeRange.end.value - instruction.timeRange.start.value > 2) {
                EXPECT_EQ(instruction.requiredSourceTrackIDs(), expected)
                    << "round " << round << " at " << middle;
            }
        }
    }
}

TEST(Instructions, MayEndElsewhere)
{
    Project const timeline =
        project({videoTrack({clip(photo, 0, 1), clip(photo, 1, 1), clip(photo, 2, 1)})});
    auto const endingAt = [&](double end) {
        return drawing(CompositionBuilder::video(timeline, store(), {{timeline.tracks[0].id, 1}}, 2,
                                                 3, portraitOutput, {}, end));
    };
    EXPECT_THAT(endingAt(1.5), ElementsAre("0-600: 1 2*", "600-900: 1 2*"));
    EXPECT_THAT(endingAt(2), ElementsAre("0-600: 1 2*", "600-1200: 1 2*"));
    EXPECT_THAT(endingAt(4), ElementsAre("0-600: 1 2*", "600-1200: 1 2*", "1200-2400: 1 2*"));
}

TEST(Instructions, CarryTheOverlaysOfTheirTime)
{
    Project const timeline = project({videoTrack({clip(photo, 0, 1), clip(photo, 1, 1)})});
    Overlay const overlay{{{300}, {600}}, std::make_shared<PaintedOverlay>(PlacedImage())};
    auto const counts = [&](Output const& output) {
        std::vector<std::size_t> found;
        auto const built =
            CompositionBuilder::build(timeline, store(), output, std::span(&overlay, 1));
        for (auto const& instruction : built.video.instructions)
            found.push_back(instruction.overlays.size());
        return found;
    };
    EXPECT_THAT(counts(portraitOutput), ElementsAre(1u, 0u)); // It ends where the second begins.
    EXPECT_THAT(counts({{1080, 1920}, 30, false}), ElementsAre(0u, 0u));
}

TEST(HDR, OneClipIsEnough)
{
    Project const hdr =
        project({videoTrack({clip(photo, 0, 1)}), videoTrack({clip(hdrFootage, 0, 1)})});
    Project const standard =
        project({videoTrack({clip(photo, 0, 1)}), audioTrack({clip(hdrFootage, 0, 1)})});
    EXPECT_TRUE(CompositionBuilder::isHDR(hdr, store()));
    EXPECT_FALSE(CompositionBuilder::isHDR(standard, store()));
    EXPECT_FALSE(CompositionBuilder::isHDR({}, store()));
    Output output = portraitOutput;
    EXPECT_EQ(CompositionBuilder::build(hdr, store(), output).video.colors, ColorTags::hlg());
    output.dynamicRange = DynamicRange::standard;
    EXPECT_EQ(CompositionBuilder::build(hdr, store(), output).video.colors, ColorTags::bt709());
}

TEST(ExportSize, IsTheFootagesEvenUpToALimit)
{
    // clang-format off
    struct Case { AspectPreset aspect; Size decoded; PixelSize size; };
    for (Case const& c : {
             Case{AspectPreset::portrait, {640, 360}, {1080, 1920}},
             Case{AspectPreset::portrait, {1920, 1080}, {1080, 1920}},
             Case{AspectPreset::portrait, {3840, 2160}, {2160, 3840}},
             Case{AspectPreset::portrait, {7680, 4320}, {2160, 3840}},
             Case{AspectPreset::portrait, {2704, 1520}, {1522, 2704}},
             Case{AspectPreset::landscape, {3840, 2160}, {3840, 2160}},
             Case{AspectPreset::landscape, {1080, 1922}, {1922, 1082}},
             Case{AspectPreset::square, {100, 2001}, {2002, 2002}},
             Case{AspectPreset::fourFive, {100, 100}, {1080, 1350}},
             Case{AspectPreset::fourFive, {2160, 3840}, {3072, 3840}},
         }) {
        // clang-format on
        AssetStore assets;
        assets.insert(camera, moving(c.decoded.width, c.decoded.height));
        Project timeline = project({videoTrack({clip(camera, 0, 1), clip(unloaded, 1, 1)})});
        timeline.aspect = c.aspect;
        EXPECT_EQ(CompositionBuilder::exportRenderSize(timeline, assets), c.size)
            << c.decoded.width << " " << ratioName(c.aspect);
    }
}

TEST(ExportRate, IsThatOfMostOfTheFootage)
{
    struct Part {
        double rate, seconds;
    };
    // clang-format off
    struct Case { char const* name; std::vector<Part> parts; int rate; };
    for (Case const& c : {
             Case{"nothing", {}, 30},
             Case{"film", {{23.976, 1}}, 24},
             Case{"NTSC", {{29.97, 1}}, 30},
             Case{"phone", {{59.4, 1}}, 60},
             Case{"slow motion", {{240, 1}}, 60},
             Case{"PAL", {{25, 1}}, 25},
             Case{"screen", {{12.5, 1}}, 24},
             Case{"most wins", {{25, 3}, {50, 2}, {25, 1}, {60, 3.9}}, 25},
             Case{"of two the higher", {{25, 2}, {50, 2}}, 50},
         }) {
        // clang-format on
        AssetStore assets = store();
        std::vector<Clip> clips = {clip(photo, 100, 60)};
        for (Part const& part : c.parts) {
            Id const id = Id::random();
            assets.insert(id, moving(1920, 1080, part.rate));
            clips.push_back(clip(id, double(clips.size()) * 10, part.seconds));
        }
        EXPECT_EQ(exportFrameRate(project({videoTrack(clips)}), assets), c.rate) << c.name;
    }
}

TEST(Validator, NamesWhatIsWrong)
{
    Project const timeline = project({videoTrack({clip(photo, 0, 1), clip(photo, 1, 1)})});
    auto const valid = CompositionBuilder::build(timeline, store(), portraitOutput);
    // clang-format off
    struct Case { char const* problem; void (*change)(BuiltComposition&); };
    for (Case const& c : {
             Case{"instruction time range 1.050-2.000", [](auto& b) { b.video.instructions[1].timeRange.start.value = 630; }},
             Case{"instruction time range 0.000-1.000", [](auto& b) { b.video.instructions.pop_back(); }},
             Case{"instruction time range 0.000-2.000", [](auto& b) { b.video.instructions.clear(); }},
             Case{"track 9 in instruction 0.000-1.000", [](auto& b) { b.video.instructions[0].layers[0].trackID = 9; }},
             Case{"track 1 in instruction 1.000-2.000", [](auto& b) { b.tracks[0].segments.pop_back(); }},
         }) {
        // clang-format on
        BuiltComposition broken = valid;
        c.change(broken);
        EXPECT_EQ(CompositionValidator::problem(broken),
                  std::string("Composition invalid: ") + c.problem);
    }
}

} // namespace framewright
