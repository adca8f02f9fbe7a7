#include "workspace/workspace.h"

#include "platform/test_folder.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <random>

namespace framewright {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

std::chrono::system_clock::time_point const someTime{std::chrono::seconds(1'795'339'800)};

} // namespace

TEST(Workspace, IsAFolderWithOneOfItsMarks)
{
    struct Case {
        char const* file;
        bool isWorkspace;
    };
    for (Case const& c :
         {Case{"workspace.json", true}, Case{"library.json", true}, Case{"Framewright.md", true},
          Case{"CLAUDE.md", false}, Case{"workspace.json/inside", false},
          Case{"projects/workspace.json", false}}) {
        TestFolder const folder;
        put(folder / c.file);
        EXPECT_EQ(Workspace::isWorkspace(folder.path()), c.isWorkspace) << c.file;
    }
    EXPECT_FALSE(Workspace::isWorkspace("/nowhere/at/all"));
}

TEST(Workspace, ProjectDocumentsAreKnownByTheirPath)
{
    // clang-format off
    struct Case { char const* file; bool isDocument; };
    for (Case const& c : {
             Case{"/w/projects/Hook/project.json", true},
             Case{"/w/projects/Hook/../Other/./project.json", true},
             Case{"projects/Hook/project.json", true}, Case{"/w/project.json", false},
             Case{"/w/projects/project.json", false},
             Case{"/w/projects/Hook/media/project.json", false},
             Case{"/w/projects/Hook/Project.json", false},
             Case{"/w/my projects/Hook/project.json", false}, Case{"/project.json", false},
             Case{"", false},
         })
        // clang-format on
        EXPECT_EQ(Workspace::isProjectDocument(c.file), c.isDocument) << c.file;
}

TEST(Workspace, IsFoundFromTheFoldersInside)
{
    TestFolder const folder;
    Workspace::setUp(folder / "outer/inner");
    put(folder / "outer/workspace.json", "{}");
    put(folder / "outer/inner/projects/Hook/media/a.mp4");
    put(folder / "outer/other/b.mp4");

    struct Case {
        char const* from;
        char const* found;
    };
    for (Case const& c : {
             Case{"outer/inner/projects/Hook/media", "outer/inner"},
             Case{"outer/inner/", "outer/inner"},
             Case{"outer/other/gone/deep", "outer"},
             Case{"outer/inner/../other", "outer"},
         })
        EXPECT_EQ(Workspace::findWorkspace(folder / c.from), folder / c.found) << c.from;
    EXPECT_EQ(Workspace::findWorkspace(folder.path()), std::nullopt);
    EXPECT_EQ(Workspace::findWorkspace("/"), std::nullopt);
}

TEST(CanonicalPath, IsTheSameForEveryWayToAPlace)
{
    TestFolder const folder;
    std::string const base = folder.path().string();
    fs::create_directories(folder / "real/inner");
    fs::create_symlink("real", folder / "link");
    fs::create_symlink("loop", folder / "loop");

    struct Case {
        std::string path;
        std::string canonical;
    };
    for (Case const& c : {
             Case{base + "/real", base + "/real"},
             Case{base + "/real/", base + "/real"},
             Case{base + "/./real//inner/..", base + "/real"},
             Case{base + "/link/inner", base + "/real/inner"},
             Case{base + "/link/not/yet/", base + "/real/not/yet"},
             Case{base + "/loop/a", base + "/loop/a"},
             Case{"/private/var/folders/x", "/var/folders/x"},
             Case{"/var/folders/x", "/var/folders/x"},
             Case{"/privateer/x", "/privateer/x"},
             Case{"/private", "/private"},
             Case{"/a/private/x", "/a/private/x"},
             Case{"/", "/"},
         })
        EXPECT_EQ(Workspace::canonicalPath(c.path), c.canonical) << c.path;
    EXPECT_EQ(Workspace::canonicalPath("a/.."), fs::canonical(fs::current_path()));
}

TEST(UniqueName, CountsPastTheNamesThere)
{
    // clang-format off
    struct Case { char const* name; std::vector<char const*> there; char const* unique; };
    for (Case const& c : {
             Case{"Hook", {}, "Hook"},
             Case{"Hook", {"Hook v2", "Hook 2"}, "Hook"},
             Case{"Hook", {"hook"}, "Hook 2"},
             Case{"hOOK", {"hook", "Hook 2"}, "hOOK 3"},
             Case{"Hook", {"hook", "Hook 3"}, "Hook 2"},
             Case{"Hook v2", {"Hook v2"}, "Hook v2 2"},
             Case{"Ölwechsel", {"ölwechsel"}, "Ölwechsel 2"},
         }) {
        // clang-format on
        TestFolder const folder;
        for (char const* const name : c.there)
            put(folder / name);
        EXPECT_EQ(Workspace::uniqueName(c.name, folder.path()), c.unique) << c.unique;
    }
    EXPECT_EQ(Workspace::uniqueName("Hook", "/nowhere/at/all"), "Hook");
    TestFolder const folder;
    put(folder / "file");
    EXPECT_NE(failureOf<WorkspaceError>([&] { Workspace::uniqueName("Hook", folder / "file"); }),
              "");
}

TEST(Recent, RemembersEightMostRecentFirst)
{
    TestFolder const folder;
    UserDefaults defaults(folder / "Framewright.ini");
    EXPECT_THAT(Workspace::recent(defaults), IsEmpty());
    for (char const c : std::string("abcdefghi"))
        Workspace::remember(std::string("/w/") + c, defaults);
    EXPECT_THAT(Workspace::recent(defaults),
                ElementsAre("/w/i", "/w/h", "/w/g", "/w/f", "/w/e", "/w/d", "/w/c", "/w/b"));
    Workspace::remember("/private/w/d/", defaults);
    Workspace::remember("/w/x/../i", defaults);
    EXPECT_THAT(Workspace::recent(defaults), ElementsAre("/w/i", "/private/w/d", "/w/h", "/w/g",
                                                         "/w/f", "/w/e", "/w/c", "/w/b"));
    Workspace::remember("/not utf8 \xFF", defaults);
    EXPECT_EQ(Workspace::recent(defaults).front(), "/not utf8 \xFF");
}

TEST(Recent, OlderKeysAreReadUntilTheNewOnesExist)
{
    TestFolder const folder;
    UserDefaults defaults(folder / "Framewright.ini");
    defaults.setString("library.path", "/old/a");
    defaults.setStrings("library.recent", {"/old/a", "", "not absolute", "/old/b", "/old/./a"});
    EXPECT_EQ(Workspace::url(defaults), "/old/a");
    EXPECT_THAT(Workspace::recent(defaults), ElementsAre("/old/a", "/old/b"));

    Workspace::remember("/new", defaults);
    Workspace::setUrl("/new/", defaults);
    EXPECT_EQ(Workspace::url(defaults), "/new");
    EXPECT_THAT(Workspace::recent(defaults), ElementsAre("/new", "/old/a", "/old/b"));
    EXPECT_EQ(defaults.string("workspace.path"), "/new");

    Workspace::setUrl(std::nullopt, defaults);
    EXPECT_EQ(Workspace::url(defaults), std::nullopt);
}

TEST(SetUp, MarksTheFolderAndLeavesItsFilesAlone)
{
    TestFolder const folder;
    fs::path const place = folder / "new/Reels";
    put(place / "settings/caption-styles.json", "mine");
    Workspace::setUp(place, someTime);
    EXPECT_EQ(contentsOf(place / "workspace.json"),
              "{\n  \"created\": \"2026-11-22T09:30:00Z\",\n  \"version\": 1\n}\n");
    EXPECT_THAT(namesIn(place), ElementsAre("cache", "projects", "settings", "workspace.json"));
    EXPECT_EQ(contentsOf(place / "settings/caption-styles.json"), "mine");

    fs::remove_all(place / "projects");
    Workspace::setUp(place, someTime + std::chrono::hours(1));
    EXPECT_TRUE(fs::is_directory(place / "projects"));
    EXPECT_EQ(Json::parse(contentsOf(place / "workspace.json"))["created"], "2026-11-22T09:30:00Z");
}

TEST(SetUp, CarriesAnOlderMarkOver)
{
    TestFolder const folder;
    put(folder / "library.json", R"({"created": "2024-01-01T00:00:00Z", "about": "Cooking"})");
    EXPECT_EQ(Workspace::about(folder.path()), "Cooking");
    Workspace::setUp(folder.path(), someTime);
    EXPECT_EQ(Json::parse(contentsOf(folder / "workspace.json")),
              Json({{"created", "2024-01-01T00:00:00Z"}, {"about", "Cooking"}, {"version", 1}}));
    EXPECT_TRUE(fs::exists(folder / "library.json"));
}

TEST(Create, TakesANewNameOrAWorkspace)
{
    TestFolder const folder;
    put(folder / "Taken/notes.txt");
    put(folder / "File");
    fs::create_symlink("nowhere", folder / "Link");
    auto const made = Workspace::create(folder.path(), " Reels ");
    ASSERT_TRUE(made);
    EXPECT_EQ(*made, folder / "Reels");
    EXPECT_TRUE(Workspace::openable(*made));
    EXPECT_TRUE(Workspace::create(folder.path(), "Reels"));

    for (char const* const name : {"Taken", "File", "Link"})
        EXPECT_EQ(Workspace::create(folder.path(), name).refusal(),
                  (Refusal{Reason::folderNameTaken, Subject::named(name)}));
    EXPECT_FALSE(Workspace::create(folder.path(), "../out"));
    EXPECT_THAT(namesIn(folder / "Taken"), ElementsAre("notes.txt"));
}

TEST(Openable, RefusalsSayWhy)
{
    TestFolder const folder;
    put(folder / "plain/notes.txt");
    put(folder / "broken/workspace.json", "{\n  \"about\": oops");
    put(folder / "file");
    Workspace::setUp(folder / "good");
    std::string const base = folder.path().string();

    struct Case {
        char const* name;
        Reason reason;
    };
    for (Case const& c : {Case{"gone", Reason::folderGone}, Case{"plain/", Reason::notAWorkspace},
                          Case{"file", Reason::notAWorkspace}}) {
        auto const opened = Workspace::openable(folder / c.name);
        ASSERT_FALSE(opened) << c.name;
        EXPECT_EQ(opened.refusal(), (Refusal{c.reason, Subject::named(base + "/" + c.name)}));
    }
    EXPECT_EQ(failureOf<WorkspaceError>([&] { (void)Workspace::openable(folder / "broken"); }),
              "The workspace at " + base +
                  "/broken could not be opened: workspace.json: The "
                  "document is not valid JSON (line 2, column 12).");
    EXPECT_TRUE(Workspace::openable(folder / "good"));
}

TEST(Marker, KeepsWhatOthersWroteIntoIt)
{
    TestFolder const folder;
    fs::path const place = folder.path();
    put(place / "workspace.json",
        R"({"version":1,"theirs":{"b":[1,2.5,"é"],"a":null},"about":"Old","seen":["x"]})");
    Workspace::setAbout("Cooking \"fast\"", place);
    Workspace::setCanvas(AspectPreset::fourFive, place);
    Workspace::setSeen({"welcome", "captions"}, place);
    Workspace::setHadVideos(true, place);
    Workspace::setMediaFolders({"/b/", "/a", "/b/c/..", "beside", "/not utf8 \xFF"}, place);

    EXPECT_EQ(Json::parse(contentsOf(place / "workspace.json")),
              Json::parse(R"({
        "version": 1, "theirs": {"b": [1, 2.5, "é"], "a": null}, "about": "Cooking \"fast\"",
        "canvas": "fourFive", "seen": ["captions", "welcome"], "hadVideos": true,
        "mediaFolders": ["/b/", "/a", ")" +
                          (place / "beside").string() + R"(", "file:///not%20utf8%20%FF"]})"));
    EXPECT_EQ(Workspace::about(place), "Cooking \"fast\"");
    EXPECT_EQ(Workspace::canvas(place), AspectPreset::fourFive);
    EXPECT_THAT(Workspace::seen(place), ElementsAre("captions", "welcome"));
    EXPECT_TRUE(Workspace::hadVideos(place));
    EXPECT_THAT(Workspace::mediaFolders(place),
                ElementsAre("/b/", "/a", place / "beside", "/not utf8 \xFF"));

    Workspace::setAbout(std::nullopt, place);
    Workspace::setCanvas(std::nullopt, place);
    Workspace::setSeen({}, place);
    Workspace::setHadVideos(false, place);
    Workspace::setMediaFolders({}, place);
    EXPECT_EQ(Json::parse(contentsOf(place / "workspace.json")),
              Json::parse(R"({"version": 1, "theirs": {"b": [1, 2.5, "é"], "a": null}})"));
}

TEST(Marker, MissingKeysReadAsAbsentAndNothingIsWrittenForThem)
{
    TestFolder const folder;
    fs::path const place = folder.path();
    put(place / "Framewright.md");
    EXPECT_THAT(Workspace::mediaFolders(place), IsEmpty());
    EXPECT_EQ(Workspace::about(place), std::nullopt);
    EXPECT_EQ(Workspace::canvas(place), std::nullopt);
    EXPECT_THAT(Workspace::seen(place), IsEmpty());
    EXPECT_FALSE(Workspace::hadVideos(place));
    Workspace::setHadVideos(false, place);
    EXPECT_FALSE(fs::exists(place / "workspace.json"));

    std::string const theirs = "{\"about\":   \"spaced their way\"}";
    put(place / "workspace.json", theirs);
    Workspace::setAbout("spaced their way", place);
    EXPECT_EQ(contentsOf(place / "workspace.json"), theirs);
}

TEST(Marker, MediaFoldersMayBeWrittenByHand)
{
    TestFolder const folder;
    TestVariable const home("HOME", "/home/someone");
    put(folder / "workspace.json", R"({"mediaFolders": ["~/Footage", "../shared", "/abs", ""]})");
    EXPECT_THAT(
        Workspace::mediaFolders(folder / ""),
        ElementsAre("/home/someone/Footage", folder.path().parent_path() / "shared", "/abs"));
}

TEST(Marker, ABrokenOneIsNamedAndNeverOverwritten)
{
    // clang-format off
    struct Case { char const* text; char const* place; };
    for (Case const& c : {
             Case{"{\"about\": ", "The document is not valid JSON (line 1, column 11)."},
             Case{"", "The document is not valid JSON (line 1, column 1)."},
             Case{"[]", "The document must be an object."},
             Case{"{\"about\": \"\xFF\"}", "The document is not valid JSON (line 1, column 12)."},
             Case{R"({"version": "1"})", "version must be a number."},
             Case{R"({"version": 2})", "The workspace was written by a newer Framewright (format " "2, this one reads up to 1)."},
         }) {
        // clang-format on
        TestFolder const folder;
        put(folder / "workspace.json", c.text);
        std::string const sentence = "The workspace at " + folder.path().string() +
                                     " could not be opened: workspace.json: " + c.place;
        EXPECT_EQ(failureOf<WorkspaceError>([&] { Workspace::about(folder.path()); }), sentence);
        EXPECT_EQ(failureOf<WorkspaceError>([&] { Workspace::setAbout("x", folder.path()); }),
                  sentence);
        EXPECT_EQ(failureOf<WorkspaceError>([&] { Workspace::setUp(folder.path()); }), sentence);
        EXPECT_EQ(contentsOf(folder / "workspace.json"), c.text);
        EXPECT_THAT(namesIn(folder.path()), ElementsAre("workspace.json"));
    }
}

TEST(Marker, ValuesOfAnotherTypeAreNamed)
{
    TestFolder const folder;
    fs::path const place = folder.path();
    put(place / "workspace.json",
        R"({"mediaFolders": ["/a", 2], "about": 1, "canvas": "tall", "seen": {}, "hadVideos": 0})");
    using testing::EndsWith;
    EXPECT_THAT(failureOf<WorkspaceError>([&] { Workspace::mediaFolders(place); }),
                EndsWith("workspace.json: mediaFolders[1] must be a string."));
    EXPECT_THAT(
        failureOf<WorkspaceError>([&] { Workspace::canvas(place); }),
        EndsWith("canvas must be \"portrait\", \"landscape\", \"square\" or \"fourFive\"."));
    EXPECT_THAT(failureOf<WorkspaceError>([&] { Workspace::seen(place); }),
                EndsWith("seen must be an array."));
    EXPECT_THAT(failureOf<WorkspaceError>([&] { Workspace::hadVideos(place); }),
                EndsWith("hadVideos must be true or false."));
}

} // namespace framewright
