#include "sync/file_watcher.h"

#include "platform/atomic_file.h"
#include "platform/test_folder.h"
#include "sync/events.h"

#include <chrono>
#include <functional>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace framewright {

namespace {

namespace fs = std::filesystem;

/// A watcher of projects/Hook/project.json, and what it reported.
class WatcherTest : public testing::Test {
protected:
    void SetUp() override
    {
        put(file, "first");
        watcher = std::make_unique<FileWatcher>(file);
        QObject::connect(watcher.get(), &FileWatcher::changed, [this] { reported += "changed "; });
        QObject::connect(watcher.get(), &FileWatcher::vanished,
                         [this] { reported += "vanished "; });
        ASSERT_TRUE(watcher->isWatching());
    }

    /// What it reports after `action`; "" for nothing.
    std::string after(std::function<void()> const& action)
    {
        action();
        return wait();
    }

    std::string wait()
    {
        processEventsUntil([&] { return !reported.empty(); });
        return std::exchange(reported, {});
    }

    /// Twice writes another file and waits until its watcher has reported that: by then ours would
    /// have reported, too.
    void writeAndExpectSilence(fs::path const& other)
    {
        FileWatcher const itsOwn(other);
        bool isReported = false;
        QObject::connect(&itsOwn, &FileWatcher::changed, [&] { isReported = true; });
        for (char const* const text : {"once", "and again"}) {
            writeFileAtomically(other, text);
            put(other, text);
            processEventsUntil([&] { return isReported; });
            isReported = false;
        }
        EXPECT_EQ(reported, "") << other;
    }

    TestFolder const folder;
    fs::path const file = folder / "projects/Hook/project.json";
    std::unique_ptr<FileWatcher> watcher;
    std::string reported;
};

} // namespace

TEST_F(WatcherTest, ReportsEveryWayToWrite)
{
    struct Case {
        char const* name;
        std::function<void()> write;
    };
    // Two rounds: each way must also be noticed after each of the others.
    for (int round = 0; round < 2; ++round) {
        for (Case const& c : {
                 Case{"truncated and written", [&] { put(file, "again"); }},
                 Case{"appended", [&] { std::ofstream(file, std::ios::app) << "more"; }},
                 Case{"one byte in place",
                      [&] {
                          int const descriptor = ::open(file.c_str(), O_WRONLY);
                          EXPECT_EQ(::pwrite(descriptor, "X", 1, 0), 1);
                          ::close(descriptor);
                      }},
                 Case{"renamed over",
                      [&] {
                          put(folder / "elsewhere", "moved in");
                          fs::rename(folder / "elsewhere", file);
                      }},
                 Case{"written by us", [&] { writeFileAtomically(file, "ours"); }},
                 Case{"removed and created again",
                      [&] {
                          fs::remove(file);
                          put(file, "anew");
                      }},
                 Case{"moved aside and created again",
                      [&] {
                          fs::rename(file, folder / "aside");
                          put(file, "anew");
                      }},
             })
            EXPECT_EQ(after(c.write), "changed ") << c.name << ", round " << round;
    }
}

TEST_F(WatcherTest, AReplacedFileStillOpenElsewhereIsNotTheNewOne)
{
    int const old = ::open(file.c_str(), O_RDONLY);
    EXPECT_EQ(after([&] { writeFileAtomically(file, "new"); }), "changed ");
    EXPECT_EQ(after([&] { put(file, "in place"); }), "changed ");
    ::close(old);
}

TEST_F(WatcherTest, CoalescesBursts)
{
    using Clock = std::chrono::steady_clock;
    std::string allowed = "changed ";
    for (int i = 0; i < 100; ++i) {
        auto const begin = Clock::now();
        put(file, std::to_string(i));
        fs::rename(file, folder / "aside");
        put(file, std::to_string(i));
        QCoreApplication::processEvents();
        // A machine that pauses in between makes two bursts of it.
        if (Clock::now() - begin > std::chrono::milliseconds(50))
            allowed += "changed ";
    }
    reported += wait();
    EXPECT_FALSE(reported.empty());
    EXPECT_TRUE(allowed.starts_with(reported)) << reported;
}

TEST_F(WatcherTest, OtherFilesDoNotMatter)
{
    put(file.parent_path() / "exports/a.mp4", "export");
    writeAndExpectSilence(file.parent_path() / "thumbnail.png");
    writeAndExpectSilence(folder / "projects/beside");
    EXPECT_EQ(after([&] { put(file, "again"); }), "changed ");
}

TEST_F(WatcherTest, ReportsThatTheFileVanishedAndReappeared)
{
    fs::path const projects = folder / "projects";
    struct Case {
        char const* name;
        std::function<void()> change;
        char const* reported;
    };
    for (Case const& c : {
             Case{"removed", [&] { fs::remove(file); }, "vanished "},
             Case{"created again", [&] { put(file, "new"); }, "changed "},
             Case{"with its folder", [&] { fs::remove_all(file.parent_path()); }, "vanished "},
             Case{"folder created again", [&] { put(file, "new"); }, "changed "},
             Case{"and written", [&] { put(file, "again"); }, "changed "},
             Case{"folder renamed", [&] { fs::rename(projects / "Hook", projects / "Was"); },
                  "vanished "},
             Case{"folder renamed back", [&] { fs::rename(projects / "Was", projects / "Hook"); },
                  "changed "},
             Case{"with all above", [&] { fs::remove_all(projects); }, "vanished "},
             Case{"all created again", [&] { put(file, "new"); }, "changed "},
             Case{"and replaced", [&] { writeFileAtomically(file, "again"); }, "changed "},
         })
        EXPECT_EQ(after(c.change), c.reported) << c.name;
}

TEST_F(WatcherTest, FollowsTheNameOfAFolderThatIsReplaced)
{
    fs::path const projects = folder / "projects";
    put(projects / "Next/project.json", "next");
    EXPECT_EQ(after([&] {
                  fs::rename(projects / "Hook", projects / "Was");
                  fs::rename(projects / "Next", projects / "Hook");
              }),
              "changed ");
    writeAndExpectSilence(projects / "Was/project.json");
    EXPECT_EQ(after([&] { put(file, "again"); }), "changed ");
}

TEST_F(WatcherTest, FollowsALink)
{
    fs::remove(file);
    put(folder / "real", "real");
    fs::create_symlink(folder / "real", file);
    EXPECT_EQ(wait(), "changed ");
    EXPECT_EQ(after([&] { put(folder / "real", "in place"); }), "changed ");
    EXPECT_EQ(after([&] { writeFileAtomically(file, "through the link"); }), "changed ");
    EXPECT_EQ(after([&] { put(folder / "real", "in place again"); }), "changed ");
}

TEST_F(WatcherTest, MayBeDeletedByItsOwnSignal)
{
    bool isDeleted = false;
    QObject::connect(watcher.get(), &FileWatcher::changed, [&] {
        watcher.reset();
        isDeleted = true;
        reported += "deleted ";
    });
    EXPECT_EQ(after([&] { put(file, "again"); }), "changed deleted ");
    EXPECT_TRUE(isDeleted);
}

} // namespace framewright
