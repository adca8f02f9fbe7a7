#include "cli/protocol.h"

#include "cli/internal/base64.h"
#include "cli/socket.h"
#include "temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace framewright {

using nlohmann::json;
using testing::ElementsAre;

namespace {

/// How a request line was understood: what it is, its id, and what it carries.
std::string understood(std::string const& line)
{
    Request const request = decodeRequest(line);
    std::string const id = request.id.dump() + " ";
    if (auto const* const tool = std::get_if<ToolRequest>(&request.what))
        return id + "tool " + tool->tool + " " + tool->args.dump() + " in " + tool->cwd +
               (tool->wantsProgress ? " with progress" : "");
    if (auto const* const help = std::get_if<HelpRequest>(&request.what))
        return id + "help " + help->command + (help->wantsTools ? " with tools" : "");
    if (auto const* const cancel = std::get_if<CancelRequest>(&request.what))
        return id + "cancel " + cancel->id.dump();
    return id + std::get<BadRequest>(request.what).sentence;
}

std::string notJSON(std::string const& line)
{
    return std::string("null Not a JSON request: ").append(line);
}

} // namespace

TEST(Protocol, ReadsRequests)
{
    char const* const noTool = "A request needs a \"tool\" (or \"help\").";
    std::string const deep = std::string(200, '[') + std::string(200, ']');
    struct Case {
        std::string line;
        std::string meaning;
    };
    for (Case const& c : {
             Case{R"({"id":1,"cwd":"/w","tool":"status","args":{"a":2}})",
                  R"(1 tool status {"a":2} in /w)"},
             Case{R"({"id":"x","tool":"t","progress":true})", R"("x" tool t {} in  with progress)"},
             Case{R"({"id":{"a":[1]},"tool":"t","args":null})", R"({"a":[1]} tool t {} in )"},
             Case{"{\"tool\":\"t\"}\r", "null tool t {} in "},
             Case{R"({"id":1,"help":""})", "1 help "},
             Case{R"({"id":1,"help":null})", "1 help "},
             Case{R"({"id":1,"help":"clip-add","tool":"t","tools":true})",
                  "1 help clip-add with tools"},
             Case{R"({"id":1,"help":null,"tool":"t"})", "1 tool t {} in "},
             Case{R"({"cancel":7})", "null cancel 7"},
             Case{R"({"id":3})", std::string("3 ") + noTool},
             Case{R"({"id":3,"tool":5})", std::string("3 ") + noTool},
             Case{R"({"id":3,"tool":"t","args":[1]})",
                  "3 The \"args\" of a request must be an object."},
             Case{"", notJSON("")},
             Case{"hello", notJSON("hello")},
             Case{"[1]", notJSON("[1]")},
             Case{R"({"id":1e999,"tool":"t"})", notJSON(R"({"id":1e999,"tool":"t"})")},
             Case{"{\"tool\":\"\xFF\"}", notJSON("{\"tool\":\"\xEF\xBF\xBD\"}")},
             Case{std::string(300, 'a'), notJSON(std::string(200, 'a') + "…")},
             Case{std::string(199, 'a') + "éé", notJSON(std::string(199, 'a') + "…")},
             Case{deep, notJSON(deep.substr(0, 200) + "…")},
             Case{R"({"id":"[[[[\"[","tool":"t"})", R"("[[[[\"[" tool t {} in )"},
         })
        EXPECT_EQ(understood(c.line), c.meaning) << c.line.substr(0, 80);
    // Deep enough to run out of stack, were it taken apart step by step.
    EXPECT_THAT(understood(std::string(10'000'000, '[')), testing::StartsWith("null Not a JSON"));
}

TEST(Protocol, RequestsAndAnswersArriveAsTheyWereSent)
{
    ToolRequest const sent{.tool = "t",
                           .args = {{"a", 1}},
                           .words = {{"a", "01"}},
                           .cwd = "/w",
                           .wantsProgress = true};
    Request const request = decodeRequest(encode(5, sent));
    auto const& tool = std::get<ToolRequest>(request.what);
    EXPECT_EQ(request.id, 5);
    EXPECT_EQ(tool.tool, "t");
    EXPECT_EQ(tool.args, sent.args);
    EXPECT_EQ(tool.words, sent.words);
    EXPECT_EQ(tool.cwd, "/w");
    EXPECT_TRUE(tool.wantsProgress);

    std::string const picture("\x89PNG\0\n\xFF", 7);
    std::string const line = encode(Reply{.id = "a",
                                          .ok = false,
                                          .text = "two\nlines \xFF",
                                          .images = {picture, ""},
                                          .tools = nullptr});
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    auto const answer = decodeAnswer(line);
    ASSERT_TRUE(answer);
    auto const& reply = std::get<Reply>(*answer);
    EXPECT_EQ(reply.id, "a");
    EXPECT_FALSE(reply.ok);
    EXPECT_EQ(reply.text, "two\nlines \xEF\xBF\xBD");
    EXPECT_THAT(reply.images, ElementsAre(picture, ""));

    auto const report = decodeAnswer(encode(ProgressReport{1, 0.25, "Encoding"}));
    ASSERT_TRUE(report);
    EXPECT_EQ(std::get<ProgressReport>(*report).fraction, 0.25);
    EXPECT_EQ(std::get<ProgressReport>(*report).stage, "Encoding");

    for (char const* const bad :
         {"", "x", "{}", "[]", R"({"id":1,"ok":"yes"})", R"({"ok":true,"images":["a"]})"})
        EXPECT_FALSE(decodeAnswer(bad)) << bad;
    // Those without images or tools have no keys for them.
    EXPECT_EQ(encode(Reply{.id = 1, .ok = true, .text = "", .images = {}, .tools = nullptr}),
              "{\"id\":1,\"ok\":true,\"text\":\"\"}\n");
}

TEST(Base64, CarriesAnyBytes)
{
    for (auto const& [bytes, text] : {std::pair{"", ""},
                                      {"f", "Zg=="},
                                      {"fo", "Zm8="},
                                      {"foo", "Zm9v"},
                                      {"foob", "Zm9vYg=="},
                                      {"\xFB\xFF", "+/8="}}) {
        EXPECT_EQ(base64(bytes), text);
        EXPECT_EQ(fromBase64(text), bytes);
    }
    for (char const* const bad : {"Z", "Zg=", "Z===", "Zg==Zg==", "Z\n==", "Zm9-"})
        EXPECT_FALSE(fromBase64(bad)) << bad;
}

TEST(TakeLines, GiveTheSameLinesHoweverTheyArrive)
{
    std::string const stream = "one\n\ntwo\r\nthr\xC3\xA9\x65\n" + std::string(300, 'x') + "\ntail";
    std::string whole = stream;
    auto const lines = CLISocket::takeLines(whole);
    EXPECT_THAT(lines, ElementsAre("one", "", "two\r", "thr\xC3\xA9\x65", std::string(300, 'x')));
    EXPECT_EQ(whole, "tail");

    std::mt19937 random(1);
    for (int round = 0; round < 100; ++round) {
        std::string buffer;
        std::vector<std::string> taken;
        for (std::size_t at = 0; at < stream.size();) {
            std::size_t const length = random() % 7;
            std::size_t const scanned = buffer.size();
            buffer += stream.substr(at, length);
            at += length;
            for (std::string& line : CLISocket::takeLines(buffer, scanned))
                taken.push_back(line);
        }
        ASSERT_EQ(taken, lines);
        ASSERT_EQ(buffer, "tail");
    }
}

TEST(SocketPath, IsShortAndKeepsProfilesApart)
{
    auto const folderOf = [](std::size_t length) {
        return std::string(length, 'f').insert(0, 1, '/');
    };
    std::string const longFolder = folderOf(200);
    struct Case {
        std::string folder;
        std::string profile;
        std::string path;
    };
    for (Case const& c : {
             Case{"/s", "", "/s/cli.sock"},
             Case{"/s", " \n", "/s/cli.sock"},
             Case{"/s", " work\n", "/s/cli-work.sock"},
             Case{"/s", "../a b/é!", "/s/cli-..ab.sock"},
             Case{"/s", "A_z-0.9", "/s/cli-A_z-0.9.sock"},
             Case{longFolder, "", "/tmp/framewright-cli-7.sock"},
             Case{longFolder, "work", "/tmp/framewright-cli-7-work.sock"},
             // 99 bytes are short enough, 100 are not.
             Case{folderOf(89), "", folderOf(89) + "/cli.sock"},
             Case{folderOf(90), "", "/tmp/framewright-cli-7.sock"},
         })
        EXPECT_EQ(CLISocket::path(c.folder, c.profile, 7), c.path);
}

TEST(Socket, OneEditorServesAndAStaleFileDoesNotMatter)
{
    TemporaryFolder const folder;
    auto const path = folder / "cli.sock";
    EXPECT_FALSE(CLISocket::connect(path));
    std::ofstream(path) << "left behind";
    {
        auto const listener = CLISocket::listen(path);
        struct stat status {};
        ASSERT_EQ(::stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600u);
        EXPECT_TRUE(CLISocket::connect(path));
        try {
            CLISocket::listen(path);
            FAIL();
        } catch (CLISocket::SocketError const& error) {
            EXPECT_EQ(error.cause, CLISocket::SocketError::Cause::alreadyRunning);
        }
        EXPECT_TRUE(CLISocket::connect(path));
    }
    // Its file is still there, as after a crash.
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_FALSE(CLISocket::connect(path));
    auto const next = CLISocket::listen(path);
    EXPECT_TRUE(CLISocket::connect(path));

    try {
        CLISocket::listen(folder / "no/cli.sock");
        FAIL();
    } catch (CLISocket::SocketError const& error) {
        EXPECT_EQ(error.cause, CLISocket::SocketError::Cause::system);
    }
    // A path longer than an address is cut, on both sides alike.
    auto const longPath = folder / std::string(120, 'x');
    auto const cut = CLISocket::listen(longPath);
    EXPECT_TRUE(CLISocket::connect(longPath));
}

TEST(Socket, AnotherUsersProcessIsRefused)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser can become another user";
    TemporaryFolder const folder;
    auto const path = folder / "cli.sock";
    auto const listener = CLISocket::listen(path);
    ASSERT_EQ(::chmod(path.c_str(), 0777), 0);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);

    pid_t const child = ::fork();
    if (child == 0) {
        bool const isOther = ::setuid(65534) == 0;
        ::_exit(isOther && !CLISocket::connect(path) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    // The client came as far as connecting, and is not ours from this side either.
    CLISocket::Descriptor const accepted(::accept(listener.socket.get(), nullptr, nullptr));
    ASSERT_TRUE(accepted);
    EXPECT_FALSE(CLISocket::isOwnPeer(accepted.get()));
}

} // namespace framewright
