#include "workspace/folder_watcher.h"

#include "platform/atomic_file.h"
#include "platform/test_folder.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <chrono>
#include <functional>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace framewright {

namespace {

namespace fs = std::filesystem;

/// A watcher of projects/Hook/project.json, and what it told.
class WatcherTest : public testing::Test {
protected:
    void SetUp() override
    {
        put(file, "first");
        watcher = std::make_unique<FolderWatcher>(file.parent_path(), "project.json");
        QObject::connect(watcher.get(), &FolderWatcher::changed, [this] { told += "changed "; });
        QObject::connect(watcher.get(), &FolderWatcher::vanished, [this] { told += "vanished "; });
        ASSERT_TRUE(watcher->isWatching());
    }

    /// What is told of `action`; "" when nothing ever is.
    std::string after(std::function<void()> const& action)
    {
        action();
        return wait();
    }

    std::string wait()
    {
        processEventsUntil([&] { return !told.empty(); });
        return std::exchange(told, {});
    }

    /// Writes another file and lets time pass until its own watcher has told of it, twice: by then
    /// ours would have spoken too.
    void writeAndExpectSilence(fs::path const& other)
    {
        FolderWatcher const itsOwn(other.parent_path(), other.filename().string());
        bool isTold = false;
        QObject::connect(&itsOwn, &FolderWatcher::changed, [&] { isTold = true; });
        for (char const* const text : {"once", "and again"}) {
            writeFileAtomically(other, text);
            put(other, text);
            processEventsUntil([&] { return std::exchange(isTold, false); });
        }
        EXPECT_EQ(told, "") << other;
    }

    TestFolder const folder;
    fs::path const file = folder / "projects/Hook/project.json";
    std::unique_ptr<FolderWatcher> watcher;
    std::string told;

private:
    static void processEventsUntil(std::function<bool()> const& isDone)
    {
        QTimer patience;
        patience.setSingleShot(true);
        patience.start(std::chrono::seconds(20));
        while (!isDone() && patience.isActive())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    int m_argumentCount = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication const m_application{m_argumentCount, m_arguments};
};

} // namespace

TEST_F(WatcherTest, TellsOfEveryWayToWrite)
{
    struct Case { char const* name; std::function<void()> write; };
    // Twice in turn: each way must also be noticed after every other.
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
                 Case{"written as we do", [&] { writeFileAtomically(file, "ours"); }},
                 Case{"removed and made anew",
                      [&] {
                          fs::remove(file);
                          put(file, "anew");
                      }},
                 Case{"moved aside and made anew",
                      [&] {
                          fs::rename(file, folder / "aside");
                          put(file, "anew");
                      }},
             })
            EXPECT_EQ(after(c.write), "changed ") << c.name << ", round " << round;
    }
}

TEST_F(WatcherTest, AReplacedFileThatIsStillOpenElsewhereIsNotMistakenForTheNewOne)
{
    int const old = ::open(file.c_str(), O_RDONLY);
    EXPECT_EQ(after([&] { writeFileAtomically(file, "new"); }), "changed ");
    EXPECT_EQ(after([&] { put(file, "in place"); }), "changed ");
    ::close(old);
}

TEST_F(WatcherTest, TellsOfABurstOnce)
{
    using Clock = std::chrono::steady_clock;
    std::string allowed = "changed ";
    for (int i = 0; i < 100; ++i) {
        auto const begin = Clock::now();
        put(file, std::to_string(i));
        fs::rename(file, folder / "aside");
        put(file, std::to_string(i));
        QCoreApplication::processEvents();
        // On a machine that stands still for a while, the burst is two.
        if (Clock::now() - begin > std::chrono::milliseconds(50))
            allowed += "changed ";
    }
    told += wait();
    EXPECT_FALSE(told.empty());
    EXPECT_TRUE(allowed.starts_with(told)) << told;
}

TEST_F(WatcherTest, OtherFilesDoNotMatter)
{
    put(file.parent_path() / "exports/a.mp4", "export");
    writeAndExpectSilence(file.parent_path() / "thumbnail.png");
    writeAndExpectSilence(folder / "projects/beside");
    EXPECT_EQ(after([&] { put(file, "again"); }), "changed ");
}

TEST_F(WatcherTest, TellsWhenTheFileGoesAndComes)
{
    fs::path const projects = folder / "projects";
    struct Case { char const* name; std::function<void()> change; char const* told; };
    for (Case const& c : {
             Case{"removed", [&] { fs::remove(file); }, "vanished "},
             Case{"made anew", [&] { put(file, "anew"); }, "changed "},
             Case{"with its folder", [&] { fs::remove_all(file.parent_path()); }, "vanished "},
             Case{"folder made anew", [&] { put(file, "anew"); }, "changed "},
             Case{"and written", [&] { put(file, "again"); }, "changed "},
             Case{"folder renamed", [&] { fs::rename(projects / "Hook", projects / "Was"); }, "vanished "},
             Case{"folder renamed back", [&] { fs::rename(projects / "Was", projects / "Hook"); }, "changed "},
             Case{"with all above", [&] { fs::remove_all(projects); }, "vanished "},
             Case{"all made anew", [&] { put(file, "anew"); }, "changed "},
             Case{"and replaced", [&] { writeFileAtomically(file, "again"); }, "changed "},
         })
        EXPECT_EQ(after(c.change), c.told) << c.name;
}

TEST_F(WatcherTest, FollowsAFolderThatIsSwappedForAnother)
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

TEST_F(WatcherTest, MayBeDeletedByWhatItTells)
{
    bool isDeleted = false;
    QObject::connect(watcher.get(), &FolderWatcher::changed, [&] {
        watcher.reset();
        isDeleted = true;
        told += "deleted ";
    });
    EXPECT_EQ(after([&] { put(file, "again"); }), "changed deleted ");
    EXPECT_TRUE(isDeleted);
}

} // namespace framewright
