#include "platform/clock.h"
#include "platform/file_error.h"
#include "platform/paths.h"
#include "platform/test_folder.h"

#include <sys/stat.h>

namespace framewright {

TEST(Paths, FollowTheEnvironment)
{
    // clang-format off
    struct Case { char const* variable; std::filesystem::path (*folder)(); char const* whenUnset; };
    TestVariable const home("HOME", "/home/someone");
    for (Case const& c : {
             Case{"XDG_DATA_HOME", applicationSupportFolder, "/home/someone/.local/share/Framewright"},
             Case{"XDG_CACHE_HOME", cachesFolder, "/home/someone/.cache/Framewright"},
             Case{"XDG_CONFIG_HOME", configFolder, "/home/someone/.config/Framewright"},
         }) {
        // clang-format on
        for (char const* const noFolder : {static_cast<char const*>(nullptr), "", "relative/x"}) {
            TestVariable const variable(c.variable, noFolder);
            EXPECT_EQ(c.folder(), c.whenUnset);
        }
        TestVariable const variable(c.variable, "/elsewhere");
        EXPECT_EQ(c.folder(), "/elsewhere/Framewright");
    }
    TestVariable const none("TMPDIR", nullptr);
    EXPECT_EQ(temporaryFolder(), "/tmp");
    TestVariable const other("TMPDIR", "/var/scratch");
    EXPECT_EQ(temporaryFolder(), "/var/scratch");
}

TEST(Paths, HomeIsTheAccountsWithoutAVariable)
{
    TestVariable const home("HOME", nullptr);
    TestVariable const data("XDG_DATA_HOME", nullptr);
    EXPECT_TRUE(homeFolder().is_absolute());
    EXPECT_EQ(applicationSupportFolder(), homeFolder() / ".local/share/Framewright");
}

TEST(Paths, TildeMeansAHomeAtTheFrontOnly)
{
    TestVariable const home("HOME", "/home/someone");
    // clang-format off
    struct Case { char const* path; char const* expanded; };
    for (Case const& c : {
             Case{"~", "/home/someone"}, Case{"~/", "/home/someone"},
             Case{"~/Footage/a.mov", "/home/someone/Footage/a.mov"}, Case{"/a/~/b", "/a/~/b"},
             Case{"a~", "a~"}, Case{"", ""},
             Case{"~nobody-of-this-name/a", "~nobody-of-this-name/a"},
         })
        // clang-format on
        EXPECT_EQ(expandTilde(c.path), c.expanded) << c.path;
    EXPECT_TRUE(expandTilde("~root/a").is_absolute());
}

TEST(Folders, PrivateOnesAreClosedToOthers)
{
    TestFolder const folder;
    std::filesystem::path const fresh = folder / "new/above/run/";
    ensurePrivateFolder(fresh);
    EXPECT_EQ(modeOf(folder / "new/above/run"), 0700u);
    EXPECT_EQ(modeOf(folder / "new"), 0700u);

    std::filesystem::path const open = folder / "open/run";
    ensureFolder(open);
    ::chmod((folder / "open").c_str(), 0755);
    ::chmod(open.c_str(), 0777);
    ensurePrivateFolder(open);
    EXPECT_EQ(modeOf(open), 0700u);
    EXPECT_EQ(modeOf(folder / "open"), 0755u);
}

TEST(Folders, AFileInTheWayIsNamed)
{
    TestFolder const folder;
    put(folder / "file");
    for (auto const make : {ensureFolder, ensurePrivateFolder}) {
        for (char const* const name : {"file", "file/below"}) {
            std::string const sentence = failureOf<FileError>([&] { make(folder / name); });
            EXPECT_EQ(sentence,
                      "“" + (folder / name).string() + "” could not be created: Not a directory.");
        }
    }
}

TEST(Clock, WritesWholeSecondsOfUtc)
{
    using namespace std::chrono_literals;
    std::chrono::system_clock::time_point const epoch{};
    TestVariable const zone("TZ", "Asia/Tokyo");
    EXPECT_EQ(iso8601(epoch + 1'795'339'800s + 999ms), "2026-11-22T09:30:00Z");
    EXPECT_EQ(iso8601(epoch - 1ms), "1969-12-31T23:59:59Z");
}

} // namespace framewright
