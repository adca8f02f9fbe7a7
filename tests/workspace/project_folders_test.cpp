#include "workspace/project_folders.h"

#include "platform/test_folder.h"
#include "workspace/workspace.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace framewright {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using namespace std::string_literals;

std::vector<std::string> namesOf(std::vector<ProjectListing> const& projects)
{
    std::vector<std::string> names;
    for (ProjectListing const& project : projects)
        names.push_back(project.name);
    return names;
}

} // namespace

TEST(ListProjects, MostRecentFirstWithoutOtherFiles)
{
    TestFolder const folder;
    fs::path const projects = folder / "projects";
    put(projects / "B/project.json");
    put(projects / "A/project.json");
    put(projects / "Newest/project.json");
    put(projects / "Newest/thumbnail.png");
    fs::create_directories(projects / "Empty/project.json");
    put(projects / ".hidden/project.json");
    put(projects / "a file");
    put(folder / "elsewhere/project.json");
    fs::create_directory_symlink(folder / "elsewhere", projects / "Linked");
    fs::create_symlink("nowhere", projects / "dangling");
    ASSERT_EQ(::mkfifo((projects / "pipe").c_str(), 0600), 0);
    put(projects / "odd \xFF/project.json");

    fs::file_time_type const start = fs::file_time_type::clock::now();
    auto const age = [&](char const* name, int hours) {
        fs::last_write_time(projects / name, start - std::chrono::hours(hours));
    };
    age("Newest/project.json", 0);
    age("A/project.json", 2);
    age("B/project.json", 2);
    age("A", 0); // A folder's time moves with every export; its document's is what counts.
    age("odd \xFF/project.json", 3);
    age("Linked/project.json", 4);
    age("Empty", 5);

    auto const list = listProjects(folder.path());
    EXPECT_THAT(namesOf(list),
                ElementsAre("Newest", "A", "B", "odd \xEF\xBF\xBD", "Linked", "Empty"));
    EXPECT_EQ(list[3].folder, projects / "odd \xFF");
    EXPECT_TRUE(list[0].hasDocument && list[0].hasThumbnail);
    EXPECT_TRUE(list[1].hasDocument && !list[1].hasThumbnail);
    EXPECT_FALSE(list[5].hasDocument);
}

TEST(ListProjects, NoneWithoutAProjectsFolder)
{
    TestFolder const folder;
    EXPECT_TRUE(listProjects(folder.path()).empty());
    put(folder / "projects");
    EXPECT_EQ(failureOf<WorkspaceError>([&] { listProjects(folder.path()); }),
              "“" + (folder / "projects").string() + "” could not be listed: Not a directory.");
}

TEST(ProjectName, IsValidForAFolder)
{
    struct Case {
        std::string name;
        std::string usable;
    };
    for (Case const& c : {
             Case{"Hook v2", "Hook v2"},
             Case{"  Hook\t\n", "Hook"},
             Case{"\xC2\xA0Größe 👩‍🍳 \xE3\x80\x80", "Größe 👩‍🍳"},
             Case{"a.b", "a.b"},
             Case{"-rf *?\\\"'", "-rf *?\\\"'"},
             Case{std::string(200, 'n'), std::string(200, 'n')},
         }) {
        auto const name = validProjectName(c.name);
        ASSERT_TRUE(name) << c.name;
        EXPECT_EQ(*name, c.usable);
    }
    // clang-format off
    struct Unusable { std::string name; Reason reason; std::string shown; };
    for (Unusable const& c : {
             Unusable{"", Reason::nameEmpty, ""},
             Unusable{" \t ", Reason::nameEmpty, ""},
             Unusable{"a/b", Reason::nameHasSlash, "a/b"},
             Unusable{".", Reason::nameBeginsWithDot, "."},
             Unusable{" ..", Reason::nameBeginsWithDot, ".."},
             Unusable{".hidden", Reason::nameBeginsWithDot, ".hidden"},
             Unusable{"a\0b"s, Reason::nameHasControlCharacter, "a\uFFFDb"},
             Unusable{"a\nb", Reason::nameHasControlCharacter, "a\uFFFDb"},
             Unusable{"a\u0085b", Reason::nameHasControlCharacter, "a\uFFFDb"},
             Unusable{"a\xFF", Reason::nameNotText, "a\uFFFD"},
             Unusable{std::string(201, 'n'), Reason::nameTooLong, std::string(40, 'n') + "…"},
         }) {
        // clang-format on
        auto const name = validProjectName(c.name);
        ASSERT_FALSE(name) << c.name;
        EXPECT_EQ(name.refusal().reason, c.reason) << c.name;
        EXPECT_EQ(name.refusal().subject.text, c.shown);
    }
}

TEST(ProjectFolder, GetsAFreeName)
{
    TestFolder const folder;
    for (char const* const expected : {"Hook", "Hook 2", "Hook 3"})
        EXPECT_EQ(*createProjectFolder(folder.path(), "Hook"), folder / "projects" / expected);
    EXPECT_EQ(*createProjectFolder(folder.path(), "hook 2"), folder / "projects/hook 2 2");
    EXPECT_FALSE(createProjectFolder(folder.path(), "a/b"));
    put(folder / "other/projects");
    EXPECT_NE(failureOf<WorkspaceError>([&] { (void)createProjectFolder(folder / "other", "x"); }),
              "");
}

