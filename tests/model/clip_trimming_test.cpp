#include "model/clip_placing.h"
#include "model/clip_trimming.h"
#include "model/time_rules.h"

#include "model/sketch.h"

#include <gtest/gtest.h>

#include <limits>

namespace framewright {

TEST(Split, CutsWithATenthOfASecondToSpare)
{
    struct Case {
        double time;
        bool isCut;
    };
    for (Project const& project : {sketch("..AAAABB"), magnetic(sketch("CCAAAABB"))}) {
        for (Case const& c :
             {Case{2, false}, Case{2.09, false}, Case{2.1, true}, Case{4, true}, Case{5.9, true},
              Case{5.91, false}, Case{6, false}, Case{1, false}, Case{7, false}, Case{-1, false}}) {
            auto const cut = split(project, id("A"), std::nullopt, c.time, id("X"));
            ASSERT_EQ(bool(cut), c.isCut) << c.time;
            if (!cut) {
                EXPECT_EQ(cut.refusal(), (Refusal{Reason::splitOutsideClip, Subject::clip(id("A")),
                                                  TimeRange{2, 6}, c.time}));
                continue;
            }
            Clip const& first = find(cut->project, "A");
            Clip const& second = find(cut->project, "X");
            EXPECT_EQ(first.timelineStart, 2);
            EXPECT_NEAR(first.end(), c.time, 1e-9);
            EXPECT_NEAR(second.timelineStart, c.time, 1e-9);
            EXPECT_NEAR(second.end(), 6, 1e-9);
            EXPECT_EQ(first.sourceStart, 10);
            EXPECT_EQ(first.sourceEnd, second.sourceStart);
            EXPECT_EQ(second.sourceEnd, 14);
            EXPECT_EQ(find(cut->project, "B"), find(project, "B"));
        }
    }
}

TEST(Split, IsExactWhereBinaryFractionsAreNot)
{
    // 0.3 - 0.2 is a little less than 0.1.
    Project project = sketch("");
    project = place(project, placeholder("A", 0.6), id("v1"), 0.2)->project;
    EXPECT_TRUE(split(project, id("A"), std::nullopt, 0.3, id("X")));
    EXPECT_TRUE(split(project, id("A"), std::nullopt, 0.7, id("X")));
}

TEST(Split, BothPartsKeepWhatTheClipHad)
{
    Project project = sketch({{"t1", "TTTT"}, {"v1", "pppp"}});
    Clip& slot = project.tracks[1].clips.edit()[0];
    slot.placeholderNote = "pour slowly";
    slot.volume = 0.5f;
    slot.transform.scale = 2;
    auto const cut = split(project, id("p"), std::nullopt, 3, id("X"));
    Clip expected = slot;
    expected.id = id("X");
    expected.timelineStart = 3;
    expected.sourceStart = 3;
    EXPECT_EQ(find(cut->project, "X"), expected);
    auto const text = split(project, id("T"), std::nullopt, 1, id("X"));
    EXPECT_EQ(find(text->project, "X").text, find(project, "T").text);
}

TEST(Split, FallsBackToTheClipUnderTheTime)
{
    Project const project = sketch({{"v1", "AABB"}, {"a1", "CCCC"}});
    EXPECT_EQ(split(project, std::nullopt, id("v1"), 3, id("X"))->firstID, id("B"));
    EXPECT_EQ(split(project, id("A"), id("a1"), 3, id("X"))->firstID, id("C")) << "A is not there";
    EXPECT_EQ(split(project, id("C"), id("v1"), 3, id("X"))->firstID, id("C"));
    EXPECT_EQ(split(project, std::nullopt, std::nullopt, 1, id("X")),
              Expected(Reason::nothingToSplit));
    EXPECT_EQ(split(project, id("Z"), id("v1"), 9, id("X")), Expected(Reason::clipGone));
    for (double const time : {1, 9})
        EXPECT_EQ(split(locked(project), id("A"), std::nullopt, time, id("X")).refusal(),
                  lockedTrack("v1"));
    EXPECT_TRUE(split(locked(project, "a1"), id("A"), id("a1"), 1, id("X")))
        << "A's track is not locked";
}

TEST(TrimClip, OnAFreeTrackNothingElseMoves)
{
    // B plays seconds 10 to 14 of its file.
    // clang-format off
    struct Case { char const* name; Trim trim; double in, out; };
    for (Case const& c : {
             Case{"start later", {.start = 5}, 12, 14},
             Case{"start earlier, to the neighbour", {.start = 1}, 8, 14},
             Case{"end earlier", {.end = 6}, 10, 13},
             Case{"end later, to the neighbour", {.end = 9}, 10, 16},
             Case{"both edges", {.start = 4, .end = 6}, 11, 13},
             Case{"in later", {.in = 11}, 11, 14},
             Case{"in earlier", {.in = 9}, 9, 14},
             Case{"out", {.out = 15}, 10, 15},
             Case{"in and out", {.in = 20, .out = 25}, 20, 25},
             Case{"a new start for a new in", {.start = 5, .in = 10}, 10, 14},
             Case{"in, ending at", {.end = 8, .in = 20}, 20, 25},
             Case{"start, up to out", {.start = 4, .out = 16}, 11, 16},
         }) {
        // clang-format on
        auto const done = trimClip(sketch("A..BBBB..C"), id("B"), c.trim);
        ASSERT_TRUE(done) << c.name;
        Clip const& clip = find(done->project, "B");
        EXPECT_DOUBLE_EQ(clip.timelineStart, c.trim.start.value_or(3)) << c.name;
        EXPECT_DOUBLE_EQ(clip.sourceStart, c.in) << c.name;
        EXPECT_DOUBLE_EQ(clip.sourceEnd, c.out) << c.name;
        EXPECT_EQ(done->start, clip.timelineStart);
        EXPECT_EQ(done->end, clip.end());
        EXPECT_FALSE(done->headTrimmedBy);
        EXPECT_EQ(find(done->project, "C").timelineStart, 9) << c.name;
    }
}

TEST(TrimClip, OnAMagneticTrackLaterClipsFollow)
{
    // clang-format off
    struct Case { char const* name; Trim trim; char const* after; std::optional<double> head; };
    for (Case const& c : {
             Case{"end later", {.end = 7}, "AABBBBBCC", {}},
             Case{"end earlier", {.end = 3}, "AABCC", {}},
             Case{"start later", {.start = 3}, "AABBBCC", 1},
             Case{"start earlier", {.start = 1}, "AABBBBBCC", -1},
             Case{"in later", {.in = 12}, "AABBCC", {}},
             Case{"out later", {.out = 15}, "AABBBBBCC", {}},
             Case{"start and end", {.start = 3, .end = 5}, "AABBCC", 1},
         }) {
        // clang-format on
        auto const done = trimClip(magnetic(sketch("AABBBBCC")), id("B"), c.trim);
        ASSERT_TRUE(done) << c.name;
        EXPECT_EQ(drawing(done->project), c.after) << c.name;
        EXPECT_EQ(done->headTrimmedBy, c.head) << c.name;
        EXPECT_EQ(done->start, 2) << c.name;
    }
}

TEST(TrimClip, RefusalsSayWhatBoundsIt)
{
    Project const free = sketch("A..BBBB..C");
    Project const packed = magnetic(sketch("AABBBB"));
    auto const span = [](char const* clip, TimeRange range) {
        return Refusal{Reason::overlapsNeighbor, Subject::clip(id(clip)), range};
    };
    double const endless = std::numeric_limits<double>::infinity();
    // clang-format off
    struct Case { Project project; char const* clip; Trim trim; Expected refusal; };
    for (Case const& c : {
             Case{free, "B", {}, Reason::noEdgeGiven},
             Case{free, "B", {.end = 5, .out = 12}, Reason::endGivenTwice},
             Case{free, "B", {.end = 3.1}, {}},
             Case{free, "B", {.end = 3.09}, Reason::tooShort},
             Case{free, "B", {.start = 6.91}, Reason::tooShort},
             Case{free, "B", {.in = 14}, Reason::tooShort},
             Case{free, "B", {.end = 2}, Reason::tooShort},
             Case{free, "B", {.end = std::nan("")}, Reason::tooShort},
             Case{free, "B", {.start = std::nan(""), .in = 10}, Reason::startsBeforeZero},
             Case{free, "A", {.start = -0.5}, Reason::startsBeforeZero},
             Case{free, "B", {.start = 0.5}, span("B", {1, 9})},
             Case{free, "B", {.end = 9.1}, span("B", {1, 9})},
             Case{free, "B", {.start = 12, .in = 10}, span("B", {1, 9})},
             Case{free, "C", {.start = 6}, span("C", {7, endless})},
             Case{free, "C", {.out = 100}, {}},
             Case{free, "C", {.out = 100.1}, Reason::pastSourceEnd},
             Case{free, "C", {.in = -0.1, .out = 5}, Reason::pastSourceEnd},
             Case{packed, "B", {.start = -9}, Reason::startsBeforeZero},
             Case{packed, "B", {.in = -1}, Reason::pastSourceEnd},
             Case{packed, "B", {.end = 92.1}, Reason::pastSourceEnd},
             Case{packed, "B", {.end = 92}, {}},
             Case{locked(packed), "B", {.end = 5}, lockedTrack("v1")},
             Case{packed, "Z", {.end = 5}, Reason::clipGone},
         }) {
        // clang-format on
        auto const done = trimClip(c.project, id(c.clip), c.trim);
        EXPECT_EQ(done, c.refusal) << c.clip;
    }
}

TEST(TrimClip, PhotosPlaceholdersAndTextsStretchBothWays)
{
    Clip const photo = clipOf(id("P"), id("face.jpg"), photoLength, 0);
    Project const project = place(sketch(""), photo, id("v1"), 10)->project;
    // clang-format off
    struct Case { Trim trim; double length; Expected refusal; };
    for (Case const& c : {
             Case{{.end = 70}, 60, {}},
             Case{{.end = 70.1}, 0, Reason::photoTooLong},
             Case{{.start = 2}, 11, {}},
             Case{{.start = 2, .end = 62.5}, 0, Reason::photoTooLong},
             Case{{.out = 9}, 9, {}},
             Case{{.in = -1}, 0, beyond(Setting::sourceIn)},
         }) {
        // clang-format on
        auto const done = trimClip(project, id("P"), c.trim);
        ASSERT_EQ(done, c.refusal);
        if (!done)
            continue;
        Clip const& clip = find(done->project, "P");
        EXPECT_DOUBLE_EQ(clip.length(), c.length);
        EXPECT_DOUBLE_EQ(clip.timelineStart, c.trim.start.value_or(10));
        EXPECT_GE(clip.sourceStart, 0);
    }
    Project const texts = sketch({{"t1", "..TT"}});
    auto const earlier = trimClip(texts, id("T"), {.start = 0, .end = 3600});
    EXPECT_EQ(find(earlier->project, "T").length(), 3600);
    EXPECT_EQ(trimClip(texts, id("T"), {.end = 3602.1}).refusal().reason, Reason::textTooLong);
    Project longer = texts;
    longer.track(id("t1"))->clips.edit()[0].sourceEnd = 5000; // By hand.
    EXPECT_TRUE(trimClip(longer, id("T"), {.end = 4900}));
    EXPECT_EQ(trimClip(texts, id("T"), {.end = 2e6}).refusal().reason, Reason::pastTimelineEnd);
}

TEST(TrimClip, AFileThatProbedShortBindsOnlyItsEnd)
{
    Project project = sketch("AAAA");
    project.assets.edit()[id("talk.mov")].duration = 13.5; // A plays 10 to 14.
    EXPECT_TRUE(trimClip(project, id("A"), {.in = 9}));
    EXPECT_TRUE(trimClip(project, id("A"), {.end = 3}));
    EXPECT_EQ(trimClip(project, id("A"), {.end = 5}).refusal(),
              (Refusal{Reason::pastSourceEnd, {}, TimeRange{0, 14}}));
}

TEST(SlipClip, MovesTheSourceRangeOnly)
{
    Project const project = magnetic(sketch("AABBBB"));
    auto const slipped = slipClip(project, id("B"), 96);
    Clip expected = find(project, "B");
    expected.sourceStart = 96;
    expected.sourceEnd = 100;
    EXPECT_EQ(find(*slipped, "B"), expected);
    EXPECT_TRUE(slipClip(project, id("B"), 0));

    Refusal const bounds = {Reason::slipsPastSource, Subject::clip(id("B")), TimeRange{0, 96}, 100};
    EXPECT_EQ(slipClip(project, id("B"), 96.1).refusal(), bounds);
    EXPECT_EQ(slipClip(project, id("B"), -0.1).refusal(), bounds);
    EXPECT_EQ(slipClip(project, id("B"), std::nan("")).refusal(), bounds);
    EXPECT_EQ(slipClip(sketch("pp"), id("p"), 1).refusal().reason, Reason::onlyMediaSlips);
    EXPECT_EQ(slipClip(sketch({{"t1", "T"}}), id("T"), 1).refusal().reason, Reason::onlyMediaSlips);
    EXPECT_EQ(slipClip(locked(project), id("B"), 1).refusal(), lockedTrack("v1"));
}

} // namespace framewright
