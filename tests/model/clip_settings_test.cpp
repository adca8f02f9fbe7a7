#include "model/clip_audio.h"
#include "model/clip_settings.h"
#include "model/time_rules.h"

#include "model/sketch.h"

#include <gtest/gtest.h>

namespace framewright {

namespace {

Project timeline()
{
    return sketch({{"t1", "T"}, {"v1", "AApp"}, {"a1", "SS"}});
}

} // namespace

TEST(ClipSettings, StayWithinTheirLimits)
{
    auto const volume = [](char const* clip, float level) {
        return setClipVolume(timeline(), id(clip), level);
    };
    auto const transform = [](char const* clip, ClipTransform const& to) {
        return setClipTransform(timeline(), id(clip), to);
    };
    // clang-format off
    struct Case { Outcome<Project> done; Expected refusal; };
    for (Case const& c : {
             Case{volume("A", 0), {}},
             Case{volume("S", 1.5f), {}},
             Case{volume("S", 1.51f), beyond(Setting::volume)},
             Case{volume("S", -0.1f), beyond(Setting::volume)},
             Case{volume("S", std::nanf("")), beyond(Setting::volume)},
             Case{volume("T", 1), Reason::textHasOwnSettings},
             Case{transform("A", {.scale = 1.78, .offsetX = -0.5, .cropLeft = 0.45, .cropRight = 0.45}), {}},
             Case{transform("p", {.scale = 0.5}), {}},
             Case{transform("A", {.scale = 0}), beyond(Setting::scale)},
             Case{transform("A", {.scale = -1}), beyond(Setting::scale)},
             Case{transform("A", {.cropTop = 0.46}), beyond(Setting::cropTop)},
             Case{transform("A", {.cropBottom = -0.01}), beyond(Setting::cropBottom)},
             Case{transform("A", {.offsetY = std::nan("")}), beyond(Setting::offsetY)},
             Case{transform("S", {}), Reason::onlyVideoIsPlaced},
             Case{transform("T", {}), Reason::onlyVideoIsPlaced},
             Case{renamePlaceholder(timeline(), id("p"), "Pour"), {}},
             Case{renamePlaceholder(timeline(), id("p"), ""), Reason::placeholderNameEmpty},
             Case{renamePlaceholder(timeline(), id("A"), "Pour"), Reason::onlyPlaceholdersAreRenamed},
             Case{setPlaceholderNote(timeline(), id("A"), "n"), Reason::onlyPlaceholdersHaveNotes},
             Case{setClipVolume(locked(timeline()), id("A"), 1), lockedTrack("v1")},
             Case{resetClipTransform(locked(timeline()), id("A")), lockedTrack("v1")},
             Case{renamePlaceholder(locked(timeline()), id("p"), "x"), lockedTrack("v1")},
             Case{updateClip(locked(timeline()), id("A"), [](Clip&) {}), lockedTrack("v1")},
         })
        // clang-format on
        EXPECT_EQ(c.done, c.refusal);
}

TEST(ClipSettings, AreSet)
{
    Project project = *setClipVolume(timeline(), id("A"), 0.25f);
    project = *setClipTransform(project, id("A"), {.scale = 2});
    EXPECT_EQ(find(project, "A").volume, 0.25f);
    EXPECT_EQ(find(project, "A").transform.scale, 2);
    EXPECT_EQ(find(*resetClipTransform(project, id("A")), "A").transform, ClipTransform());
    project = *renamePlaceholder(project, id("p"), "Pour");
    project = *setPlaceholderNote(project, id("p"), "slowly");
    EXPECT_EQ(find(project, "p").placeholderName, "Pour");
    EXPECT_EQ(find(project, "p").placeholderNote, "slowly");
}

TEST(UpdateClip, CannotBreakTheTrack)
{
    Project const project = timeline();
    auto const done = updateClip(project, id("A"), [](Clip& clip) {
        clip = Clip();
        clip.volume = 0.5f;
    });
    Clip expected = find(project, "A");
    expected.volume = 0.5f;
    EXPECT_EQ(find(*done, "A"), expected);
}

TEST(DetachAudio, GoesWhereThereIsRoomAtThatTime)
{
    // clang-format off
    struct Case { char const* name; Project before; char const* track; char const* after; };
    for (Case const& c : {
             Case{"a free spot", sketch({{"v1", "..AA"}, {"a1", "SS"}}), "a1", "SSXX"},
             Case{"the next track", sketch({{"v1", "..AA"}, {"a1", "SSS"}, {"a2", ""}}), "a2", "..XX"},
             Case{"not a locked one", locked(sketch({{"v1", "..AA"}, {"a1", ""}}), "a1"), "a9", "..XX"},
             Case{"a new track", sketch({{"v1", "..AA"}, {"a1", "...S"}}), "a9", "..XX"},
         }) {
        // clang-format on
        auto const done = detachAudio(c.before, id("A"), id("X"), id("a9"));
        ASSERT_TRUE(done) << c.name;
        EXPECT_EQ(done->trackID, id(c.track)) << c.name;
        EXPECT_EQ(drawing(done->project, c.track), c.after) << c.name;
        EXPECT_EQ(done->isNewTrack, done->trackID == id("a9")) << c.name;
        EXPECT_EQ(find(done->project, "A").volume, 0) << c.name;
        EXPECT_EQ(find(done->project, "X").volume, 1) << c.name;
        EXPECT_EQ(find(done->project, "X").sourceStart, 10) << c.name;
    }
    auto const detach = [](Project const& project, char const* name) {
        return detachAudio(project, id(name), id("Y"), id("a8"));
    };
    EXPECT_EQ(detach(detach(sketch("A"), "A")->project, "A"), Expected(Reason::alreadySilent));
    EXPECT_EQ(detach(timeline(), "p"), Expected(Reason::noAudioToDetach));
    EXPECT_EQ(detach(timeline(), "S"), Expected(Reason::noAudioToDetach));
    EXPECT_EQ(detach(locked(timeline()), "A"), Expected(lockedTrack("v1")));
}

TEST(ClampAudioToTimeline, MovesWhatStartsBeforeZeroAndLeavesTheEnd)
{
    Project project = sketch({{"v1", "AA"}, {"a1", "SS.RRRR"}, {"a2", "QQ"}});
    project.track(id("a1"))->clips.edit()[0].timelineStart = -1;
    project.track(id("a2"))->clips.edit()[0].timelineStart = -1;
    Project const clamped = clampAudioToTimeline(locked(project, "a2"));
    EXPECT_EQ(drawing(clamped, "a1"), "SS.RRRR") << "uncut, and past the video's end";
    EXPECT_EQ(clamped.track(id("a2"))->clips, project.track(id("a2"))->clips) << "locked";
}

} // namespace framewright
