#include "editor_home.h"

#include <gmock/gmock.h>

namespace framewright {

namespace {

/// A project outside any workspace, as its file.
std::filesystem::path looseProject(EditorHome& home, std::string const& brief)
{
    Project project = newProject();
    project.brief = brief;
    auto file = home.folder / "loose.fwp";
    put(file, ProjectDocument(project).data());
    return file;
}

} // namespace

TEST(Recovery, AProjectOutsideAnyWorkspaceHasACopyUntilItIsSaved)
{
    EditorHome home;
    auto const file = looseProject(home, "as saved");
    awaited(home.files().open(file));
    setBrief(home.editor(), "unsaved");
    ASSERT_TRUE(
        eventually([&] { return std::filesystem::exists(home.files().recovery().file()); }));
    EXPECT_EQ(briefIn(file), "as saved") << "Not written without a request.";

    home.restart();
    ASSERT_TRUE(home.files().recovery().waiting());
    EXPECT_EQ(home.files().recovery().waiting()->origin, file);
    ASSERT_TRUE(awaited(home.files().restoreRecovery()));
    EXPECT_EQ(home.editor().project().brief, "unsaved");
    EXPECT_TRUE(home.files().isDirty());
    EXPECT_EQ(briefIn(file), "as saved");

    awaited(home.files().save());
    EXPECT_EQ(briefIn(file), "unsaved");
    home.restart();
    EXPECT_FALSE(home.files().recovery().waiting()) << "The file holds everything.";
}

TEST(Recovery, ClosingWithoutTheChangesLeavesNoCopy)
{
    EditorHome home;
    awaited(home.files().open(looseProject(home, "as saved")));
    setBrief(home.editor(), "unsaved");
    ASSERT_TRUE(
        eventually([&] { return std::filesystem::exists(home.files().recovery().file()); }));

    auto const kept = awaited(home.files().close(ProjectFiles::Unsaved::keep));
    ASSERT_FALSE(kept);
    EXPECT_EQ(kept.refusal(), (Refusal{Reason::unsavedChanges, Subject::named("loose")}));
    EXPECT_TRUE(home.editor().isOpen());

    ASSERT_TRUE(awaited(home.files().close(ProjectFiles::Unsaved::discard)));
    EXPECT_FALSE(home.editor().isOpen());
    home.restart();
    EXPECT_FALSE(home.files().recovery().waiting());
}

TEST(Recovery, AForcedLeaveThatFailsKeepsTheCopy)
{
    EditorHome home;
    auto const junk = home.folder / "junk.fwp";
    put(junk, "{");
    awaited(home.files().open(looseProject(home, "as saved")));
    setBrief(home.editor(), "unsaved");
    auto const copy = home.files().recovery().file();
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(copy); }));

    ASSERT_TRUE(awaited(home.files().prepareToLeave(ProjectFiles::Unsaved::discard)));
    EXPECT_THROW(awaited(home.files().open(junk)), ProjectFileError);
    EXPECT_EQ(briefIn(copy), "unsaved");

    setBrief(home.editor(), "unsaved, too");
    home.files().abandonChanges();
    EXPECT_NO_THROW(home.files().saveBeforeQuitting());
    EXPECT_FALSE(std::filesystem::exists(copy)) << "The changes were not wanted.";
}

TEST(Recovery, TheCopyGoesWhenTheirVersionIsTaken)
{
    EditorHome home;
    auto const file = home.startProject("Healed");
    std::string const whole = contentsOf(file);
    put(file, "{");
    setBrief(home.editor(), "ours");
    auto const copy = home.files().recovery().file();
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(copy); }));

    put(file, whole + "\n");
    ASSERT_TRUE(eventually([&] { return !home.files().isDirty(); }));
    EXPECT_FALSE(std::filesystem::exists(copy));
}

TEST(Recovery, AWaitingCopyIsNeverOverwritten)
{
    EditorHome home;
    auto const file = looseProject(home, "as saved");
    awaited(home.files().open(file));
    setBrief(home.editor(), "of the first run");
    ASSERT_TRUE(
        eventually([&] { return std::filesystem::exists(home.files().recovery().file()); }));

    home.restart();
    auto const waiting = home.files().recovery().waiting()->file;
    awaited(home.files().open(file));
    setBrief(home.editor(), "of the second run");
    ASSERT_TRUE(
        eventually([&] { return std::filesystem::exists(home.files().recovery().file()); }));

    EXPECT_EQ(briefIn(waiting), "of the first run");
    EXPECT_EQ(briefIn(home.files().recovery().file()), "of the second run");
    home.restart();
    ASSERT_TRUE(home.files().discardRecovery());
    EXPECT_FALSE(std::filesystem::exists(waiting));
    home.restart();
    ASSERT_TRUE(home.files().recovery().waiting()) << "The second run's copy comes up next.";
    EXPECT_EQ(briefIn(home.files().recovery().waiting()->file), "of the second run");
}

TEST(Recovery, AProjectThatCrashesTheEditorIsNotReopenedForever)
{
    EditorHome home;
    home.startProject("Deadly");
    awaited(home.editor().media().loaded());
    int starts = 0;
    for (; starts < 10; ++starts) {
        home.restart();
        home.files().reopenLast(); // Crashes before the event loop runs.
        if (!home.editor().isOpen())
            break;
        // What the crashed process would have left behind.
        home.defaults.setNumber("project.openAttempts", starts + 1);
    }
    EXPECT_EQ(starts, 3);
    EXPECT_THAT(home.files().problem(), testing::HasSubstr("Deadly"));
}

} // namespace framewright
