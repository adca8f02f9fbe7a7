#include "cli/internal/client_images.h"

#include "cli/internal/progress_bar.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iomanip>
#include <set>
#include <sstream>

namespace framewright {

namespace fs = std::filesystem;
using testing::ElementsAre;

namespace {

auto const everythingIsFree = [](fs::path const&) { return true; };

std::string content(fs::path const& file)
{
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

TEST(ImagePaths, OutIsAPngInTheCurrentFolder)
{
    TemporaryFolder const folder;
    fs::create_directory(folder / "there");
    struct Case {
        std::size_t count;
        std::string out;
        std::vector<fs::path> paths;
    };
    fs::path const here = folder.path();
    for (Case const& c : {
             Case{1, "a", {here / "a.png"}},
             Case{1, "a.jpg", {here / "a.png"}},
             Case{1, "a.PNG", {here / "a.png"}},
             Case{1, "/x/a.png", {"/x/a.png"}},
             Case{2, "b/a.png", {here / "b/a-1.png", here / "b/a-2.png"}},
         })
        EXPECT_EQ(imagePaths(c.count, "frame", c.out, here, {}, everythingIsFree), c.paths)
            << c.out;

    for (std::string const out : {"there", "there/", "new/"})
        EXPECT_EQ(imagePaths(1, "frame", out, here, {}, everythingIsFree)[0].parent_path(),
                  here / out.substr(0, out.find('/')));
}

TEST(ImagePaths, DefaultIsTheWorkspacesCacheOrTheTemporaryFolder)
{
    TemporaryFolder const folder;
    auto const place = [&] {
        return imagePaths(1, "frame", {}, folder.path(), {}, everythingIsFree)[0].parent_path();
    };
    EXPECT_EQ(place(), fs::temp_directory_path());
    for (char const* const mark : {"workspace.json", "library.json", "Framewright.md"}) {
        std::ofstream(folder / mark) << "{}";
        EXPECT_EQ(place(), folder / "cache/frames") << mark;
        fs::remove(folder / mark);
    }
    fs::create_directory(folder / "workspace.json");
    EXPECT_EQ(place(), fs::temp_directory_path());
}

TEST(ImagePaths, DefaultNamesAreNeverTaken)
{
    TemporaryFolder const folder;
    std::ofstream(folder / "workspace.json") << "{}";
    std::tm local{};
    std::istringstream("2026-11-22 22:31:05") >> std::get_time(&local, "%Y-%m-%d %H:%M:%S");
    local.tm_isdst = -1;
    auto const now =
        std::chrono::system_clock::from_time_t(std::mktime(&local)) + std::chrono::milliseconds(7);
    auto const names = [&](std::size_t count) {
        std::vector<std::string> result;
        for (fs::path const& path :
             imagePaths(count, "contact_sheet", {}, folder.path(), now, claim))
            result.push_back(path.filename());
        return result;
    };
    EXPECT_THAT(names(1), ElementsAre("contact-sheet-20261122-223105-007.png"));
    EXPECT_THAT(names(1), ElementsAre("contact-sheet-20261122-223105-007-2.png"));
    EXPECT_THAT(names(1), ElementsAre("contact-sheet-20261122-223105-007-3.png"));
    EXPECT_THAT(names(2), ElementsAre("contact-sheet-20261122-223105-007-1.png",
                                      "contact-sheet-20261122-223105-007-2-2.png"));
}

TEST(RemoveOldImages, TakesTheOldestOfItsOwnOnly)
{
    TemporaryFolder const folder;
    std::set<std::string> const others{
        "frame-1.png", "frame-20261122-223105-00x.png", "frame-20261122-223105-001-final.png",
        "mine.png",    "sheet-20261122-223105-001.png", "frame-20261122-223105-001"};
    std::set<std::string> const newest{"frame-20261122-223105-003.png",
                                       "contact-sheet-20261122-223105-002-2.png"};
    for (std::string const& name : others)
        std::ofstream(folder / name);
    for (std::string const& name : newest)
        std::ofstream(folder / name);
    for (char const* const name :
         {"frame-20261122-223105-001.png", "contact-sheet-20251122-223105-999-1-2.png"})
        std::ofstream(folder / name);
    removeOldImages(folder.path(), 2);
    std::set<std::string> left;
    for (auto const& entry : fs::directory_iterator(folder.path()))
        left.insert(entry.path().filename());
    std::set<std::string> wanted = others;
    wanted.insert(newest.begin(), newest.end());
    EXPECT_EQ(left, wanted);
    removeOldImages(folder / "not there", 2);
}

TEST(WriteImage, ReplacesTheWholeFileOrNothing)
{
    TemporaryFolder const folder;
    fs::path const file = folder / "a/b/c.png";
    writeImage(file, "long content");
    writeImage(file, "short");
    EXPECT_EQ(content(file), "short");

    fs::create_directory(folder / "taken.png");
    EXPECT_THROW(writeImage(folder / "taken.png", "x"), ImageError);
    try {
        writeImage(file / "below", "x");
        FAIL();
    } catch (ImageError const& error) {
        EXPECT_EQ(error.what(), file.native() + ": Not a directory");
    }
    // Nothing is left over.
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(folder.path()), {}), 4);
}

TEST(ProgressBar, FitsItsLine)
{
    struct Case {
        double fraction;
        char const* stage;
        int columns;
        char const* bar;
    };
    for (Case const& c : {
             Case{0, "", 20, "[...........]   0 %"},
             Case{0.5, "", 20, "[#####......]  50 %"},
             Case{1, "Encoding", 30, "Encoding  [###########] 100 %"},
             Case{0.999, "Encoding", 30, "Encoding  [##########.]  99 %"},
             Case{7, "", 20, "[###########] 100 %"},
             Case{std::nan(""), "", 20, "[...........]   0 %"},
             Case{0.5, "A stage with a long name", 30, "[##########...........]  50 %"},
             Case{0.5, "", 6, " 50 %"},
             Case{0.5, "Größe", 23, "Größe  [###....]  50 %"},
         })
        EXPECT_EQ(progressBar(c.fraction, c.stage, c.columns), c.bar);
}

} // namespace framewright
