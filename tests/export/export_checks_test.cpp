#include "export/internal/export_checks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace framewright {

namespace {

using testing::HasSubstr;

MediaInfo written(bool isHDR)
{
    MediaInfo info;
    info.hasVideo = info.hasAudio = true;
    info.width = 1080;
    info.height = 1920;
    info.duration = 10;
    info.videoCodec = isHDR ? "hevc" : "h264";
    info.videoTag = isHDR ? "hvc1" : "avc1";
    info.colors = isHDR ? ColorTags::hlg() : ColorTags::bt709();
    info.audioCodec = "aac";
    return info;
}

} // namespace

TEST(ExportChecks, TellAWrongMovie)
{
    struct Case {
        std::function<void(MediaInfo&)> spoil;
        char const* says; ///< Empty when it is right.
    };
    for (bool const isHDR : {false, true}) {
        ExpectedMovie const expected{{1080, 1920}, 30, 10, isHDR};
        for (Case const& c : {
                 Case{[](MediaInfo&) {}, ""},
                 Case{[](MediaInfo& info) { info.duration = 10.03; }, ""},
                 Case{[](MediaInfo& info) { info.duration = 9.96; }, "lasts 9.960 s"},
                 Case{[](MediaInfo& info) { info.duration = 10.04; }, "instead of 10.000 s"},
                 Case{[](MediaInfo& info) { info.height = 1918; }, "1080 × 1918 instead of"},
                 Case{[](MediaInfo& info) { info.hasVideo = false; }, "no picture"},
                 Case{[](MediaInfo& info) { info.videoCodec = "av1"; }, "picture is av1"},
                 Case{[](MediaInfo& info) { info.videoTag = "hev1"; }, "(hev1) instead of"},
                 Case{[](MediaInfo& info) { info.colors.transfer = 16; }, "colours are marked"},
                 Case{[](MediaInfo& info) { info.colors.isFullRange = true; }, "colours"},
                 Case{[](MediaInfo& info) { info.hasAudio = false; }, "sound is missing"},
             }) {
            MediaInfo info = written(isHDR);
            c.spoil(info);
            auto const problem = movieProblem(info, expected);
            EXPECT_EQ(problem.has_value(), *c.says != 0) << problem.value_or(c.says);
            EXPECT_THAT(problem.value_or(""), HasSubstr(c.says));
        }
    }
}

TEST(ExportChecks, WatchOnlyTheFilesThatTakePart)
{
    // A letter is a clip of a second and its file; dots are gaps. Small letters are silent, or
    // hidden.
    BuiltComposition composition;
    auto const second = [](std::size_t n) {
        return MediaTimeRange{MediaTime::fromSeconds(double(n)),
                              MediaTime::fromSeconds(double(n + 1))};
    };
    auto const add = [&](CompositionTrack::Kind kind, std::string const& clips) {
        CompositionTrack track{CompositionTrackID(composition.tracks.size() + 1), kind, {}};
        composition.video.instructions.resize(clips.size());
        for (std::size_t n = 0; n < clips.size(); ++n) {
            CompositorInstruction& instruction = composition.video.instructions[n];
            instruction.timeRange = second(n);
            if (clips[n] == '.')
                continue;
            CompositionSegment segment;
            segment.file = std::string(1, clips[n]);
            segment.clipID = Id::random();
            segment.timeRange = second(n);
            track.segments.push_back(segment);
            bool const isPlayed = std::isupper(clips[n]);
            if (kind == CompositionTrack::Kind::audio) {
                float const volume = isPlayed ? 1.0f : 0.0f;
                composition.audioMix.tracks[track.id].push_back(
                    {segment.clipID, {{segment.timeRange, 0, volume}}});
            } else if (isPlayed) {
                instruction.layers.emplace_back();
                instruction.layers.back().trackID = track.id;
                instruction.layers.back().clipID = segment.clipID;
            }
        }
        composition.tracks.push_back(track);
    };
    add(CompositionTrack::Kind::video, "ABC");
    add(CompositionTrack::Kind::video, "dEf");
    add(CompositionTrack::Kind::audio, "ABG");
    add(CompositionTrack::Kind::audio, "hi.");

    struct Case {
        TimeRange span;
        std::string files;
    };
    for (Case const& c : {
             Case{{0, 1}, "A"},
             Case{{0, 1.5}, "ABE"},
             Case{{2, 3}, "CG"},
             Case{{0, 3}, "ABCEG"},
         }) {
        std::string files;
        for (FileIdentity const& source : sourcesOf(composition, c.span))
            files += source.file.string();
        EXPECT_EQ(files, c.files);
    }
}

TEST(ExportChecks, SayHowMuchRoomIsNeeded)
{
    EXPECT_EQ(spaceProblem("/films", 5'000'000, 5'000'000), std::nullopt);
    EXPECT_EQ(spaceProblem("/films", 1'234'000'000, 45'600'000),
              "The export needs about 1.3 GB, but only 46 MB are free in /films. Free some space "
              "or export somewhere else.");

    using enum ExportSettings::Quality;
    ExpectedMovie const movie{{1080, 1920}, 30, 60, false, full};
    auto const bytes = [&](auto change) {
        ExpectedMovie changed = movie;
        change(changed);
        return double(estimatedBytes(changed));
    };
    double const usual = double(estimatedBytes(movie));
    EXPECT_GT(usual, 30e6); // 4 to 12 Mbit/s, as such films are.
    EXPECT_LT(usual, 90e6);
    EXPECT_GT(bytes([](auto& m) { m.duration = 600; }), 9 * usual);
    EXPECT_GT(bytes([](auto& m) { m.size = {2160, 3840}; }), 3.5 * usual);
    EXPECT_LT(bytes([](auto& m) { m.quality = preview; }), usual);
    EXPECT_LT(bytes([](auto& m) { m.isHDR = true; }), usual);
}

} // namespace framewright
