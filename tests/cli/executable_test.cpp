// The real executable, as users and agents run it.

#include "child.h"
#include "serving.h"
#include "temporary_folder.h"
#include "toy_editor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>

namespace framewright {

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

std::string content(fs::path const& file)
{
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A home of its own, with the toy editor serving in this process.
struct ExecutableTest : testing::Test {
    void SetUp() override
    {
        fs::create_directories(home / "data/Framewright");
        fs::create_directory(home / "current");
        editor.server().start(home / "data/Framewright/cli.sock");
    }

    Ended run(std::vector<std::string> words)
    {
        words.insert(words.begin(), {FRAMEWRIGHT_EXECUTABLE, "cli"});
        Ended ended;
        whileServing([&] { ended = Child(words, home.path(), home / "current").wait(); });
        return ended;
    }

    TemporaryFolder const home;
    ToyEditor editor;
};

} // namespace

TEST_F(ExecutableTest, PrintsAnswersAndExitsWithTheirStatus)
{
    struct Case {
        std::vector<std::string> words;
        int status;
        std::string out;
        std::string error;
    };
    for (
        Case const& c : {
            Case{{"echo", "hello"}, 0, "hello\n", ""},
            Case{{"echo", "--text", "007"}, 0, "007\n", ""},
            Case{{"echo", "true"}, 0, "true\n", ""},
            Case{{"echo", "--text=two\nlines"}, 0, "two\nlines\n", ""},
            Case{{"echo", "--", "--dashes"}, 0, "--dashes\n", ""},
            Case{{"echo", "a\xFF"}, 0, "file://" + (home / "current").native() + "/a%FF\n", ""},
            Case{{"fail"}, 1, "", "It failed.\n"},
            Case{{"echo"}, 1, "", "echo needs --text. Run `cli help echo`.\n"},
            Case{{"echo", "a", "b"}, 1, "", "Too many values for echo. Run `cli help echo`.\n"},
            Case{{"fly"}, 1, "", "Unknown command fly. Run `cli help` for the list.\n"},
            Case{{"frame", "--out"}, 1, "", "--out needs a path.\n"},
            Case{
                {"help", "echo"},
                0,
                "echo: Prints a text. And no more.\n  --text <string> (required)  What to print.\n",
                ""},
            Case{
                {"echo", "--help"},
                0,
                "echo: Prints a text. And no more.\n  --text <string> (required)  What to print.\n",
                ""},
        }) {
        Ended const ended = run(c.words);
        EXPECT_EQ(ended.status, c.status) << testing::PrintToString(c.words);
        EXPECT_EQ(ended.out, c.out);
        EXPECT_EQ(ended.error, c.error);
    }
    EXPECT_THAT(run({}).out, testing::StartsWith("Commands (run `cli help <command>`"));
    EXPECT_THAT(run({"help", "fly"}).error, testing::StartsWith("Unknown command fly.\n"));
    EXPECT_EQ(run({"big", "3000000"}).out.size(), 3000001u);
}

TEST_F(ExecutableTest, WritesImages)
{
    Ended ended = run({"frame", "--out", "shots/a.jpg", "--at", "3"});
    EXPECT_EQ(ended.status, 0) << ended.error;
    EXPECT_EQ(ended.out, "Wrote " + (home / "current/shots/a.png").native() + "\n1 images\n");
    EXPECT_EQ(content(home / "current/shots/a.png"), "image 1");

    ended = run({"contact-sheet", "--out=b"});
    EXPECT_EQ(ended.out, "Wrote " + (home / "current/b-1.png").native() + "\nWrote " +
                             (home / "current/b-2.png").native() + "\n2 images\n");
    EXPECT_EQ(content(home / "current/b-2.png"), "image 2");

    std::ofstream(home / "current/workspace.json") << "{}";
    ended = run({"frame"});
    EXPECT_THAT(ended.out, testing::ContainsRegex("^Wrote .*/current/cache/frames/"
                                                  "frame-[0-9]{8}-[0-9]{6}-[0-9]{3}.png\n"));

    fs::create_directory(home / "current/taken.png");
    std::ofstream(home / "current/file") << "x";
    ended = run({"frame", "--out", "file/a"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_THAT(ended.error,
                testing::StartsWith("Could not write " + (home / "current/file").native()));
}

TEST_F(ExecutableTest, CtrlCCancelsTheCommandInTheEditor)
{
    Ended ended;
    std::optional<Child> child;
    pid_t pid = 0;
    editor.onWaiting = [&] { ::kill(pid, SIGINT); };
    child.emplace(std::vector<std::string>{FRAMEWRIGHT_EXECUTABLE, "cli", "wait"}, home.path(),
                  home / "current");
    pid = child->pid();
    whileServing([&] { ended = child->wait(); });
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error, "Cancelled.\n");
    EXPECT_EQ(editor.cancelled, 1);
}

TEST_F(ExecutableTest, DrawsProgressOnATerminal)
{
    Ended ended;
    std::optional<Child> child;
    editor.onWaiting = [&] { ::kill(child->pid(), SIGINT); };
    child.emplace(std::vector<std::string>{FRAMEWRIGHT_EXECUTABLE, "cli", "wait"}, home.path(),
                  home / "current", Child::ErrorStream::terminal);
    whileServing([&] { ended = child->wait(); });
    EXPECT_THAT(ended.error, HasSubstr("\r\x1b[KStill waiting  [#"));
    EXPECT_THAT(ended.error, HasSubstr("]  50 %"));
    // The bar is gone before the answer comes.
    EXPECT_THAT(ended.error, testing::EndsWith("\r\x1b[KCancelled.\r\n"));
}

namespace {

/// An executable with the toy editor as its module, or with none, and no editor running.
struct LaunchTest : testing::Test {
    void SetUp() override
    {
        fs::create_directory(home / "current");
        fs::create_directory(home / "bin");
        fs::copy_file(FRAMEWRIGHT_EXECUTABLE, executable);
    }
    void TearDown() override
    {
        if (!hasModule)
            return;
        EXPECT_EQ(run({"quit"}).out, "bye\n");
        // The lock is free when the editor has ended.
        CLISocket::Descriptor const lock(
            ::open((support() / "cli.sock.lock").c_str(), O_RDWR | O_CLOEXEC));
        ::flock(lock.get(), LOCK_EX);
    }
    void addModule()
    {
        fs::copy_file(TOY_MODULE, home / "bin/libframewright-editor.so");
        hasModule = true;
    }
    fs::path support() const { return home / "data/Framewright"; }
    Ended run(std::vector<std::string> words)
    {
        words.insert(words.begin(), {executable.native(), "cli"});
        return Child(words, home.path(), home / "current").wait();
    }

    TemporaryFolder const home;
    fs::path const executable = home / "bin/framewright";
    bool hasModule = false;
};

} // namespace

TEST_F(LaunchTest, TheEditorIsLaunchedOnce)
{
    addModule();
    std::vector<std::string> const words{executable.native(), "cli", "status"};
    Child one(words, home.path(), home / "current");
    Child other(words, home.path(), home / "current");
    Ended const first = one.wait();
    Ended const second = other.wait();
    EXPECT_EQ(first.status, 0) << first.error;
    EXPECT_EQ(second.out, first.out) << second.error;
    EXPECT_EQ(run({"status"}).out, first.out);

    // It is detached from the client's folder, session and streams.
    std::string const process = "/proc/" + first.out.substr(0, first.out.size() - 1);
    EXPECT_EQ(fs::read_symlink(process + "/cwd"), "/");
    EXPECT_EQ(fs::read_symlink(process + "/fd/0"), "/dev/null");
    EXPECT_EQ(fs::read_symlink(process + "/fd/2"), support() / "editor.log");
    EXPECT_EQ(fs::status(support()).permissions(), fs::perms::owner_all);

    // A second editor sees that one is running.
    Ended const direct = Child({executable.native()}, home.path(), home / "current").wait();
    EXPECT_EQ(direct.status, 4);
    EXPECT_EQ(direct.error, "Framewright is already running.\n");
}

TEST_F(LaunchTest, AnEditorThatDiesStopsAnswering)
{
    addModule();
    Ended const ended = run({"crash"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.error, "Framewright stopped answering. Open the app and try again.\n");
    // The stale socket file is replaced.
    EXPECT_TRUE(fs::exists(support() / "cli.sock"));
    EXPECT_EQ(run({"echo", "again"}).out, "again\n");
}

TEST_F(LaunchTest, WithoutTheModuleThereIsOneSentence)
{
    Ended const direct = Child({executable.native()}, home.path(), home / "current").wait();
    EXPECT_EQ(direct.status, 2);
    EXPECT_THAT(direct.error,
                testing::MatchesRegex("Framewright could not load its editor: "
                                      ".*libframewright-editor.so.*No such file.*\\.\n"));
    Ended const ended = run({"status"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.error, "Framewright is not running and could not be launched. "
                           "Open the app and try again.\n");
    EXPECT_THAT(content(support() / "editor.log"), HasSubstr("could not load its editor"));
}

} // namespace framewright
