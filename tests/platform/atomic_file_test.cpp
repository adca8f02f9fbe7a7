#include "platform/atomic_file.h"
#include "platform/test_folder.h"

#include <gmock/gmock.h>

#include <atomic>
#include <csignal>
#include <random>
#include <thread>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace framewright {

namespace {

using Cause = FileError::Cause;
using testing::ElementsAre;
namespace fs = std::filesystem;

template <class Action>
std::optional<Cause> causeOf(Action const& action)
{
    try {
        action();
    } catch (FileError const& error) {
        return error.cause;
    }
    return std::nullopt;
}

/// While it lives no file of this process may grow beyond `bytes`, like on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_oldHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        rlimit const limit{bytes, m_old.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }

private:
    rlimit m_old{};
    void (*m_oldHandler)(int);
};

/// While it lives this process may do no more than an ordinary user, also where tests run as root.
class OrdinaryUser {
public:
    OrdinaryUser()
    {
        if (m_user == 0 && ::seteuid(65534) != 0)
            throw std::runtime_error("root can't be left");
    }
    ~OrdinaryUser() { EXPECT_EQ(::seteuid(m_user), 0); }

private:
    uid_t const m_user = ::geteuid();
};

/// A document that starts with its length, so that a part of one can be recognised.
std::string document(std::size_t length)
{
    return std::to_string(length) + "\n" +
           std::string(length, static_cast<char>('a' + length % 26));
}

bool isWhole(std::string const& text)
{
    return text == document(std::stoul(text));
}

/// Writes documents of many lengths without end; a byte in `started` reports the first.
[[noreturn]] void writeEndlessly(fs::path const& file, int started)
{
    for (std::size_t round = 0;; ++round) {
        writeFileAtomically(file, document(round * 7919 % 300'000));
        if (round == 0 && ::write(started, "x", 1) != 1)
            ::_exit(1);
    }
}

} // namespace

TEST(AtomicFile, ReplacesOnlyWhatIsExpected)
{
    TestFolder const folder;
    auto const file = folder / "a.json";
    put(file, "old");

    EXPECT_FALSE(replaceFileAtomically(file, "ours", "something else").isDone);
    EXPECT_EQ(contentsOf(file), "old");
    EXPECT_TRUE(replaceFileAtomically(file, "ours", "old").isDone);
    EXPECT_EQ(contentsOf(file), "ours");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(AtomicFile, NoWriteOfAnotherIsLostInAReplacement)
{
    // Another program renames its versions over the file while ours, which carry along the version
    // they were made from, are put in their place.
    TestFolder const folder;
    auto const file = folder / "a.json";
    put(file, "their 0");
    constexpr int versions = 60;
    std::atomic<int> attempts = 0;
    std::atomic<int> written = 0;
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        std::mt19937 random(5);
        for (int i = 1; i <= versions; ++i) {
            // In every other attempt, at any moment of it.
            while (attempts < 2 * i)
                std::this_thread::yield();
            for (int turns = std::uniform_int_distribution(0, 150)(random); turns > 0; --turns)
                std::this_thread::yield();
            put(folder / "their-new", "their " + std::to_string(i));
            std::filesystem::rename(folder / "their-new", file);
            written = i;
        }
        isDone = true;
    });
    int replaced = 0;
    while (!isDone) {
        ++attempts;
        std::string const seen = readFile(file);
        // Ours carries theirs along, as an editor does that has read it.
        std::string const ours = seen.substr(0, seen.find('+')) + "+" + std::to_string(attempts);
        replaced += replaceFileAtomically(file, ours, seen).isDone;
        int const theirs = written;
        EXPECT_GE(std::stoi(readFile(file).substr(6)), theirs) << "A version of theirs vanished.";
    }
    other.join();

    EXPECT_GT(replaced, 0);
}

