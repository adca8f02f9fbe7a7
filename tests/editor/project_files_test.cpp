#include "editor_home.h"

#include <gmock/gmock.h>

namespace framewright {

using testing::HasSubstr;

namespace {

/// Replaces text in a file as another program would.
void replaceIn(std::filesystem::path const& file, std::string const& from, std::string const& to)
{
    std::string text = contentsOf(file);
    text.replace(text.find(from), from.size(), to);
    put(file, text);
}

std::uintmax_t inodeOf(std::filesystem::path const& file)
{
    struct stat status {};
    ::stat(file.c_str(), &status);
    return status.st_ino;
}

} // namespace

TEST(Saving, ABurstOfEditsIsOneWrite)
{
    EditorHome home;
    auto const file = home.startProject("Burst");
    int saves = 0;
    QObject::connect(&home.files(), &ProjectFiles::saved, [&] { ++saves; });

    for (int i = 1; i <= 10; ++i)
        setBrief(home.editor(), std::to_string(i));
    EXPECT_TRUE(home.files().isDirty());
    EXPECT_EQ(briefIn(file), "") << "Nothing is written at once.";

    ASSERT_TRUE(eventually([&] { return !home.files().isDirty(); }));
    EXPECT_EQ(saves, 1);
    EXPECT_EQ(briefIn(file), "10");
}

TEST(Saving, AnEditMadeDuringASaveReachesTheDiskToo)
{
    EditorHome home;
    auto const file = home.startProject("During");
    setBrief(home.editor(), "first");
    auto const saving = home.files().save(); // The worker has its snapshot by now.
    setBrief(home.editor(), "second");

    ASSERT_TRUE(eventually([&] { return !home.files().isDirty(); }));
    EXPECT_EQ(briefIn(file), "second");
}

TEST(Saving, WithoutAChangeTheFileIsNotWritten)
{
    EditorHome home;
    auto const file = home.startProject("Still");
    setBrief(home.editor(), "same");
    awaited(home.files().save());
    auto const bytes = contentsOf(file);
    auto const inode = inodeOf(file);

    setBrief(home.editor(), "other");
    home.editor().undo(Author::commandLine);
    awaited(home.files().save());

    EXPECT_EQ(contentsOf(file), bytes);
    EXPECT_EQ(inodeOf(file), inode);
}

TEST(Saving, TheSavedProjectIsReopenedAfterACrash)
{
    EditorHome home;
    auto const file = home.startProject("Kept");
    setBrief(home.editor(), "saved");
    awaited(home.files().save());
    setBrief(home.editor(), "not yet");

    home.restart();
    home.files().reopenLast();

    EXPECT_EQ(home.files().file(), file);
    EXPECT_EQ(home.editor().project().brief, "saved");
}

TEST(Saving, AFileThatCannotBeWrittenKeepsTheProjectDirtyAndACopy)
{
    EditorHome home;
    auto const file = home.startProject("Blocked");
    std::filesystem::remove(file);
    std::filesystem::create_directory(file); // A folder in its place: no write can succeed.
    setBrief(home.editor(), "precious");

    // The worker writes the copy before the main thread learns of the failure.
    ASSERT_TRUE(eventually([&] { return !home.files().problem().empty(); }));
    EXPECT_TRUE(home.files().isDirty());
    EXPECT_THAT(home.files().problem(), HasSubstr("Could not save Blocked's project.json"));
    EXPECT_EQ(briefIn(home.files().recovery().file()), "precious");

    std::filesystem::remove(file);
    setBrief(home.editor(), "precious still");
    ASSERT_TRUE(eventually([&] { return !home.files().isDirty(); })) << "Retried automatically.";
    EXPECT_EQ(briefIn(file), "precious still");
    EXPECT_EQ(home.files().problem(), "");
    EXPECT_FALSE(std::filesystem::exists(home.files().recovery().file()));
}

TEST(OutsideEdit, BecomesAStepThatCanBeUndone)
{
    EditorHome home;
    auto const file = home.startProject("Shared");
    setBrief(home.editor(), "ours");
    awaited(home.files().save());

    replaceIn(file, "ours", "theirs");

    ASSERT_TRUE(eventually([&] { return home.editor().project().brief == "theirs"; }));
    EXPECT_EQ(home.editor().document().history().undoName(), "Edit on Disk");
    EXPECT_FALSE(home.files().isDirty()) << "Memory and file agree.";
    home.editor().undo(Author::commandLine);
    EXPECT_EQ(home.editor().project().brief, "ours");
}

TEST(OutsideEdit, IsTakenInBeforeOursIsWritten)
{
    EditorHome home;
    auto const file = home.startProject("Race");
    setBrief(home.editor(), "first");
    awaited(home.files().save());

    setBrief(home.editor(), "ours");
    replaceIn(file, "first", "theirs");
    // Saved before the watcher could report.
    awaited(home.files().save());

    EXPECT_EQ(briefIn(file), "theirs");
    EXPECT_EQ(home.editor().project().brief, "theirs");
    home.editor().undo(Author::commandLine);
    EXPECT_EQ(home.editor().project().brief, "ours") << "Ours is a step back, not lost.";
}

TEST(OutsideEdit, AnInvalidFileIsLeftAloneUntilItIsValidAgain)
{
    EditorHome home;
    auto const file = home.startProject("Half");
    setBrief(home.editor(), "whole");
    awaited(home.files().save());
    std::string const whole = contentsOf(file);

    put(file, whole.substr(0, whole.size() / 2));
    ASSERT_TRUE(eventually([&] { return !home.files().problem().empty(); }));
    EXPECT_EQ(home.files().problem(), "Half's project.json on disk is not a valid project; the "
                                      "app keeps its own copy.");
    EXPECT_EQ(home.editor().project().brief, "whole");
    setBrief(home.editor(), "edited");
    EXPECT_THROW(awaited(home.files().save()), ProjectFileError) << "Theirs is not overwritten.";
    EXPECT_EQ(contentsOf(file).size(), whole.size() / 2);

    put(file, whole);
    ASSERT_TRUE(eventually([&] { return !home.files().isDirty(); }))
        << "Valid again, so ours is saved.";
    EXPECT_EQ(briefIn(file), "edited");

    std::string finished = whole;
    finished.replace(finished.find("whole"), 5, "WHOLE");
    put(file, finished);
    ASSERT_TRUE(eventually([&] { return home.editor().project().brief == "WHOLE"; }));
    EXPECT_EQ(home.files().problem(), "");
}

TEST(Opening, AProjectThatCannotBeReadLeavesTheOpenOne)
{
    EditorHome home;
    auto const file = home.startProject("Good");
    struct Case {
        char const* name;
        std::string content;
        char const* sentence;
    };
    for (Case const& c : {
             Case{"empty", "",
                  "is not a valid project: The document is not valid JSON (line 1, column 1)."},
             Case{"newer", R"({"version": 6})",
                  "written by a newer Framewright (format 6, this one reads up to 5)"},
             Case{"deep",
                  R"({"version": 5, "assetRefs": [], "project": {"aspect": "portrait", "assets": [],
                              "tracks": [{"id": 7}]}})",
                  "project.tracks[0].id must be a UUID."},
         }) {
        auto const bad = home.workspace() / "projects" / c.name / "project.json";
        put(bad, c.content);
        try {
            awaited(home.files().open(bad));
            FAIL() << c.name;
        } catch (ProjectFileError const& error) {
            EXPECT_THAT(error.what(), HasSubstr(c.sentence));
        }
        EXPECT_EQ(home.files().file(), file) << c.name;
        EXPECT_EQ(contentsOf(bad), c.content) << "It is not changed.";
    }
}

TEST(Opening, AMovedFileIsFoundAndCorrectedInEveryStep)
{
    EditorHome home;
    auto const file = home.startProject("Moving");
    put(home.folder / "old" / "note.bin", "not media, but a file");
    Project project = home.editor().project();
    MediaAsset asset;
    asset.id = Id::random();
    asset.url.path = home.folder / "old" / "note.bin";
    asset.playbackURL = asset.url;
    project.assets.edit()[asset.id] = asset;
    home.editor().commit(project, "Import Media", Author::commandLine);
    awaited(home.files().save());

    std::filesystem::create_directories(home.folder / "new");
    std::filesystem::rename(home.folder / "old" / "note.bin", home.folder / "new" / "note.bin");
    Workspace::setMediaFolders({home.folder / "new"}, home.workspace());
    awaited(home.files().open(file));
    awaited(home.editor().media().loaded());

    EXPECT_EQ(home.editor().project().asset(asset.id)->url.path, home.folder / "new" / "note.bin");
}

} // namespace framewright
