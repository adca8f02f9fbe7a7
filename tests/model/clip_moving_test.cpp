#include "model/clip_moving.h"
#include "model/time_rules.h"

#include "model/sketch.h"

#include <gtest/gtest.h>

namespace framewright {

TEST(MoveClip, LandsWhereThereIsRoom)
{
    // clang-format off
    struct Case { char const* name; Project before; char const* moving; double time; char const* after; };
    for (Case const& c : {
             Case{"free", sketch("AA...BB"), "A", 2, "..AA.BB"},
             Case{"free, over its own spot", sketch("AAAA...BB"), "A", 1, ".AAAA..BB"},
             Case{"free, against a neighbour", sketch("AA...BB"), "A", 4, "...AABB"},
             Case{"free, over a neighbour", sketch("AABB"), "A", 5, "..BB.AA"},
             Case{"free, to before another", sketch("....AA.BB"), "B", 0, "BB..AA"},
             Case{"free, before 0", sketch("..AA"), "A", -9, "AA"},
             Case{"magnetic, on by one", magnetic(sketch("AABBCC")), "A", 2, "BBAACC"},
             Case{"magnetic, not far enough", magnetic(sketch("AABBCC")), "A", 0.9, "AABBCC"},
             Case{"magnetic, the nearer of two starts", magnetic(sketch("AABBCC")), "A", 3.5, "BBCCAA"},
             Case{"magnetic, back by one", magnetic(sketch("AABBCC")), "C", 2.9, "AACCBB"},
             Case{"magnetic, at the middle of one before", magnetic(sketch("AABBCC")), "C", 1, "AACCBB"},
             Case{"magnetic, at the middle of one behind", magnetic(sketch("AABBCC")), "A", 1, "BBAACC"},
             Case{"magnetic, to the front", magnetic(sketch("AABBCC")), "C", 0, "CCAABB"},
             Case{"magnetic, past the end", magnetic(sketch("AABBCC")), "B", 99, "AACCBB"},
             Case{"magnetic, where it is", magnetic(sketch("AABBCC")), "B", 2, "AABBCC"},
         }) {
        // clang-format on
        auto const moved = moveClip(c.before, id(c.moving), c.time);
        ASSERT_TRUE(moved) << c.name;
        EXPECT_EQ(drawing(moved->project), c.after) << c.name;
        EXPECT_EQ(moved->at, std::string(c.after).find(c.moving)) << c.name;
    }
}

TEST(MoveClip, OntoATrackOfItsKind)
{
    Project const project =
        magnetic(sketch({{"t1", "T"}, {"v1", "AABBb"}, {"v2", "..DD"}, {"a1", "CC"}}));
    auto const moved = moveClip(project, id("A"), 1, id("v2"));
    ASSERT_TRUE(moved);
    EXPECT_EQ(drawing(moved->project, "v1"), "BBb") << "what it left closes up";
    EXPECT_EQ(drawing(moved->project, "v2"), "AADD") << "the nearest spot";
    EXPECT_EQ(moved->trackID, id("v2"));
    EXPECT_EQ(drawing(moveClip(project, id("D"), 2, id("v1"))->project, "v1"), "AADDBBb");

    // clang-format off
    struct Case { char const* moving; char const* track; Expected refusal; };
    for (Case const& c : {
             Case{"b", "a1", Reason::placeholderKeepsKind},
             Case{"b", "t1", Reason::placeholderKeepsKind},
             Case{"A", "a1", Reason::clipKeepsKind},
             Case{"A", "t1", Reason::textAndMediaApart},
             Case{"T", "v1", Reason::textAndMediaApart},
             Case{"A", "v9", Reason::trackGone},
             Case{"Z", "v1", Reason::clipGone},
         })
        // clang-format on
        EXPECT_EQ(moveClip(project, id(c.moving), 0, id(c.track)), c.refusal) << c.moving;
    EXPECT_EQ(moveClip(locked(project), id("A"), 0, id("v2")).refusal(), lockedTrack("v1"));
    EXPECT_EQ(moveClip(locked(project, "v2"), id("A"), 0, id("v2")).refusal(), lockedTrack("v2"));
    EXPECT_EQ(moveClip(locked(project), id("A"), 0).refusal(), lockedTrack("v1"));
}

TEST(NudgeClips, GoTogetherUpToAnObstacle)
{
    // clang-format off
    struct Case { char const* name; char const* before; std::vector<Id> ids; double by; char const* after; };
    Id const a = id("A"), b = id("B");
    for (Case const& c : {
             Case{"right", "AA...CC", {a}, 1, ".AA..CC"},
             Case{"right, against the next", "AA..CC", {a}, 5, "..AACC"},
             Case{"left, against 0", ".AA", {a}, -3, "AA"},
             Case{"never over a clip", "AA.C.....", {a}, 5, ".AAC"},
             Case{"two that touch", "AABB.CC", {a, b}, 1, ".AABBCC"},
             Case{"the tighter one holds both", "AA...CCBB.DD", {a, b}, 2, ".AA..CC.BBDD"},
         }) {
        // clang-format on
        auto const nudged = nudgeClips(sketch(c.before), c.ids, c.by);
        ASSERT_TRUE(nudged) << c.name;
        EXPECT_EQ(drawing(nudged->project), c.after) << c.name;
    }
    auto const frame = nudgeClips(sketch(".A"), std::vector{a}, 1.0 / 30);
    EXPECT_DOUBLE_EQ(find(frame->project, "A").timelineStart, 1 + 1.0 / 30);

    std::vector<Id> const one = {a};
    EXPECT_EQ(nudgeClips(sketch("AACC"), one, 1).refusal().reason, Reason::noRoomToNudge);
    EXPECT_EQ(nudgeClips(sketch("AACC"), one, -1).refusal().reason, Reason::noRoomToNudge);
    EXPECT_EQ(nudgeClips(locked(sketch("A.CC")), one, 1).refusal(), lockedTrack("v1"));
    EXPECT_EQ(nudgeClips(magnetic(sketch("AACC")), one, 1).refusal().reason,
              Reason::orderedNotPositioned);
    EXPECT_EQ(nudgeClips(sketch("AACC"), {}, 1).refusal().reason, Reason::nothingSelected);
}

TEST(RemoveClips, CloseTheGapOnMagneticTracksOnly)
{
    // clang-format off
    struct Case { char const* name; Project before; std::vector<Id> ids; char const* after; bool closedGap; };
    Id const a = id("A"), b = id("B"), c = id("C");
    for (Case const& each : {
             Case{"magnetic, the middle one", magnetic(sketch("AABBBCC")), {b}, "AACC", true},
             Case{"magnetic, the last", magnetic(sketch("AABBBCC")), {c}, "AABBB", false},
             Case{"magnetic, the last two", magnetic(sketch("AABBBCC")), {c, b}, "AA", false},
             Case{"magnetic, first and last", magnetic(sketch("AABBBCC")), {a, c}, "BBB", true},
             Case{"free", sketch("AABBBCC"), {b}, "AA...CC", false},
         }) {
        // clang-format on
        auto const removed = removeClips(each.before, each.ids);
        ASSERT_TRUE(removed) << each.name;
        EXPECT_EQ(drawing(removed->project), each.after) << each.name;
        EXPECT_EQ(removed->closedGap, each.closedGap) << each.name;
    }
    EXPECT_EQ(removeClip(locked(sketch("AA")), a).refusal(), lockedTrack("v1"));
    EXPECT_EQ(removeClip(sketch("AA"), b).refusal().reason, Reason::clipGone);
    EXPECT_EQ(removeClips(locked(sketch({{"v1", "AA"}, {"a1", "BB"}}), "a1"), std::vector{a, b})
                  .refusal(),
              lockedTrack("a1"));
}

} // namespace framewright
