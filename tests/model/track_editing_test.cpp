#include "model/track_editing.h"

#include "model/sketch.h"

#include <gtest/gtest.h>

namespace framewright {

namespace {

std::string names(Project const& project)
{
    std::string row;
    for (Track const& track : project.tracks) {
        row += row.empty() ? "" : ", ";
        row += track.name;
    }
    return row;
}

} // namespace

TEST(AddTrack, GoesWhereItsKindBelongs)
{
    Project const project = sketch({{"t1", ""}, {"v1", ""}, {"v2", ""}, {"a1", ""}});
    auto const top = TrackPlace::top;
    // clang-format off
    struct Case { char const* name; Project before; NewTrack track; char const* after; };
    Id const x = id("x9");
    for (Case const& c : {
             Case{"video", project, {.id = x, .kind = TrackKind::video}, "T1, V1, V2, Video 3, A1"},
             Case{"video on top", project, {.id = x, .kind = TrackKind::video, .place = top}, "T1, Video 3, V1, V2, A1"},
             Case{"audio", project, {.id = x, .kind = TrackKind::audio}, "T1, V1, V2, A1, Audio 2"},
             Case{"text", project, {.id = x, .kind = TrackKind::text}, "Text 2, T1, V1, V2, A1"},
             Case{"subtitles", project, {.id = x, .kind = TrackKind::subtitles}, "Subtitles 1, T1, V1, V2, A1"},
             Case{"named", project, {.id = x, .kind = TrackKind::text, .name = "Titles"}, "Titles, T1, V1, V2, A1"},
             Case{"at an index", project, {.id = x, .kind = TrackKind::video, .index = 1}, "T1, Video 3, V1, V2, A1"},
             Case{"past the end", project, {.id = x, .kind = TrackKind::text, .index = 9}, "T1, V1, V2, A1, Text 2"},
             Case{"first video", sketch({{"t1", ""}, {"a1", ""}}), {.id = x, .kind = TrackKind::video}, "T1, Video 1, A1"},
             Case{"no audio", sketch({{"v1", ""}}), {.id = x, .kind = TrackKind::video}, "V1, Video 2"},
         }) {
        // clang-format on
        auto const added = addTrack(c.before, c.track);
        ASSERT_TRUE(added) << c.name;
        EXPECT_EQ(names(*added), c.after) << c.name;
    }
}

TEST(AddTrack, OnlyTheFirstVideoTrackIsMagneticAndOnlyTheFirstAudioTrackDucks)
{
    Project project = sketch({{"t1", ""}});
    for (char const* const name : {"v1", "v2", "a1", "a2", "t2"})
        project = *addTrack(project, {.id = id(name), .kind = kindOf(name)});
    for (Track const& track : project.tracks) {
        EXPECT_EQ(track.isMagnetic, track.id == id("v1")) << track.name;
        EXPECT_EQ(track.ducks, track.id == id("a1")) << track.name;
    }
    auto const magneticTrack = [&](TrackKind kind) {
        return addTrack(project, {.id = id("x1"), .kind = kind, .isMagnetic = true});
    };
    EXPECT_TRUE(magneticTrack(TrackKind::text)->tracks[0].isMagnetic);
    EXPECT_EQ(magneticTrack(TrackKind::audio), Expected(Reason::audioNeverMagnetic));
    project.tracks[0].name = "Video 3";
    EXPECT_NE(names(*addTrack(project, {.id = id("v3")})).find("Video 4"), std::string::npos);
}

TEST(AddSubtitleTrack, CarriesItsBarsOnTop)
{
    SubtitleData data;
    data.bars = {{id("b1"), 0, 1, "Hello", {}}};
    Project const project = addSubtitleTrack(sketch("AA"), id("s1"), data);
    EXPECT_EQ(names(project), "Subtitles 1, V1");
    EXPECT_EQ(**project.tracks[0].subtitles, data);
    EXPECT_EQ(names(addSubtitleTrack(project, id("s2"), data, "Deutsch")),
              "Deutsch, Subtitles 1, V1");
}

TEST(RemoveTrack, LeavesAtLeastOne)
{
    Project const project = sketch({{"v1", "AA"}, {"a1", "S"}});
    Project const one = *removeTrack(project, id("v1"));
    EXPECT_EQ(names(one), "A1");
    EXPECT_EQ(removeTrack(one, id("a1")).refusal().reason, Reason::lastTrack);
    EXPECT_EQ(removeTrack(locked(project), id("v1")).refusal(), lockedTrack("v1"));
    EXPECT_EQ(removeTrack(project, id("v9")).refusal().reason, Reason::trackGone);
}

TEST(MoveTrack, GoesAsFarAsThereAreTracks)
{
    Project const project = sketch({{"v1", ""}, {"v2", ""}, {"v3", ""}, {"a1", ""}});
    struct Case {
        char const* track;
        int offset;
        char const* after;
    };
    for (Case const& c : {Case{"v1", 1, "V2, V1, V3, A1"}, Case{"v1", 2, "V2, V3, V1, A1"},
                          Case{"a1", -1, "V1, V2, A1, V3"}, Case{"a1", -3, "A1, V1, V2, V3"},
                          Case{"v2", 99, "V1, V3, A1, V2"}, Case{"v2", -99, "V2, V1, V3, A1"}})
        EXPECT_EQ(names(*moveTrack(project, id(c.track), c.offset)), c.after)
            << c.track << c.offset;
    EXPECT_EQ(moveTrack(project, id("v1"), -1).refusal().reason, Reason::topmostTrack);
    EXPECT_EQ(moveTrack(project, id("a1"), 1).refusal().reason, Reason::bottomTrack);
    EXPECT_EQ(moveTrack(locked(project), id("v1"), 1).refusal(), lockedTrack("v1"));
}

TEST(ChangeTrack, SetsWhatIsGiven)
{
    Project const project = sketch({{"t1", ""}, {"v1", ".AA"}, {"a1", "S"}, {"s1", ""}});
    Project changed = *changeTrack(
        project, id("a1"),
        {.name = "Music", .isMuted = true, .isSolo = true, .volume = 1.5f, .ducks = true});
    Track expected = *project.track(id("a1"));
    expected.name = "Music";
    expected.isMuted = expected.isSolo = expected.ducks = true;
    expected.volume = 1.5f;
    EXPECT_EQ(*changed.track(id("a1")), expected);
    changed = *changeTrack(project, id("v1"), {.isHidden = true, .opacity = 0.5});
    EXPECT_TRUE(changed.track(id("v1"))->isHidden);
    EXPECT_EQ(changed.track(id("v1"))->opacity, 0.5);

    // clang-format off
    struct Case { char const* track; TrackChanges changes; Expected refusal; };
    for (Case const& c : {
             Case{"a1", {.isHidden = true}, Reason::audioNeverHidden},
             Case{"t1", {.isHidden = true}, {}},
             Case{"s1", {.isHidden = true}, {}},
             Case{"a1", {.opacity = 1}, Reason::onlyVideoHasOpacity},
             Case{"v1", {.opacity = 1.1}, beyond(Setting::opacity)},
             Case{"v1", {.opacity = std::nan("")}, beyond(Setting::opacity)},
             Case{"v1", {.volume = 1.6f}, beyond(Setting::volume)},
             Case{"v1", {.ducks = true}, Reason::onlyAudioDucks},
             Case{"t1", {.isMuted = true}, Reason::trackHasNoAudio},
             Case{"a1", {.isMagnetic = true}, Reason::audioNeverMagnetic},
             Case{"s1", {.isMagnetic = true}, Reason::subtitlesNeverMagnetic},
             Case{"t1", {.isMagnetic = true}, {}},
             Case{"v1", {.name = ""}, Reason::trackNameEmpty},
             Case{"v9", {.name = "x"}, Reason::trackGone},
         }) {
        // clang-format on
        auto const done = changeTrack(project, id(c.track), c.changes);
        EXPECT_EQ(done, c.refusal) << c.track;
    }
}

TEST(ChangeTrack, ALockedTrackOnlyTakesBeingUnlocked)
{
    Project const project = locked(sketch("AA"));
    for (TrackChanges const& changes :
         {TrackChanges{.name = "x"}, TrackChanges{.isMagnetic = true},
          TrackChanges{.isHidden = true}, TrackChanges{.isMuted = true},
          TrackChanges{.name = "x", .isLocked = true}})
        EXPECT_EQ(changeTrack(project, id("v1"), changes).refusal(), lockedTrack("v1"));
    auto const unlocked = changeTrack(project, id("v1"), {.name = "x", .isLocked = false});
    EXPECT_EQ(names(*unlocked), "x");
    EXPECT_FALSE(unlocked->tracks[0].isLocked);
    EXPECT_TRUE(changeTrack(*unlocked, id("v1"), {.isLocked = true})->tracks[0].isLocked);
}

TEST(SetMagnetic, ClosesUpAndLeavesInPlace)
{
    Project const packed = *setMagnetic(sketch("..AA.BB"), id("v1"), true);
    EXPECT_EQ(drawing(packed), "AABB");
    Project const free = *setMagnetic(packed, id("v1"), false);
    EXPECT_EQ(drawing(free), "AABB");
    EXPECT_FALSE(free.tracks[0].isMagnetic);

    Project unsorted = sketch("..AA.BB");
    std::ranges::reverse(unsorted.tracks[0].clips.edit());
    EXPECT_EQ(drawing(*setMagnetic(unsorted, id("v1"), true)), "AABB") << "in time order";
}

} // namespace framewright
