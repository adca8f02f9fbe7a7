#include "composition/composition_builder.h"

#include "rendering/project_making.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace framewright {

namespace {

using testing::ElementsAre;
using Builder = CompositionBuilder;

Track ducking(std::vector<Clip> clips)
{
    Track made = audioTrack(std::move(clips));
    made.ducks = true;
    return made;
}

Project voiceOverMusic(std::vector<Clip> voice)
{
    return project({videoTrack({clip(camera, 0, 10)}), audioTrack(std::move(voice)),
                    ducking({clip(music, 0, 10)})});
}

} // namespace

TEST(DuckRanges, AreWhereNonDuckingAudioPlays)
{
    // clang-format off
    struct Case { char const* name; Project timeline; std::vector<TimeRange> ranges; };
    auto const changed = [](Project timeline, auto const& change) {
        change(timeline.tracks[1]);
        return timeline;
    };
    Project const voice = voiceOverMusic({clip(music, 2, 3)});
    Clip silent = clip(music, 2, 3);
    silent.volume = 0;
    for (Case const& c : {
             Case{"a voice", voice, {{2, 5}}},
             Case{"0.4 s apart are one", voiceOverMusic({clip(music, 2, 1), clip(music, 3.4, 1)}), {{2, 4.4}}},
             Case{"0.5 s apart are one", voiceOverMusic({clip(music, 2, 1), clip(music, 3.5, 1)}), {{2, 4.5}}},
             Case{"0.6 s apart are two", voiceOverMusic({clip(music, 2, 1), clip(music, 3.6, 1)}), {{2, 3}, {3.6, 4.6}}},
             Case{"one within another", voiceOverMusic({clip(music, 2, 4), clip(music, 3, 1)}), {{2, 6}}},
             Case{"muted", changed(voice, [](Track& t) { t.isMuted = true; }), {}},
             Case{"turned down", changed(voice, [](Track& t) { t.volume = 0; }), {}},
             Case{"itself ducking", changed(voice, [](Track& t) { t.ducks = true; }), {}},
             Case{"a silent clip", voiceOverMusic({silent}), {}},
             Case{"solo", changed(voice, [](Track& t) { t.isSolo = true; }), {{2, 5}}},
         })
        // clang-format on
        EXPECT_EQ(Builder::duckTriggerRanges(c.timeline), c.ranges) << c.name;

    Project otherSolo = voice;
    otherSolo.tracks[0].isSolo = true;
    EXPECT_TRUE(Builder::duckTriggerRanges(otherSolo).empty());
}

TEST(Envelope, DropsToAQuarterWithRampsOutside)
{
    // clang-format off
    struct Case { char const* name; double start, end; std::vector<TimeRange> ranges; std::vector<VolumePoint> points; };
    for (Case const& c : {
             Case{"no voice", 0, 10, {}, {{0, 0.8f}, {10, 0.8f}}},
             Case{"a voice in the middle", 0, 10, {{2, 5}}, {{0, 0.8f}, {1.75, 0.8f}, {2, 0.2f}, {5, 0.2f}, {5.25, 0.8f}, {10, 0.8f}}},
             Case{"over the start", 3, 10, {{2, 5}}, {{3, 0.2f}, {5, 0.2f}, {5.25, 0.8f}, {10, 0.8f}}},
             Case{"over the end", 0, 4, {{2, 5}}, {{0, 0.8f}, {1.75, 0.8f}, {2, 0.2f}, {4, 0.2f}}},
             Case{"from the very start", 2, 10, {{2, 5}}, {{2, 0.2f}, {5, 0.2f}, {5.25, 0.8f}, {10, 0.8f}}},
             Case{"starting in the ramp", 1.875, 10, {{2, 5}}, {{1.875, 0.5f}, {2, 0.2f}, {5, 0.2f}, {5.25, 0.8f}, {10, 0.8f}}},
             Case{"ending in the ramp", 0, 5.125, {{2, 5}}, {{0, 0.8f}, {1.75, 0.8f}, {2, 0.2f}, {5, 0.2f}, {5.125, 0.5f}}},
             Case{"elsewhere", 6, 9, {{2, 5}}, {{6, 0.8f}, {9, 0.8f}}},
         }) {
        // clang-format on
        auto const points =
            Builder::envelope(clip(music, c.start, c.end - c.start), 0.8f, c.ranges);
        ASSERT_EQ(points.size(), c.points.size()) << c.name;
        for (std::size_t n = 0; n < points.size(); ++n) {
            EXPECT_DOUBLE_EQ(points[n].time, c.points[n].time) << c.name;
            EXPECT_FLOAT_EQ(points[n].volume, c.points[n].volume)
                << c.name << " at " << points[n].time;
        }
    }
}

