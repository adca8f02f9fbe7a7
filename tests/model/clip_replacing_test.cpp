#include "model/clip_placing.h"
#include "model/clip_replacing.h"
#include "model/time_rules.h"

#include "model/sketch.h"

#include <gtest/gtest.h>

namespace framewright {

namespace {

constexpr auto fromFile = Replacement::From::file;
constexpr auto fromTimeline = Replacement::From::timeline;

Project withFile(Project project, MediaAsset const& asset)
{
    project.assets.edit()[asset.id] = asset;
    return project;
}

} // namespace

TEST(ReplaceClip, ByAFileKeepsSpotAndLength)
{
    struct Case {
        char const* name;
        Project before;
        double file;
        char const* left;   ///< After leaving what a shorter file leaves.
        char const* filled; ///< After filling it.
    };
    for (Case const& c : {
             Case{"free, longer", sketch("..pppppAA"), 8, "..pppppAA", "..pppppAA"},
             Case{"free, as long", sketch("..pppppAA"), 5, "..pppppAA", "..pppppAA"},
             Case{"free, shorter", sketch("..pppppAA"), 3, "..ppp..AA", "..pppXXAA"},
             Case{"magnetic, longer", magnetic(sketch("BpppppAA")), 8, "BpppppAA", "BpppppAA"},
             Case{"magnetic, shorter", magnetic(sketch("BpppppAA")), 3, "BpppAA", "BpppXXAA"},
         }) {
        Project const project = withFile(c.before, file("new.mov", MediaKind::video, c.file));
        auto const left = replaceClip(project, id("p"), {fromFile, id("new.mov")});
        ASSERT_TRUE(left) << c.name;
        EXPECT_EQ(drawing(left->project), c.left) << c.name;
        EXPECT_EQ(left->isShorter(), c.file < 5) << c.name;

        auto const filled =
            replaceClipReturningFiller(project, id("p"), {fromFile, id("new.mov")}, id("X"));
        ASSERT_TRUE(filled) << c.name;
        EXPECT_EQ(drawing(filled->project), c.filled) << c.name;
        EXPECT_EQ(filled->fillerID.has_value(), c.file < 5) << c.name;
        Clip const& clip = find(filled->project, "p");
        EXPECT_EQ(clip.assetID, id("new.mov"));
        EXPECT_EQ(clip.sourceStart, 0);
        EXPECT_FALSE(clip.placeholderName);
        if (filled->fillerID) {
            Clip const& filler = find(filled->project, "X");
            EXPECT_TRUE(filler.isPlaceholder());
            EXPECT_EQ(filler.placeholderName, "p");
        }
    }
}

TEST(ReplaceClip, ByAFileKeepsLevelAndPlacementOfTheSlot)
{
    Project project = withFile(sketch("AAAA"), file("new.mov", MediaKind::video, 2));
    Clip& slot = project.tracks[0].clips.edit()[0];
    slot.volume = 0.4f;
    slot.transform.scale = 1.78;
    auto const done =
        replaceClipReturningFiller(project, id("A"), {fromFile, id("new.mov")}, id("X"));
    EXPECT_EQ(find(done->project, "A").volume, 0.4f);
    EXPECT_EQ(find(done->project, "A").transform.scale, 1.78);
    EXPECT_EQ(find(done->project, "X").placeholderName, "talk.mov");
}

TEST(ReplaceClip, ByAPhotoFillsUpToAMinute)
{
    Project const project = place(sketch(""), placeholder("p", 70), id("v1"), 0)->project;
    auto const done = replaceClip(project, id("p"), {fromFile, id("face.jpg")});
    EXPECT_EQ(done->length, 60);
    EXPECT_EQ(replaceClip(sketch("pp"), id("p"), {fromFile, id("face.jpg")})->length, 2);
}

TEST(ReplaceClip, ALeftoverTooShortForAClipIsNotFilled)
{
    Project const project = withFile(sketch("pp"), file("new.mov", MediaKind::video, 1.95));
    auto const done =
        replaceClipReturningFiller(project, id("p"), {fromFile, id("new.mov")}, id("X"));
    EXPECT_FALSE(done->fillerID);
    EXPECT_EQ(done->project.tracks[0].clips->size(), 1u);
}

TEST(ReplaceClip, ByAnotherClipTakesItOutOfItsOldSpot)
{
    // clang-format off
    struct Case { char const* name; Project before; char const* v1; char const* v2; };
    for (Case const& c : {
             Case{"magnetic, from later", magnetic(sketch({{"v1", "ppBBCCC"}, {"v2", ""}})), "CCBB", ""},
             Case{"magnetic, from before", magnetic(sketch({{"v1", "CCCBBpp"}, {"v2", ""}})), "BBCC", ""},
             Case{"free, the same track", sketch({{"v1", "ppBBCCC"}, {"v2", ""}}), "CCBB", ""},
             Case{"free, shorter", sketch({{"v1", "ppppBBCCC"}, {"v2", ""}}), "CCC.BB", ""},
             Case{"from a free track", magnetic(sketch({{"v1", "AppB"}, {"v2", "D.CCCE"}})), "ACCB", "D....E"},
             Case{"from a magnetic track", magnetic(sketch({{"v1", "A.ppB"}, {"v2", "DCCCE"}}), "v2"), "A.CCB", "DE"},
         }) {
        // clang-format on
        Project before = c.before;
        for (Track& track : before.tracks) {
            for (Clip& clip : track.clips.edit())
                clip.volume = clip.id == id("C") ? 0.2f : 1;
        }
        auto const done = replaceClip(before, id("p"), {fromTimeline, id("C")});
        ASSERT_TRUE(done) << c.name;
        EXPECT_EQ(drawing(done->project, "v1"), c.v1) << c.name;
        EXPECT_EQ(drawing(done->project, "v2"), c.v2) << c.name;
        EXPECT_EQ(find(done->project, "C").sourceStart, 10) << c.name;
        EXPECT_EQ(find(done->project, "C").volume, 0.2f) << c.name;
    }
    auto const filled = replaceClipReturningFiller(magnetic(sketch("CAAAppppB")), id("p"),
                                                   {fromTimeline, id("C")}, id("X"));
    EXPECT_EQ(drawing(filled->project), "AAACXXXB");
}

TEST(ReplaceClip, RefusalsSayWhy)
{
    Project const project = sketch({{"t1", "T"}, {"v1", "AApp"}, {"v2", "VV"}, {"a1", "SSqq"}});
    Project const tooShort = withFile(project, file("blip.mov", MediaKind::video, 0.05));
    // clang-format off
    struct Case { Project project; char const* clip; Replacement with; Expected refusal; };
    for (Case const& c : {
             Case{project, "A", {fromTimeline, id("A")}, Reason::replacesItself},
             Case{project, "T", {fromFile, id("talk.mov")}, Reason::textCarriesNoFile},
             Case{project, "A", {fromTimeline, id("p")}, Reason::noFileToBring},
             Case{project, "A", {fromTimeline, id("T")}, Reason::noFileToBring},
             Case{project, "S", {fromFile, id("face.jpg")}, Reason::photoForAudioClip},
             Case{project, "p", {fromFile, id("song.wav")}, Reason::audioForVideoClip},
             Case{project, "q", {fromFile, id("song.wav")}, {}},
             Case{project, "q", {fromFile, id("talk.mov")}, {}},
             Case{project, "p", {fromFile, id("gone")}, Reason::assetGone},
             Case{project, "p", {fromTimeline, id("Z")}, Reason::clipGone},
             Case{project, "Z", {fromFile, id("talk.mov")}, Reason::clipGone},
             Case{tooShort, "p", {fromFile, id("blip.mov")}, Reason::tooShort},
             Case{locked(project), "p", {fromFile, id("talk.mov")}, lockedTrack("v1")},
             Case{locked(project, "v2"), "p", {fromTimeline, id("V")}, lockedTrack("v2")},
         }) {
        // clang-format on
        auto const done = replaceClip(c.project, id(c.clip), c.with);
        EXPECT_EQ(done, c.refusal);
    }
}

} // namespace framewright