TEST(ProjectFolder, IsRenamedUnlessTheNameIsTaken)
{
    TestFolder const folder;
    put(folder / "Hook/project.json", "mine");
    put(folder / "Other/project.json", "other");
    fs::create_directory(folder / "Empty");

    EXPECT_EQ(*renameProject(folder / "Hook/", " hook "), folder / "hook");
    EXPECT_EQ(*renameProject(folder / "hook", "hook"), folder / "hook");
    EXPECT_EQ(*renameProject(folder / "hook", "Opening"), folder / "Opening");
    fs::create_directory(folder / "opening");
    for (std::string const taken : {"Other", "OTHER", "Empty", "opening"})
        EXPECT_EQ(renameProject(folder / "Opening", taken).refusal(),
                  (Refusal{Reason::projectNameTaken, Subject::named(taken)}));
    EXPECT_FALSE(renameProject(folder / "Opening", "../x"));
    EXPECT_EQ(renameProject(folder / "gone", "x").refusal(),
              (Refusal{Reason::folderGone, Subject::named((folder / "gone").string())}));
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("Empty", "Opening", "Other", "opening"));
    EXPECT_EQ(contentsOf(folder / "Opening/project.json"), "mine");
}

TEST(ProjectFolder, IsCopiedWithoutItsExports)
{
    TestFolder const folder;
    put(folder / "Hook/project.json", "document");
    put(folder / "Hook/thumbnail.png", "picture");
    put(folder / "Hook/media/deep/a.mp4", "media");
    put(folder / "Hook/media/exports/b.mp4", "media too");
    put(folder / "Hook/notes.md", "notes");
    put(folder / "Hook/exports/big.mp4", "export");
    put(folder / "Hook/.project.json.0123456789abcdef.framewright-new");
    fs::create_symlink("deep/a.mp4", folder / "Hook/media/link.mp4");

    EXPECT_EQ(*duplicateProject(folder / "Hook"), folder / "Hook 2");
    EXPECT_EQ(*duplicateProject(folder / "Hook/", "Variant"), folder / "Variant");
    EXPECT_FALSE(duplicateProject(folder / "Hook", ".x"));
    for (char const* const copy : {"Hook 2", "Variant"}) {
        EXPECT_THAT(namesIn(folder / copy),
                    ElementsAre("media", "notes.md", "project.json", "thumbnail.png"));
        EXPECT_EQ(contentsOf(folder / copy / "media/link.mp4"), "media");
        EXPECT_TRUE(fs::is_symlink(folder / copy / "media/link.mp4"));
        EXPECT_EQ(contentsOf(folder / copy / "media/exports/b.mp4"), "media too");
    }
    EXPECT_TRUE(fs::exists(folder / "Hook/exports/big.mp4"));
}

TEST(ProjectFolder, ACopyThatFailsLeavesNothing)
{
    TestFolder const folder;
    put(folder / "Hook/project.json", "document");
    fs::create_directory(folder / "Hook/media");
    ASSERT_EQ(::mkfifo((folder / "Hook/media/pipe").c_str(), 0600), 0);
    // One left by a process that is gone, and one of a process that is at work.
    pid_t const nobody = 0x3FFFFFFF;
    fs::create_directory(folder / (".framewright-copy-" + std::to_string(nobody) + "-1"));
    std::string const atWork = ".framewright-copy-" + std::to_string(::getppid()) + "-1";
    fs::create_directory(folder / atWork);

    EXPECT_NE(failureOf<WorkspaceError>([&] { (void)duplicateProject(folder / "Hook"); }), "");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre(atWork, "Hook"));
}

TEST(ProjectFolder, GoesToTheTrashAndIsNeverErased)
{
    TestFolder const folder;
    put(folder / "projects/Hook/project.json", "document");
    {
        TestVariable const data("XDG_DATA_HOME", (folder / "data").c_str());
        fs::create_directory(folder / "data");
        fs::path const inTrash = *trashProject(folder / "projects/Hook/");
        EXPECT_EQ(contentsOf(inTrash / "project.json"), "document");
        EXPECT_FALSE(fs::exists(folder / "projects/Hook"));
    }
    put(folder / "projects/Hook/project.json", "again");
    put(folder / "file");
    for (std::string const& nowhere : {(folder / "file").string(), std::string("relative")}) {
        TestVariable const data("XDG_DATA_HOME", nowhere.c_str());
        EXPECT_THAT(
            failureOf<WorkspaceError>([&] { (void)trashProject(folder / "projects/Hook"); }),
            testing::StartsWith("“Hook” could not be moved to the trash and stays where it is: "));
        EXPECT_EQ(contentsOf(folder / "projects/Hook/project.json"), "again");
    }
}

} // namespace framewright