TEST(WriteFile, ReplacesTheWholeContentAndNothingElse)
{
    TestFolder const folder;
    fs::path const file = folder / "project.json";
    ::mode_t const mask = ::umask(027);
    writeFileAtomically(file, std::string(100'000, 'x'));
    ::umask(mask);
    EXPECT_EQ(modeOf(file), 0640u);

    std::string const bytes("with \0 and \xFF", 12);
    for (unsigned const mode : {0600u, 0664u, 0755u}) {
        ::chmod(file.c_str(), mode);
        writeFileAtomically(file, bytes);
        EXPECT_EQ(modeOf(file), mode);
    }
    EXPECT_EQ(readFile(file), bytes);
    writeFileAtomically(file, "");
    EXPECT_EQ(readFile(file), "");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("project.json"));
}

TEST(WriteFile, TakesTheLongestNameAndARelativeOne)
{
    TestFolder const folder;
    std::string const longest(255, 'n');
    writeFileAtomically(folder / longest, "1");
    EXPECT_EQ(readFile(folder / longest), "1");

    fs::path const before = fs::current_path();
    fs::current_path(folder.path());
    writeFileAtomically("here", "2");
    fs::current_path(before);
    EXPECT_EQ(contentsOf(folder / "here"), "2");
}

TEST(WriteFile, WritesBehindLinks)
{
    TestFolder const folder;
    put(folder / "real/file", "old");
    fs::create_directory(folder / "links");
    fs::create_symlink("../real/file", folder / "links/relative");
    fs::create_symlink(folder / "links/relative", folder / "links/chained");
    fs::create_symlink(folder / "real/new", folder / "links/dangling");

    writeFileAtomically(folder / "links/chained", "new");
    EXPECT_EQ(contentsOf(folder / "real/file"), "new");
    writeFileAtomically(folder / "links/dangling", "fresh");
    EXPECT_EQ(contentsOf(folder / "real/new"), "fresh");
    for (char const* const name : {"relative", "chained", "dangling"})
        EXPECT_TRUE(fs::is_symlink(folder / "links" / name)) << name;
    EXPECT_THAT(namesIn(folder / "real"), ElementsAre("file", "new"));
}

TEST(WriteFile, RefusesWhatIsNoPlaceForADocument)
{
    TestFolder const folder;
    put(folder / "file", "old");
    fs::create_directory(folder / "inner");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    fs::create_symlink("loop", folder / "loop");

    struct Case {
        char const* name;
        Cause cause;
        char const* reason;
    };
    for (Case const& c : {
             Case{"missing/a", Cause::missing, "No such file or directory"},
             Case{"file/a", Cause::missing, "Not a directory"},
             Case{"inner", Cause::notRegular, "it is a folder"},
             Case{"pipe", Cause::notRegular, "it is not a regular file"},
             Case{"loop", Cause::unwritable, "Too many levels of symbolic links"},
         }) {
        auto const write = [&] { writeFileAtomically(folder / c.name, "new"); };
        EXPECT_EQ(causeOf(write), c.cause) << c.name;
        EXPECT_EQ(failureOf<FileError>(write),
                  "“" + (folder / c.name).string() + "” could not be written: " + c.reason + ".");
    }
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("file", "inner", "loop", "pipe"));
    EXPECT_EQ(contentsOf(folder / "file"), "old");
}

TEST(WriteFile, LeavesAProtectedFileAlone)
{
    TestFolder const folder;
    put(folder / "file", "old");
    ::chmod(folder.path().c_str(), 0777);
    ::chmod((folder / "file").c_str(), 0444);
    {
        OrdinaryUser const user;
        EXPECT_EQ(causeOf([&] { writeFileAtomically(folder / "file", "new"); }), Cause::unwritable);
    }
    EXPECT_EQ(contentsOf(folder / "file"), "old");
}

