#include "workspace/media_finder.h"

#include "platform/test_folder.h"

namespace framewright {

namespace fs = std::filesystem;

TEST(MediaFinder, LooksBesideTheProjectThenAtTheUrlThenInTheMediaFolders)
{
    TestFolder const folder;
    for (char const* const file : {
             "projects/Hook/media/a.mp4",
             "original/a.mp4",
             "original/b.mp4",
             "footage/a.mp4",
             "footage/deep/er/c.mp4",
             "footage/same.mp4",
             "more/same.mp4",
             "footage/.cache/h.mp4",
             "footage/.h.mp4",
             "footage/not utf8 \xFF.mp4",
         })
        put(folder / file, "12345");
    put(folder / "footage/size.mp4", "1");
    put(folder / "more/size.mp4", "12345");
    fs::create_directories(folder / "footage/folder.mp4");
    fs::create_directory_symlink(folder / "footage", folder / "footage/again");

    struct Case {
        char const* name;
        std::string path;
        std::string url;
        std::optional<std::uintmax_t> size;
        char const* found; ///< "" for nothing.
    };
    std::string const base = folder.path().string();
    // Of overlapping media folders each file counts once.
    MediaFinder finder(folder / "projects/Hook", {folder / "footage", folder / "more",
                                                  folder / "footage/deep", folder / "gone"});
    for (Case const& c : {
             Case{"beside the project first",
                  "media/a.mp4",
                  base + "/original/a.mp4",
                  {},
                  "projects/Hook/media/a.mp4"},
             Case{"up and over", "../../original/b.mp4", "/gone/b.mp4", {}, "original/b.mp4"},
             Case{"absolute", base + "/original/b.mp4", "", {}, "original/b.mp4"},
             Case{"as a URL",
                  FileURL{base + "/footage/not utf8 \xFF.mp4"}.text(),
                  "",
                  {},
                  "footage/not utf8 \xFF.mp4"},
             Case{"then the URL", "media/b.mp4", base + "/original/b.mp4", {}, "original/b.mp4"},
             Case{"then by name", "/gone/a.mp4", "/gone/too/a.mp4", {}, "footage/a.mp4"},
             Case{"by the URL's name", "", "/gone/c.mp4", 5, "footage/deep/er/c.mp4"},
             Case{"two of a name", "media/same.mp4", "", {}, ""},
             Case{"two of a name and size", "media/same.mp4", "", 5, ""},
             Case{"distinguished by size", "media/size.mp4", "", 5, "more/size.mp4"},
             Case{"another size", "media/c.mp4", "", 6, ""},
             Case{"in a hidden folder", "media/h.mp4", "", {}, ""},
             Case{"a hidden file", "media/.h.mp4", "", {}, ""},
             Case{"a folder", "media/folder.mp4", base + "/footage", {}, ""},
             Case{"not anywhere", "media/x.mp4", "/gone/x.mp4", {}, ""},
             Case{"nothing known", "", "", {}, ""},
         }) {
        auto const found = finder.find({c.path, FileURL{c.url}, c.size});
        EXPECT_EQ(found.value_or(""), *c.found ? folder / c.found : fs::path()) << c.name;
    }
}

TEST(MediaFinder, StopsSomewhereInADeepTree)
{
    TestFolder const folder;
    fs::path deep = folder.path();
    for (int level = 1; level < 16; ++level)
        deep /= "d";
    put(deep / "reached.mp4");
    put(deep / "d/too deep.mp4");
    MediaFinder finder(folder / "nowhere", {folder.path()});
    EXPECT_EQ(finder.find({"reached.mp4", {}, {}}), deep / "reached.mp4");
    EXPECT_EQ(finder.find({"too deep.mp4", {}, {}}), std::nullopt);
}

} // namespace framewright