TEST(AudioMix, LevelsFollowMuteSoloAndVolumes)
{
    // clang-format off
    struct Case { char const* name; float trackVolume, clipVolume; bool isMuted, isSolo, otherIsSolo; float level; };
    for (Case const& c : {
             Case{"unity", 1, 1, false, false, false, 1},
             Case{"both count", 0.5f, 1.5f, false, false, false, 0.75f},
             Case{"muted", 1, 1, true, false, false, 0},
             Case{"solo", 1, 1, false, true, false, 1},
             Case{"another is solo", 1, 1, false, false, true, 0},
             Case{"both solo", 1, 1, false, true, true, 1},
             Case{"muted and solo", 1, 1, true, true, false, 0},
         }) {
        // clang-format on
        Clip sounding = clip(music, 0, 2);
        sounding.volume = c.clipVolume;
        Project timeline = project({audioTrack({sounding}), audioTrack({clip(music, 0, 2)})});
        timeline.tracks[0].volume = c.trackVolume;
        timeline.tracks[0].isMuted = c.isMuted;
        timeline.tracks[0].isSolo = c.isSolo;
        timeline.tracks[1].isSolo = c.otherIsSolo;
        auto const mix = Builder::audioMix(timeline, {{timeline.tracks[0].id, 5}});
        ASSERT_EQ(mix.tracks.size(), 1u) << c.name;
        EXPECT_THAT(mix.tracks.at(5), ElementsAre(AudioMix::ClipLevels{
                                          sounding.id, {{{{0}, {1200}}, c.level, c.level}}}))
            << c.name;
    }
}

TEST(AudioMix, OnlyAudioTracksThatAreHeardDuck)
{
    Project timeline = voiceOverMusic({clip(music, 2, 3)});
    timeline.tracks[0].ducks = true;
    auto const mix =
        Builder::audioMix(timeline, {{timeline.tracks[0].id, 1}, {timeline.tracks[2].id, 2}});
    EXPECT_THAT(mix.tracks.at(1).at(0).steps, ElementsAre(AudioMix::Step{{{0}, {6000}}, 1, 1}));
    EXPECT_THAT(mix.tracks.at(2).at(0).steps,
                ElementsAre(AudioMix::Step{{{0}, {1050}}, 1, 1},
                            AudioMix::Step{{{1050}, {1200}}, 1, 0.25f},
                            AudioMix::Step{{{1200}, {3000}}, 0.25f, 0.25f},
                            AudioMix::Step{{{3000}, {3150}}, 0.25f, 1},
                            AudioMix::Step{{{3150}, {6000}}, 1, 1}));
}

TEST(AudioMix, GainsAreExactToTheSample)
{
    AudioMix::ClipLevels levels;
    levels.steps = {
        {{{600}, {1200}}, 0.5f, 0.5f}, {{{1200}, {1230}}, 0.5f, 1.5f}, {{{2400}, {3000}}, 0, 0}};
    std::vector<float> gains(4 * 48000);
    levels.gains(0, gains);
    // clang-format off
    struct Case { int sample; float gain; };
    for (Case const& c : {
             Case{0, 0.5f}, Case{48000, 0.5f}, Case{95999, 0.5f}, Case{96000, 0.5f},
             Case{97200, 1.0f}, Case{96000 + 2399, float(0.5 + 2399.0 / 2400)}, Case{98400, 1.5f},
             Case{191999, 1.5f},
         })
        // clang-format on
        EXPECT_FLOAT_EQ(gains[std::size_t(c.sample)], c.gain) << c.sample;

    std::vector<float> piecewise(gains.size());
    for (std::size_t from = 0; from < gains.size(); from += 777)
        levels.gains(
            std::int64_t(from),
            std::span(piecewise).subspan(from, std::min<std::size_t>(777, gains.size() - from)));
    EXPECT_EQ(piecewise, gains);

    AudioMix::ClipLevels().gains(0, gains);
    EXPECT_EQ(gains, std::vector<float>(gains.size(), 1.0f));
}

} // namespace framewright