TEST(WriteFile, AFullDiskLosesNothing)
{
    TestFolder const folder;
    fs::path const file = folder / "project.json";
    writeFileAtomically(file, "old");
    {
        FileSizeLimit const limit(10'000);
        EXPECT_EQ(causeOf([&] { writeFileAtomically(file, std::string(10'001, 'x')); }),
                  Cause::noSpace);
        EXPECT_EQ(causeOf([&] { writeFileAtomically(folder / "other", std::string(20'000, 'x')); }),
                  Cause::noSpace);
    }
    EXPECT_EQ(readFile(file), "old");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("project.json"));
}

TEST(WriteFile, ClearsAwayWhatAKilledWriterLeft)
{
    TestFolder const folder;
    put(folder / "a.json", "old");
    std::string const digits = "0123456789abcdef";
    for (char const* const start : {".a.json.", ".b.json.", ".a.json.more."})
        put(folder / (start + digits + ".framewright-new"));
    put(folder / ".a.json.framewright-new");
    auto const longAgo = fs::file_time_type::clock::now() - std::chrono::hours(2);
    for (auto const& entry : fs::directory_iterator(folder.path()))
        fs::last_write_time(entry, longAgo);
    std::string const atWork = ".a.json.fedcba9876543210.framewright-new";
    put(folder / atWork);

    writeFileAtomically(folder / "a.json", "new");
    EXPECT_THAT(namesIn(folder.path()),
                ElementsAre(atWork, ".a.json.framewright-new",
                            ".a.json.more." + digits + ".framewright-new",
                            ".b.json." + digits + ".framewright-new", "a.json"));
}

TEST(WriteFile, AKilledWriterLeavesAWholeDocument)
{
    TestFolder const folder;
    fs::path const file = folder / "project.json";
    std::mt19937 random(20261122);
    for (int round = 0; round < 25; ++round) {
        int started[2];
        ASSERT_EQ(::pipe(started), 0);
        pid_t const writer = ::fork();
        ASSERT_GE(writer, 0);
        if (writer == 0)
            writeEndlessly(file, started[1]);
        char byte = 0;
        ::close(started[1]);
        EXPECT_EQ(::read(started[0], &byte, 1), 1);
        ::close(started[0]);

        // The reads pass the time until the kill; each must find a whole document.
        for (unsigned reads = random() % 200; reads > 0; --reads)
            ASSERT_TRUE(isWhole(readFile(file)));
        ::kill(writer, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(writer, &status, 0), writer);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer failed by itself";
        ASSERT_TRUE(isWhole(readFile(file)));
        for (std::string const& name : namesIn(folder.path()))
            ASSERT_TRUE(name == "project.json" || name.starts_with(".")) << name;
    }
}

TEST(WriteFile, OfTwoWritersOneWinsWhole)
{
    TestFolder const folder;
    fs::path const file = folder / "shared.json";
    auto const write = [&](std::size_t length) {
        for (int round = 0; round < 50; ++round)
            writeFileAtomically(file, document(length));
    };
    {
        std::jthread const one(write, 200'000);
        std::jthread const other(write, 17);
    }
    EXPECT_TRUE(isWhole(readFile(file)));
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("shared.json"));
}

TEST(ReadFile, ReportsWhyItCannot)
{
    TestFolder const folder;
    put(folder / "five", "12345");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    fs::create_symlink("pipe", folder / "link");

    struct Case {
        char const* name;
        std::uintmax_t limit;
        std::optional<Cause> cause;
    };
    for (Case const& c : {
             Case{"five", 5, std::nullopt},
             Case{"five", 4, Cause::tooLarge},
             Case{"five", 0, Cause::tooLarge},
             Case{"six", 5, Cause::missing},
             Case{"five/six", 5, Cause::missing},
             Case{".", 5, Cause::notRegular},
             Case{"pipe", 5, Cause::notRegular},
             Case{"link", 5, Cause::notRegular},
         })
        EXPECT_EQ(causeOf([&] { readFile(folder / c.name, c.limit); }), c.cause)
            << c.name << " " << c.limit;
    EXPECT_EQ(failureOf<FileError>([&] { readFile(folder / "five", 4); }),
              "“" + (folder / "five").string() + "” could not be read: it has more than 4 bytes.");
}

TEST(ReadFile, ReadsOnWhenThereIsMoreThanTheSizeSays)
{
    // The kernel's own files have size 0 and a content all the same.
    EXPECT_THAT(readFile("/proc/self/maps"), testing::HasSubstr("stack"));
    EXPECT_EQ(causeOf([] { readFile("/proc/self/maps", 10); }), Cause::tooLarge);
}

} // namespace framewright
