#include "model/text_editing.h"

#include "model/sketch.h"

#include <gtest/gtest.h>

#include <cmath>

namespace framewright {

namespace {

TextOverlay words(std::string const& text)
{
    TextOverlay overlay;
    overlay.text = text;
    return overlay;
}

NewText newText(double time, double length, std::optional<Id> const& trackID = std::nullopt)
{
    return {.id = id("X"),
            .text = words("New"),
            .time = time,
            .length = length,
            .trackID = trackID,
            .newTrackID = id("t9")};
}

} // namespace

TEST(AddText, FindsATrackAndRoom)
{
    // clang-format off
    struct Case { char const* name; Project before; NewText text; char const* track; char const* after; };
    auto const two = sketch({{"t1", "AA..BB"}, {"t2", "CC"}, {"v1", "DDDD"}});
    for (Case const& c : {
             Case{"where asked", two, newText(2, 2), "t1", "AAXXBB"},
             Case{"nearest room", two, newText(1, 3), "t1", "AA..BBXXX"},
             Case{"on the track named", two, newText(3, 1, id("t2")), "t2", "CC.X"},
             Case{"past a locked track", locked(two, "t1"), newText(3, 1), "t2", "CC.X"},
             Case{"packed", magnetic(two, "t1"), newText(5.4, 1), "t1", "AABBX"},
             Case{"no track yet", sketch({{"v1", "DD"}}), newText(1, 2), "t9", ".XX"},
             Case{"all locked", locked(sketch({{"t1", "A"}}), "t1"), newText(0, 1), "t9", "X"},
         }) {
        // clang-format on
        auto const placed = addText(c.before, c.text);
        ASSERT_TRUE(placed) << c.name;
        EXPECT_EQ(drawing(placed->project, c.track), c.after) << c.name;
        EXPECT_EQ(find(placed->project, "X").timelineStart, placed->at) << c.name;
    }
    auto const added = addText(sketch({{"s1", ""}, {"v1", "DD"}}), newText(0, 1));
    EXPECT_EQ(added->project.tracks.front().id, id("t9")) << "a new track goes on top";
}

TEST(AddText, RefusalsSayWhy)
{
    Project const before = sketch({{"t1", "AA"}, {"v1", "DD"}});
    auto const with = [](auto change) {
        NewText text = newText(0, 1);
        change(text);
        return text;
    };
    // clang-format off
    struct Case { NewText text; Expected refusal; };
    std::string const spaces = " \n\t\u00A0\u3000\u200B";
    for (Case const& c : {
             Case{newText(0, 0.1), {}},
             Case{newText(0, 3600), {}},
             Case{newText(0, 0.09), beyond(Setting::textLength)},
             Case{newText(0, 3601), beyond(Setting::textLength)},
             Case{newText(0, std::nan("")), beyond(Setting::textLength)},
             Case{newText(-1, 1), beyond(Setting::placeTime)},
             Case{newText(0, 1, id("v1")), Reason::notATextTrack},
             Case{newText(999'999.5, 1, id("t1")), {}},
             Case{with([&](NewText& t) { t.text.text = spaces; }), Reason::noWords},
             Case{with([&](NewText& t) { t.text.text = ""; }), Reason::noWords},
             Case{with([&](NewText& t) { t.text.text = spaces + "."; }), {}},
             Case{with([](NewText& t) { t.text.text = std::string(10'000, 'x'); }), {}},
             Case{with([](NewText& t) { t.text.text = std::string(10'001, 'x'); }), Reason::tooManyCharacters},
             Case{with([](NewText& t) { t.text.style.fontSize = 8; }), {}},
             Case{with([](NewText& t) { t.text.style.fontSize = 240; }), {}},
             Case{with([](NewText& t) { t.text.style.fontSize = 7; }), beyond(Setting::fontSize)},
             Case{with([](NewText& t) { t.text.style.fontSize = 241; }), beyond(Setting::fontSize)},
             Case{with([](NewText& t) { t.text.x = 1.01; }), beyond(Setting::textX)},
             Case{with([](NewText& t) { t.text.y = -0.01; }), beyond(Setting::textY)},
         })
        // clang-format on
        EXPECT_EQ(addText(before, c.text), c.refusal);

    Project full = sketch({{"t1", ""}});
    full.track(id("t1"))->clips = Shared(std::vector<Clip>{textClip("A", 1'000'000 - 0.5)});
    EXPECT_EQ(addText(full, newText(4, 1, id("t1"))).refusal(),
              (Refusal{.reason = Reason::noRoomForText,
                       .subject = Subject::track(id("t1")),
                       .value = 4}));
}

TEST(ChangeText, KeepsTheRulesOfTheTrack)
{
    Project const free = sketch({{"t1", "AA..BB.C"}, {"v1", "DD"}});
    Project const packed = magnetic(sketch({{"t1", "AABBC"}}), "t1");
    // clang-format off
    struct Case { char const* name; Project before; char const* clip; double length; char const* after; Expected refusal; };
    auto const runsInto = [](double most) {
        return Refusal{
            .reason = Reason::runsIntoNextText, .subject = Subject::track(id("t1")), .value = most};
    };
    for (Case const& c : {
             Case{"up to the next", free, "A", 4, "AAAABB.C", {}},
             Case{"into the next", free, "A", 5, "", runsInto(4)},
             Case{"the last one", free, "C", 3, "AA..BB.CCC", {}},
             Case{"an hour", free, "C", 3600, "", {}},
             Case{"too short", free, "C", 0.05, "", beyond(Setting::textLength)},
             Case{"packed, shorter", packed, "A", 1, "ABBC", {}},
             Case{"packed, longer", packed, "A", 3, "", runsInto(2)},
             Case{"packed, the last one", packed, "C", 2, "AABBCC", {}},
             Case{"locked", locked(free, "t1"), "A", 1, "", lockedTrack("t1")},
             Case{"no text", free, "D", 1, "", Reason::notAText},
         }) {
        // clang-format on
        auto const changed = changeText(c.before, id(c.clip), {.length = c.length});
        EXPECT_EQ(changed, c.refusal) << c.name;
        if (changed && *c.after) {
            EXPECT_EQ(drawing(*changed, "t1"), c.after) << c.name;
        }
    }
}

TEST(ChangeText, ChangesWordsAndLengthTogetherOrNotAtAll)
{
    Project const before = sketch({{"t1", "AA..BB"}});
    auto const changed = changeText(before, id("A"), {.text = words("Hello"), .length = 1});
    ASSERT_TRUE(changed);
    EXPECT_EQ((*find(*changed, "A").text)->text, "Hello");
    EXPECT_EQ(drawing(*changed, "t1"), "A...BB");
    EXPECT_FALSE(changeText(before, id("A"), {.text = words("Hello"), .length = 9}));
    EXPECT_EQ(changeText(before, id("A"), {.text = words(" ")}).refusal().reason, Reason::noWords);
}

} // namespace framewright
