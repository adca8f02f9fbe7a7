#include "editor_home.h"

#include "editor/commands/selection_commands.h"
#include "editor/commands/text_commands.h"
#include "editor/commands/track_commands.h"

#include <gmock/gmock.h>

#include <vector>

namespace framewright {

namespace {

/// An editor with three placeholders of two seconds on the magnetic "Video 1".
class ThreeShots {
public:
    ThreeShots()
    {
        home.startProject("Shots");
        for (char const* const name : {"one", "two", "three"})
            (void)addPlaceholder(editing(), {name, 2});
    }

    Editing editing() { return home.editing(); }
    AppState& editor() { return home.editor(); }
    Selection& selection() { return editor().selection(); }
    UndoHistory const& history() { return editor().document().history(); }
    std::vector<Clip> const& clips() { return *editor().project().tracks[0].clips; }

    /// "one two three"
    std::string order()
    {
        std::string names;
        for (Clip const& clip : clips())
            names += (names.empty() ? "" : " ") + clip.placeholderName.value_or("?");
        return names;
    }

    EditorHome home;
};

ClipChanges volumeChange(float volume)
{
    ClipChanges changes;
    changes.volume = volume;
    return changes;
}

ClipChanges nameChange(std::string name)
{
    ClipChanges changes;
    changes.placeholderName = std::move(name);
    return changes;
}

} // namespace

TEST(Commands, EachIsOneStepUnderItsMenuName)
{
    // clang-format off
    struct Case { char const* name; std::function<bool(Editing, Id const&)> edit; };
    for (Case const& c : {
             Case{"Add Placeholder", [](Editing e, Id const&) { return bool(addPlaceholder(e, {"x"})); }},
             Case{"Split at Playhead", [](Editing e, Id const&) { return seek(e, 3) && splitAtPlayhead(e); }},
             Case{"Trim Clip", [](Editing e, Id const& id) { Trim t; t.end = 3; return bool(trimClip(e, id, t)); }},
             Case{"Move Clip", [](Editing e, Id const& id) { return bool(moveClip(e, id, 0)); }},
             Case{"Delete Clip", [](Editing e, Id const&) { return bool(deleteSelection(e)); }},
             Case{"Duplicate", [](Editing e, Id const&) { return bool(duplicateSelection(e)); }},
             Case{"Paste", [](Editing e, Id const&) { return copySelection(e) && paste(e); }},
             Case{"Change Level", [](Editing e, Id const& id) { return bool(changeClip(e, id, volumeChange(0.5f))); }},
             Case{"Transform Clip", [](Editing e, Id const&) { ClipTransform t; t.scale = 2; return bool(setSelectedTransform(e, t)); }},
             Case{"Rename Placeholder", [](Editing e, Id const& id) { return bool(changeClip(e, id, nameChange("new"))); }},
             Case{"Add Text", [](Editing e, Id const&) { NewText t; t.text.text = "Hi"; return bool(addText(e, t)); }},
             Case{"Add Track", [](Editing e, Id const&) { return bool(addTrack(e, {})); }},
             Case{"Delete Track", [](Editing e, Id const&) { return bool(removeTrack(e, e.project().tracks[1].id)); }},
             Case{"Move Track", [](Editing e, Id const&) { return bool(moveTrack(e, e.project().tracks[1].id, -1)); }},
             Case{"Change Track", [](Editing e, Id const&) { TrackChanges t; t.isMuted = true; return bool(changeTrack(e, e.project().tracks[0].id, t)); }},
             Case{"Change Ratio to 1:1", [](Editing e, Id const&) { changeAspect(e, AspectPreset::square); return true; }},
         }) {
        // clang-format on
        ThreeShots shots;
        Id const second = shots.clips()[1].id;
        shots.selection().selectClip(second);
        Project const before = shots.editor().project();
        auto const steps = shots.history().undoCount();

        ASSERT_TRUE(c.edit(shots.editing(), second)) << c.name;
        EXPECT_EQ(shots.history().undoCount(), steps + 1) << c.name;
        EXPECT_EQ(shots.history().undoName(), c.name);
        Project const after = shots.editor().project();
        EXPECT_FALSE(after == before) << c.name;

        ASSERT_TRUE(undo(shots.editing()));
        EXPECT_EQ(shots.editor().project(), before) << c.name;
        ASSERT_TRUE(redo(shots.editing()));
        EXPECT_EQ(shots.editor().project(), after) << c.name;
    }
}

TEST(Commands, EveryChangeIsReportedWithItsAuthor)
{
    ThreeShots shots;
    std::vector<ProjectChange> changes;
    QObject::connect(&shots.editor().document(), &Document::changed,
                     [&](ProjectChange const& change) { changes.push_back(change); });
    Project const before = shots.editor().project();
    (void)removeTrack({shots.editor(), Author::window}, before.tracks[1].id);
    (void)undo(shots.editing());

    using Kind = ProjectChange::Kind;
    ASSERT_EQ(changes.size(), 2u);
    EXPECT_TRUE(changes[0].kind == Kind::edit && changes[0].author == Author::window);
    EXPECT_EQ(changes[0].step, "Delete Track");
    EXPECT_EQ(changes[0].before, before);
    EXPECT_EQ(changes[0].after.tracks.size(), 1u);
    EXPECT_TRUE(changes[1].kind == Kind::undo && changes[1].author == Author::commandLine);
    EXPECT_EQ(changes[1].after, before);
}

TEST(Commands, TheSelectionFollowsTheEdit)
{
    ThreeShots shots;
    Id const second = shots.clips()[1].id;
    shots.selection().selectClip(second);
    ASSERT_TRUE(seek(shots.editing(), 1.5));

    ASSERT_TRUE(duplicateSelection(shots.editing()));
    EXPECT_EQ(shots.order(), "one two two three");
    EXPECT_THAT(shots.selection().clips(), testing::ElementsAre(shots.clips()[2].id))
        << "The copy is selected.";

    ASSERT_TRUE(deleteSelection(shots.editing()));
    EXPECT_THAT(shots.selection().clips(), testing::IsEmpty()) << "A removed clip is deselected.";
    EXPECT_EQ(shots.selection().playhead(), 1.5) << "The playhead stays.";
    EXPECT_EQ(deleteSelection(shots.editing()).refusal().reason, Reason::nothingSelected);

    shots.selection().selectClip(second);
    ASSERT_TRUE(copySelection(shots.editing()));
    ASSERT_TRUE(seek(shots.editing(), 0));
    ASSERT_TRUE(paste(shots.editing()));
    EXPECT_EQ(shots.order(), "two one two three");
    EXPECT_THAT(shots.selection().clips(), testing::ElementsAre(shots.clips()[0].id));
    ASSERT_TRUE(undo(shots.editing()));
    EXPECT_THAT(shots.selection().clips(), testing::IsEmpty());

    Id const both[] = {shots.clips()[0].id, shots.clips()[2].id};
    shots.selection().selectClips(both);
    ASSERT_TRUE(deleteSelection(shots.editing()));
    EXPECT_EQ(shots.order(), "two");
}

TEST(Commands, ARemovedCaptionIsDeselected)
{
    ThreeShots shots;
    SubtitleData captions;
    captions.bars.push_back({Id::random(), 0, 1, "hello", {}});
    Id const bar = captions.bars[0].id, track = Id::random(), clip = shots.clips()[0].id;
    shots.editor().commit(addSubtitleTrack(shots.editor().project(), track, captions), "Captions",
                          Author::commandLine);
    shots.selection().selectClip(clip);
    shots.selection().selectBar(bar);
    EXPECT_EQ(shots.selection().bar(), bar);
    EXPECT_THAT(shots.selection().clips(), testing::IsEmpty());
    EXPECT_EQ(shots.selection().activeTrack(), track);

    ASSERT_TRUE(undo(shots.editing()));
    EXPECT_FALSE(shots.selection().bar());
    EXPECT_EQ(shots.selection().activeTrack(), shots.editor().project().tracks[0].id);
}

TEST(Commands, ARefusedOrEmptyEditIsNoStep)
{
    ThreeShots shots;
    Id const first = shots.clips()[0].id;
    auto const steps = shots.history().undoCount();

    ASSERT_TRUE(moveClip(shots.editing(), first, 0));
    changeAspect(shots.editing(), shots.editor().project().aspect);
    EXPECT_EQ(shots.history().undoCount(), steps) << "Nothing changed.";

    TrackChanges lock;
    lock.isLocked = true;
    Id const track = shots.editor().project().tracks[0].id;
    ASSERT_TRUE(changeTrack(shots.editing(), track, lock));
    Project const locked = shots.editor().project();
    EXPECT_EQ(removeClips(shots.editing(), std::span(&first, 1)).refusal(),
              (Refusal{Reason::trackLocked, Subject::track(track)}));
    EXPECT_EQ(shots.editor().project(), locked);
    EXPECT_EQ(shots.history().undoCount(), steps + 1);

    ASSERT_TRUE(awaited(shots.home.files().close(ProjectFiles::Unsaved::keep)));
    EXPECT_EQ(addPlaceholder(shots.editing(), {"x"}).refusal().reason, Reason::noProject);
}

} // namespace framewright
