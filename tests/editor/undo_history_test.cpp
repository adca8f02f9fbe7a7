#include "editor/document/undo_history.h"

#include <gtest/gtest.h>

namespace framewright {

namespace {

Project projectWithClips(std::size_t count)
{
    Project project = newProject();
    project.tracks[0].clips.edit().resize(count);
    return project;
}

/// The same project after an edit of its clips.
Project edited(Project project, double time)
{
    project.tracks[0].clips.edit()[0].timelineStart = time;
    return project;
}

} // namespace

TEST(UndoHistory, StepsBackAndForth)
{
    UndoHistory history;
    Project const first = newProject();
    Project second = first;
    second.brief = "two";
    Project third = second;
    third.brief = "three";
    history.record(first, second, "Two");
    history.record(second, third, "Three");

    auto step = history.undo(third);
    ASSERT_TRUE(step);
    EXPECT_EQ(step->actionName, "Three");
    EXPECT_EQ(step->project, second);
    EXPECT_EQ(history.redoName(), "Three");

    step = history.redo(second);
    ASSERT_TRUE(step);
    EXPECT_EQ(step->project, third);
    EXPECT_FALSE(history.redo(third));

    ASSERT_TRUE(history.undo(third));
    history.record(second, first, "Other");
    EXPECT_FALSE(history.redoName()) << "A new change clears redo.";
    EXPECT_EQ(history.undoCount(), 2u);
}

TEST(UndoHistory, DropsTheOldestBeyondItsMemoryButKeepsAHundred)
{
    std::size_t const clips = 1000;
    std::size_t const limit = 150 * clips * sizeof(Clip);
    UndoHistory history(limit);
    Project project = projectWithClips(clips);
    for (int i = 1; i <= 400; ++i) {
        Project next = edited(project, i);
        history.record(project, next, std::to_string(i));
        project = std::move(next);
    }
    EXPECT_LE(history.memory(), limit);
    EXPECT_GT(history.undoCount(), 120u);
    EXPECT_LT(history.undoCount(), 151u);
    EXPECT_EQ(history.undoName(), "400") << "The newest stay.";

    UndoHistory tight(1);
    for (int i = 1; i <= 400; ++i)
        tight.record(project, edited(project, i), "step");
    EXPECT_EQ(tight.undoCount(), UndoHistory::fewestSteps);
}

TEST(UndoHistory, AStepCostsWhatItChanged)
{
    UndoHistory history;
    Project project = projectWithClips(10000);
    for (int i = 0; i < 1000; ++i) {
        Project next = project;
        next.tracks[1].volume = float(i) / 1000;
        history.record(project, next, "Change Level");
        project = std::move(next);
    }
    EXPECT_LT(history.memory(), std::size_t{4} << 20);
}

} // namespace framewright
