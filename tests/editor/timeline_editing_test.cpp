#include "editor_home.h"

#include <gmock/gmock.h>

namespace framewright {

namespace {

/// An editor with three placeholders of two seconds on the magnetic "Video 1".
class ThreeShots {
public:
    ThreeShots()
    {
        home.startProject("Shots");
        for (char const* const name : {"one", "two", "three"}) {
            NewPlaceholder shot;
            shot.id = Id::random();
            shot.name = name;
            shot.length = 2;
            (void)editor().addPlaceholder(shot);
        }
    }

    AppState& editor() { return home.editor(); }
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

} // namespace

TEST(TimelineEditing, EachCommandIsOneStepUnderItsMenuName)
{
    struct Case {
        char const* name;
        std::function<bool(AppState&, Id const&)> edit;
    };
    for (Case const &c : {
             Case{"Add Placeholder",
                  [](AppState&e, Id const&) {
                      NewPlaceholder p;
                      p.id = Id::random();
                      p.name = "x";
                      return bool(e.addPlaceholder(p));
                  }},
             Case{"Split at Playhead",
                  [](AppState&e, Id const&) {
                      e.seek(3);
                      return bool(e.splitAtPlayhead());
                  }},
             Case{"Trim Clip",
                  [](AppState&e, Id const&id) {
                      Trim t;
                      t.end = 3;
                      return bool(e.trimClip(id, t));
                  }},
             Case{"Move Clip",
                  [](AppState&e, Id const&id) { return bool(e.moveClip(id, 0, std::nullopt)); }},
             Case{"Delete Clip", [](AppState&e, Id const&) { return bool(e.deleteSelection()); }},
             Case{"Duplicate", [](AppState&e, Id const&) { return bool(e.duplicateSelection()); }},
             Case{"Paste", [](AppState&e, Id const&) { return e.copySelection() && e.paste(); }},
             Case{"Change Level",
                  [](AppState&e, Id const&id) {
                      AppState::ClipChanges c;
                      c.volume = 0.5f;
                      return bool(e.changeClip(id, c));
                  }},
             Case{"Transform Clip",
                  [](AppState&e, Id const&) {
                      ClipTransform t;
                      t.scale = 2;
                      return bool(e.setSelectedTransform(t));
                  }},
             Case{"Rename Placeholder",
                  [](AppState&e, Id const&id) { return bool(e.renamePlaceholder(id, "new")); }},
             Case{"Add Track",
                  [](AppState&e, Id const&) {
                      NewTrack t;
                      return bool(e.addTrack(t));
                  }},
             Case{"Delete Track",
                  [](AppState&e, Id const&) {
                      return bool(e.removeTrack(e.project().tracks[1].id));
                  }},
             Case{"Move Track",
                  [](AppState&e, Id const&) {
                      return bool(e.moveTrack(e.project().tracks[1].id, -1));
                  }},
             Case{"Change Track",
                  [](AppState&e, Id const&) {
                      TrackChanges t;
                      t.isMuted = true;
                      return bool(e.changeTrack(e.project().tracks[0].id, t));
                  }},
             Case{"Change Ratio to 1:1",
                  [](AppState&e, Id const&) {
                      e.changeAspect(AspectPreset::square);
                      return true;
                  }},
         }) {
        ThreeShots shots;
        Id const second = shots.clips()[1].id;
        shots.editor().select(second);
        Project const before = shots.editor().project();
        auto const steps = shots.editor().history().undoCount();

        ASSERT_TRUE(c.edit(shots.editor(), second)) << c.name;
        EXPECT_EQ(shots.editor().history().undoCount(), steps + 1) << c.name;
        EXPECT_EQ(shots.editor().history().undoName(), c.name);
        Project const after = shots.editor().project();
        EXPECT_FALSE(after == before) << c.name;

        shots.editor().undo();
        EXPECT_EQ(shots.editor().project(), before) << c.name;
        shots.editor().redo();
        EXPECT_EQ(shots.editor().project(), after) << c.name;
    }
}

TEST(TimelineEditing, TheSelectionFollowsTheEdit)
{
    ThreeShots shots;
    Id const second = shots.clips()[1].id;
    shots.editor().select(second);
    shots.editor().seek(1.5);

    ASSERT_TRUE(shots.editor().duplicateSelection());
    EXPECT_EQ(shots.order(), "one two two three");
    EXPECT_EQ(shots.editor().selectedClip(), shots.clips()[2].id) << "The copy is selected.";

    ASSERT_TRUE(shots.editor().deleteSelection());
    EXPECT_FALSE(shots.editor().selectedClip()) << "What is gone is not selected.";
    EXPECT_EQ(shots.editor().currentTime(), 1.5) << "The playhead stays.";
    EXPECT_EQ(shots.editor().deleteSelection().refusal().reason, Reason::nothingSelected);

    shots.editor().select(second);
    ASSERT_TRUE(shots.editor().copySelection());
    shots.editor().seek(0);
    ASSERT_TRUE(shots.editor().paste());
    EXPECT_EQ(shots.order(), "two one two three");
    EXPECT_EQ(shots.editor().selectedClip(), shots.clips()[0].id) << "What was pasted is selected.";
    shots.editor().undo();
    EXPECT_FALSE(shots.editor().selectedClip());
}

TEST(TimelineEditing, ARefusedOrEmptyEditIsNoStep)
{
    ThreeShots shots;
    Id const first = shots.clips()[0].id;
    auto const steps = shots.editor().history().undoCount();

    ASSERT_TRUE(shots.editor().moveClip(first, 0, std::nullopt));
    EXPECT_EQ(shots.editor().history().undoCount(), steps) << "It was there already.";

    TrackChanges lock;
    lock.isLocked = true;
    ASSERT_TRUE(shots.editor().changeTrack(shots.editor().project().tracks[0].id, lock));
    Project const locked = shots.editor().project();
    EXPECT_EQ(shots.editor().removeClips(std::span(&first, 1)).refusal().reason,
              Reason::trackLocked);
    EXPECT_EQ(shots.editor().project(), locked);
    EXPECT_EQ(shots.editor().history().undoCount(), steps + 1);
}

} // namespace framewright
