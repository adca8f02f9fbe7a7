#include "model/clip_placing.h"
#include "model/time_rules.h"

#include "model/sketch.h"

#include <gtest/gtest.h>

namespace framewright {

TEST(Place, FindsRoomNearestTheTime)
{
    // clang-format off
    struct Case { char const* name; Project before; double time; char const* after; };
    for (Case const& c : {
             Case{"where asked", sketch("AAAA......BB"), 6, "AAAA..CC..BB"},
             Case{"pushed left", sketch("AAAA...BBBB"), 6, "AAAA.CCBBBB"},
             Case{"the nearer gap", sketch("..AAAA..BBBB"), 5, "..AAAACCBBBB"},
             Case{"too short a gap", sketch("AAAA.BBBB"), 4, "AAAA.BBBBCC"},
             Case{"before all others", sketch("..AAAA"), 1, "CCAAAA"},
             Case{"before 0", sketch("...AAAA"), -5, "CC.AAAA"},
             Case{"magnetic, first", magnetic(sketch("AABBBB")), 0.5, "CCAABBBB"},
             Case{"at A's middle", magnetic(sketch("AAAABBBB")), 2, "AAAACCBBBB"},
             Case{"between two", magnetic(sketch("AABBBB")), 3, "AACCBBBB"},
             Case{"past B's middle", magnetic(sketch("AABBBB")), 5, "AABBBBCC"},
             Case{"far past the end", magnetic(sketch("AAAABBBB")), 99, "AAAABBBBCC"},
             Case{"magnetic and empty", magnetic(sketch("")), 7, "CC"},
         }) {
        // clang-format on
        auto const placed = place(c.before, clip("CC"), id("v1"), c.time);
        ASSERT_TRUE(placed) << c.name;
        EXPECT_EQ(drawing(placed->project), c.after) << c.name;
        EXPECT_EQ(placed->at, std::string(c.after).find('C')) << c.name;
        EXPECT_EQ(placed->clipID, id("C"));
        EXPECT_EQ(placed->trackID, id("v1"));
    }
}

TEST(Place, LeavesTheProjectItWasGivenAlone)
{
    Project const before = magnetic(sketch({{"v1", "AABB"}, {"a1", "DD"}}));
    Project const copy = before;
    auto const placed = place(before, clip("CC"), id("v1"), 0);
    EXPECT_EQ(drawing(before), "AABB");
    EXPECT_EQ(before, copy);
    EXPECT_TRUE(placed->project.tracks[1].clips.isSameAs(before.tracks[1].clips));
}

TEST(Place, EachKindHasItsTracks)
{
    Project const project = sketch({{"s1", ""}, {"t1", ""}, {"v1", ""}, {"a1", ""}});
    Clip const video = clip("C");
    Clip const sound = clipOf(id("C"), id("song.wav"), 1);
    Clip const photo = clipOf(id("C"), id("face.jpg"), 1);
    auto const apart = Reason::textAndMediaApart;
    // clang-format off
    struct Case { char const* name; Clip clip; char const* track; Expected refusal; };
    for (Case const& c : {
             Case{"video", video, "v1", {}},
             Case{"its sound", video, "a1", {}},
             Case{"video", video, "t1", apart},
             Case{"video", video, "s1", Reason::barsOnly},
             Case{"sound", sound, "v1", Reason::audioOnVideoTrack},
             Case{"sound", sound, "a1", {}},
             Case{"photo", photo, "v1", {}},
             Case{"photo", photo, "a1", Reason::photoOnAudioTrack},
             Case{"text", textClip("C", 1), "t1", {}},
             Case{"text", textClip("C", 1), "v1", apart},
             Case{"text", textClip("C", 1), "s1", Reason::barsOnly},
             Case{"placeholder", placeholder("C", 1), "v1", {}},
             Case{"placeholder", placeholder("C", 1), "a1", {}},
             Case{"placeholder", placeholder("C", 1), "t1", Reason::notForPlaceholders},
             Case{"placeholder", placeholder("C", 1), "s1", Reason::notForPlaceholders},
             Case{"unknown file", clipOf(id("C"), id("gone"), 1), "v1", Reason::assetGone},
         }) {
        // clang-format on
        auto const placed = place(project, c.clip, id(c.track), 0);
        EXPECT_EQ(placed, c.refusal) << c.name << " on " << c.track;
    }
}

TEST(Place, RefusalsSayWhy)
{
    Project const project = sketch("AA");
    Id const talk = id("talk.mov");
    // clang-format off
    struct Case { Project project; Clip clip; double time; Expected refusal; };
    for (Case const& c : {
             Case{project, clipOf(id("C"), talk, 0.09), 0, Reason::tooShort},
             Case{project, clipOf(id("C"), talk, 0.1), 0, {}},
             Case{project, clipOf(id("C"), talk, std::nan("")), 0, Reason::tooShort},
             Case{project, clipOf(id("C"), talk, 5, 96), 0, Reason::pastSourceEnd},
             Case{project, clipOf(id("C"), talk, 5, 95), 0, {}},
             Case{project, clipOf(id("C"), talk, 5, -1), 0, Reason::pastSourceEnd},
             Case{project, clipOf(id("C"), id("face.jpg"), 60, 0), 0, {}},
             Case{project, clipOf(id("C"), id("face.jpg"), 60.1, 0), 0, Reason::photoTooLong},
             Case{project, clip("C"), 2e6, Reason::noRoom},
             Case{project, clip("C"), latestTime, {}},
             Case{project, placeholder("C", 2e6), 0, Reason::pastTimelineEnd},
             Case{project, placeholder("C", latestTime - 1), 2, Reason::noRoom},
             Case{magnetic(project), placeholder("C", latestTime - 1), 0, Reason::noRoom},
         }) {
        // clang-format on
        auto const placed = place(c.project, c.clip, id("v1"), c.time);
        EXPECT_EQ(placed, c.refusal);
    }
    EXPECT_EQ(place(locked(project), clip("C"), id("v1"), 0).refusal(), lockedTrack("v1"));
    EXPECT_EQ(place(project, clip("C"), id("v9"), 0).refusal().reason, Reason::trackGone);
}

TEST(PreferredTrack, IsTheGivenOneOrTheFirstThatMayBeEdited)
{
    Project const project = locked(sketch({{"t1", ""}, {"v1", ""}, {"v2", ""}, {"v3", ""}}), "v1");
    EXPECT_EQ(preferredTrack(project, TrackKind::video), id("v2"));
    EXPECT_EQ(preferredTrack(project, TrackKind::video, id("v3")), id("v3"));
    EXPECT_EQ(preferredTrack(project, TrackKind::video, id("v1")), id("v2")) << "locked";
    EXPECT_EQ(preferredTrack(project, TrackKind::video, id("t1")), id("v2")) << "another kind";
    EXPECT_EQ(preferredTrack(project, TrackKind::video, id("v9")), id("v2")) << "gone";
    EXPECT_EQ(preferredTrack(project, TrackKind::audio), std::nullopt);
}

TEST(AddPlaceholder, GoesToTheEndOfTheFirstVideoTrack)
{
    Project const project =
        locked(sketch({{"t1", ""}, {"v1", "AA"}, {"v2", ".BB"}, {"a1", "C"}}), "v1");
    auto const added = addPlaceholder(project, {.id = id("p"), .name = "B-roll"});
    ASSERT_TRUE(added);
    EXPECT_EQ(drawing(added->project, "v2"), ".BBppp");
    EXPECT_EQ(find(added->project, "p").placeholderName, "B-roll");

    auto const music = addPlaceholder(
        project, {.id = id("p"), .name = "Music", .length = 2, .trackID = id("a1"), .time = 4});
    EXPECT_EQ(drawing(music->project, "a1"), "C...pp");

    auto const p = id("p");
    EXPECT_EQ(addPlaceholder(project, {.id = p, .name = "x", .trackID = id("t1")}),
              Expected(Reason::notForPlaceholders));
    EXPECT_EQ(addPlaceholder(project, {.id = p, .name = "x", .length = 0.05}),
              Expected(Reason::tooShort));
    EXPECT_EQ(addPlaceholder(sketch({{"a1", ""}}), {.id = p, .name = "x"}),
              Expected(Reason::noVideoTrack));
    EXPECT_EQ(addPlaceholder(locked(sketch("")), {.id = p, .name = "x"}),
              Expected(lockedTrack("v1")));
}

TEST(DuplicateClips, GoRightBehind)
{
    // clang-format off
    struct Case { char const* name; Project before; std::vector<Id> ids; char const* after; };
    Id const a = id("A"), b = id("B"), c = id("C");
    for (Case const& each : {
             Case{"magnetic", magnetic(sketch("AABBCC")), {b}, "AABBXXCC"},
             Case{"magnetic, a long clip after a short", magnetic(sketch("ABBBBBBCC")), {a}, "AXBBBBBBCC"},
             Case{"magnetic, several behind the last", magnetic(sketch("AABCC")), {a, b}, "AABXXYCC"},
             Case{"magnetic, apart", magnetic(sketch("AABCC")), {a, c}, "AABCCXXYY"},
             Case{"free with room", sketch("AA..BB"), {a}, "AAXXBB"},
             Case{"free without room", sketch("AA.BB"), {a}, "AA.BBXX"},
             Case{"free, the nearer gap before", sketch("...AABBBBBBBB"), {a}, ".XXAABBBBBBBB"},
             Case{"free, several keep their spacing", sketch("A.B...CC"), {a, b}, "A.BX.YCC"},
             Case{"given in any order", magnetic(sketch("AAB")), {b, a}, "AABYYX"},
         }) {
        // clang-format on
        std::vector<Id> const copies = {id("X"), id("Y")};
        auto const done =
            duplicateClips(each.before, each.ids, std::span(copies).first(each.ids.size()));
        ASSERT_TRUE(done) << each.name;
        EXPECT_EQ(drawing(done->project), each.after) << each.name;
    }
}

TEST(DuplicateClips, CopiesEverythingButTheId)
{
    Project project = sketch("AA");
    project.tracks[0].clips.edit()[0].volume = 0.3f;
    auto const done = duplicateClips(project, std::vector{id("A")}, std::vector{id("X")});
    Clip expected = find(project, "A");
    expected.id = id("X");
    expected.timelineStart = 2;
    EXPECT_EQ(find(done->project, "X"), expected);
}

TEST(DuplicateClips, AllOrNone)
{
    Project const project = locked(sketch({{"v1", "AA"}, {"a1", "BB"}}), "a1");
    std::vector<Id> const copies = {id("X"), id("Y")};
    EXPECT_EQ(duplicateClips(project, std::vector{id("A"), id("B")}, copies).refusal(),
              lockedTrack("a1"));
    EXPECT_EQ(duplicateClips(project, std::vector{id("A"), id("Z")}, copies).refusal().reason,
              Reason::clipGone);
    auto const full = place(sketch(""), placeholder("A", latestTime), id("v1"), 0);
    EXPECT_EQ(
        duplicateClips(full->project, std::vector{id("A")}, std::vector{id("X")}).refusal().reason,
        Reason::noRoomToDuplicate);
}

TEST(PasteClips, GoToThePlayheadOfAPreferredTrack)
{
    CopiedClip const copied{clip("AA"), TrackKind::video};
    std::vector<Id> const clipIDs = {id("X")}, trackIDs = {id("v9")};
    auto const paste = [&](Project const& project, std::optional<Id> const& preferring,
                           double time) {
        return pasteClips(project, {&copied, 1}, preferring, time, clipIDs, trackIDs);
    };
    EXPECT_EQ(drawing(paste(sketch("AA"), {}, 4)->project), "AA..XX");
    EXPECT_EQ(drawing(paste(magnetic(sketch("AABB")), {}, 2)->project), "AAXXBB");

    Project const two = sketch({{"v1", "AA"}, {"v2", "B"}});
    EXPECT_EQ(drawing(paste(two, id("v2"), 1)->project, "v2"), "BXX");

    auto const added = paste(locked(sketch({{"v1", "AA"}, {"a1", ""}})), {}, 1);
    EXPECT_EQ(added->addedTracks, trackIDs);
    EXPECT_EQ(drawing(added->project, "v9"), ".XX");
    EXPECT_EQ(added->project.tracks[1].name, "Video 2");

    EXPECT_EQ(paste(sketch("AA"), {}, 3e6).refusal().reason, Reason::noRoomToPaste);
    Project noFile = sketch("AA");
    noFile.assets = Shared<std::map<Id, MediaAsset>>();
    EXPECT_EQ(paste(noFile, {}, 0).refusal().reason, Reason::assetGone);
}

TEST(PasteClips, KeepTheirDistances)
{
    Project const from = sketch({{"v1", ".AA.B"}, {"a1", "..CC"}, {"t1", "DD"}});
    std::vector<CopiedClip> copied;
    for (char const* const name : {"A", "B", "C", "D"}) {
        auto const found = findClip(from, id(name));
        copied.push_back({*found->clip, found->track->kind});
    }
    std::vector<Id> const clipIDs = {id("W"), id("X"), id("Y"), id("Z")};
    std::vector<Id> const trackIDs = {id("t8"), id("t9")};
    auto const done =
        pasteClips(sketch({{"v1", ""}, {"a1", ""}}), copied, {}, 3, clipIDs, trackIDs);
    ASSERT_TRUE(done);
    EXPECT_EQ(drawing(done->project, "v1"), "....WW.X");
    EXPECT_EQ(drawing(done->project, "a1"), ".....YY");
    EXPECT_EQ(drawing(done->project, "t8"), "...ZZ");

    // Copied from two tracks at the same times, pasted onto one: side by side, none lost.
    std::vector<CopiedClip> const same = {{clip("AA"), TrackKind::audio},
                                          {clip("BB"), TrackKind::audio}};
    auto const pushed =
        pasteClips(sketch({{"a1", "QQ"}}), same, {}, 1, std::span(clipIDs).first(2), {});
    EXPECT_EQ(drawing(pushed->project, "a1"), "QQWWXX");
}

} // namespace framewright
