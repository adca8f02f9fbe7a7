#include "cli/server.h"

#include "cli/internal/line_server.h"
#include "serving.h"
#include "temporary_folder.h"
#include "toy_editor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <set>

namespace framewright {

using nlohmann::json;
using testing::ElementsAre;

namespace {

std::string echo(int id, std::string const& text)
{
    return json({{"id", id}, {"tool", "echo"}, {"args", {{"text", text}}}}).dump() + "\n";
}

/// The next line as JSON; null at the end of the stream.
json answerOf(RawClient& client)
{
    auto const line = client.line();
    return line ? json::parse(*line) : json();
}

std::string textOf(RawClient& client)
{
    return answerOf(client).value("text", "");
}

struct ServerTest : testing::Test {
    void SetUp() override { editor.server().start(path); }

    TemporaryFolder const folder;
    std::filesystem::path const path = folder / "cli.sock";
    ToyEditor editor;
};

} // namespace

TEST_F(ServerTest, AnswersRequestsHoweverTheyArrive)
{
    whileServing([&] {
        RawClient client(path);
        // Two lines in one write, and one line in many, split even within a character.
        client.send(echo(1, "one") + echo(2, "two"));
        std::set<std::string> answers{textOf(client), textOf(client)};
        EXPECT_EQ(answers, (std::set<std::string>{"one", "two"}));
        for (char const c : echo(3, "drei Größen"))
            client.send(std::string(1, c));
        EXPECT_EQ(answerOf(client), json({{"id", 3}, {"ok", true}, {"text", "drei Größen"}}));

        // The id is whatever the client likes; names have hyphens or underscores.
        client.send(R"({"id":{"a":[1,null]},"tool":"contact-sheet","args":{"count":1}})"
                    "\n");
        EXPECT_EQ(answerOf(client), json({{"id", {{"a", {1, nullptr}}}},
                                          {"ok", true},
                                          {"text", "1 images"},
                                          {"images", {"aW1hZ2UgMQ=="}}}));
    });
}

TEST_F(ServerTest, BadLinesGetASentenceAndTheConnectionGoesOn)
{
    whileServing([&] {
        RawClient client(path);
        client.send("hello\n");
        EXPECT_EQ(answerOf(client),
                  json({{"id", nullptr}, {"ok", false}, {"text", "Not a JSON request: hello"}}));
        client.send("{\"id\":4}\n");
        EXPECT_EQ(answerOf(client), json({{"id", 4},
                                          {"ok", false},
                                          {"text", "A request needs a \"tool\" (or \"help\")."}}));
        client.send("{\"id\":5,\"tool\":\"fail\"}\n");
        EXPECT_EQ(answerOf(client), json({{"id", 5}, {"ok", false}, {"text", "It failed."}}));
        client.send(echo(6, "still here"));
        EXPECT_EQ(textOf(client), "still here");
    });
}

TEST_F(ServerTest, GivesHelp)
{
    whileServing([&] {
        RawClient client(path);
        client.send("{\"id\":1,\"help\":\"\"}\n");
        json const index = answerOf(client);
        EXPECT_TRUE(index["ok"]);
        EXPECT_THAT(index["text"].get<std::string>(),
                    testing::StartsWith("Commands (run `cli help <command>` for options):\n"
                                        "  echo               Prints a text.\n"));
        EXPECT_FALSE(index.contains("tools"));

        client.send(
            "{\"id\":2,\"help\":\"contact-sheet\"}\n{\"id\":3,\"help\":\"contact_sheet\"}\n");
        std::string const help = textOf(client);
        EXPECT_THAT(help, testing::StartsWith("contact-sheet: Some images."));
        EXPECT_EQ(textOf(client), help);

        client.send("{\"id\":4,\"help\":\"fly\"}\n");
        json const unknown = answerOf(client);
        EXPECT_FALSE(unknown["ok"]);
        EXPECT_EQ(unknown["text"], "Unknown command fly.\n\n" + index["text"].get<std::string>());

        client.send(
            "{\"id\":5,\"help\":\"echo\",\"tools\":true}\n{\"help\":\"\",\"tools\":true}\n");
        EXPECT_EQ(answerOf(client)["tools"][0]["required"], json({"text"}));
        EXPECT_GT(answerOf(client)["tools"].size(), 5u);
    });
}

TEST_F(ServerTest, ALineWithoutEndIsRefusedAndHeldNowhere)
{
    whileServing([&] {
        RawClient client(path);
        // The answer comes while it is still being sent, and behind it the end.
        auto sending = std::async(std::launch::async, [&] {
            std::string const piece(1024 * 1024, 'x');
            for (int i = 0; i < 100; ++i)
                client.send(piece);
        });
        EXPECT_EQ(answerOf(client),
                  json({{"id", nullptr},
                        {"ok", false},
                        {"text", "A request line can't be longer than 64 MiB."}}));
        EXPECT_FALSE(client.line());
        sending.get();

        // A long one that is short enough is a request like any other.
        RawClient other(path);
        std::string const text(20 * 1024 * 1024, 'y');
        auto sendingOther = std::async(std::launch::async, [&] { other.send(echo(1, text)); });
        EXPECT_EQ(textOf(other), text);
    });
}

TEST_F(ServerTest, ClientsThatVanishHarmNothing)
{
    std::atomic<bool> waits = false;
    editor.onWaiting = [&] { waits = true; };
    whileServing([&] {
        RawClient(path).send("{\"id\":1,\"to");
        RawClient(path).send("{\"id\":1,\"tool\":\"big\",\"args\":{\"size\":5000000}}\n");
        for (int i = 0; i < 100; ++i)
            RawClient(path).send(echo(i, "gone"));
        {
            RawClient waiting(path);
            waiting.send("{\"id\":1,\"tool\":\"wait\",\"progress\":true}\n");
            ASSERT_TRUE(waiting.line());
        }
        RawClient client(path);
        client.send(echo(1, "alive"));
        EXPECT_EQ(textOf(client), "alive");
    });
    EXPECT_TRUE(waits);
    // Its client had disconnected, so the command was asked to stop.
    while (editor.cancelled == 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

TEST_F(ServerTest, AClientThatHasSaidAllStillGetsItsAnswers)
{
    whileServing([&] {
        RawClient client(path);
        client.send(echo(1, "one") + echo(2, "two"));
        client.endSending();
        EXPECT_EQ(textOf(client), "one");
        EXPECT_EQ(textOf(client), "two");
        EXPECT_FALSE(client.line());
    });
}

TEST_F(ServerTest, ManyClientsAtOnceGetTheirOwnAnswers)
{
    constexpr int clients = 16;
    constexpr int requests = 50;
    std::atomic<int> right = 0;
    whileServing([&] {
        std::vector<std::thread> threads;
        for (int number = 0; number < clients; ++number) {
            threads.emplace_back([&, number] {
                RawClient client(path);
                std::set<int> open;
                for (int id = 0; id < requests; ++id) {
                    client.send(echo(id, std::to_string(number * 1000 + id)));
                    open.insert(id);
                }
                while (!open.empty()) {
                    json const answer = answerOf(client);
                    int const id = answer.value("id", -1);
                    if (open.erase(id) == 1 && answer["text"] == std::to_string(number * 1000 + id))
                        ++right;
                    else
                        break;
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    });
    EXPECT_EQ(right, clients * requests);
}

TEST_F(ServerTest, ProgressComesToThoseWhoAskAndCancellingEndsACommand)
{
    whileServing([&] {
        RawClient client(path);
        client.send("{\"id\":\"w\",\"tool\":\"wait\",\"progress\":true}\n");
        EXPECT_EQ(answerOf(client), json({{"id", "w"}, {"progress", 0.25}, {"stage", "Waiting"}}));
        EXPECT_EQ(answerOf(client),
                  json({{"id", "w"}, {"progress", 0.5}, {"stage", "Still waiting"}}));

        // Neither another id nor the same one of another connection.
        RawClient other(path);
        other.send("{\"cancel\":\"w\"}\n" + echo(1, "other"));
        EXPECT_EQ(textOf(other), "other");
        client.send("{\"cancel\":\"v\"}\n" + echo(1, "meanwhile"));
        EXPECT_EQ(textOf(client), "meanwhile");

        client.send("{\"cancel\":\"w\"}\n");
        EXPECT_EQ(answerOf(client), json({{"id", "w"}, {"ok", false}, {"text", "Cancelled."}}));

        // Without asking there is none.
        client.send("{\"id\":2,\"tool\":\"wait\"}\n{\"cancel\":2}\n");
        EXPECT_EQ(answerOf(client), json({{"id", 2}, {"ok", false}, {"text", "Cancelled."}}));
    });
    EXPECT_EQ(editor.cancelled, 2);
}

TEST_F(ServerTest, StoppingClosesEverythingAtOnce)
{
    std::optional<RawClient> client;
    editor.onWaiting = [&] {
        editor.server().stop();
        EXPECT_FALSE(std::filesystem::exists(path));
        EXPECT_FALSE(RawClient(path));
    };
    whileServing([&] {
        client.emplace(path);
        client->send("{\"id\":1,\"tool\":\"wait\"}\n");
        EXPECT_FALSE(client->line());
    });
    EXPECT_EQ(editor.cancelled, 1);

    editor.server().start(path);
    whileServing([&] {
        RawClient next(path);
        next.send(echo(1, "again"));
        EXPECT_EQ(textOf(next), "again");
    });
}

namespace {

/// A server of lines with limits that a test can reach. Answers nothing by itself.
struct LineServerTest : testing::Test {
    void serve(LineServer::Limits limits)
    {
        server.emplace(CLISocket::listen(path),
                       LineServer::Callbacks{
                           .line =
                               [this](LineServer::LineID line, std::string text) {
                                   std::lock_guard const lock(mutex);
                                   lines.emplace_back(line, std::move(text));
                                   changed.notify_all();
                               },
                           .closed =
                               [this](LineServer::ConnectionID) {
                                   std::lock_guard const lock(mutex);
                                   ++closed;
                                   changed.notify_all();
                               },
                           .tooLong = [] { return std::string("too long\n"); },
                       },
                       limits);
    }
    template <class Condition>
    void waitUntil(Condition const& condition)
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, condition);
    }

    TemporaryFolder const folder;
    std::filesystem::path const path = folder / "cli.sock";
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::pair<LineServer::LineID, std::string>> lines;
    int closed = 0;
    std::optional<LineServer> server; ///< Last, as its thread uses all the others.
};

} // namespace

TEST_F(LineServerTest, ReadingWaitsForAnswers)
{
    serve({.waitingLines = 3});
    RawClient client(path);
    client.send("1\n2\n3\n");
    waitUntil([&] { return lines.size() == 3; });
    client.send("4\n");
    client.endSending();
    // Another client is served meanwhile; afterwards the first one's fourth line would have come.
    RawClient other(path);
    other.send("other\n");
    waitUntil([&] { return lines.size() == 4; });
    EXPECT_EQ(lines[3].second, "other");

    server->answer(lines[0].first, [] { return std::string("one\n"); });
    waitUntil([&] { return lines.size() == 5; });
    EXPECT_EQ(lines[4].second, "4");
    // An answer that was given before, and one of a line that never was.
    server->answer(lines[0].first, [] { return std::string("once more\n"); });
    server->send({.connection = 99, .number = 1}, [] { return std::string("nobody\n"); });
    server->answer(lines[1].first, nullptr);
    server->answer(lines[2].first, [] { return std::string("three\n"); });
    server->answer(lines[4].first, [] { return std::string("four\n"); });
    EXPECT_EQ(client.line(), "one");
    EXPECT_EQ(client.line(), "three");
    EXPECT_EQ(client.line(), "four");
    EXPECT_FALSE(client.line());
}

TEST_F(LineServerTest, AClientThatDoesNotFetchItsAnswersIsDropped)
{
    serve({.unsent = 1'000'000});
    RawClient client(path);
    client.send("a\n");
    waitUntil([&] { return !lines.empty(); });
    for (int i = 0; i < 20; ++i)
        server->send(lines[0].first, [] { return std::string(100'000, 'x'); });
    waitUntil([&] { return closed == 1; });
}

TEST_F(LineServerTest, LimitsAreExact)
{
    serve({.line = 10, .connections = 2});
    RawClient client(path);
    client.send("0123456789\nrest");
    waitUntil([&] { return !lines.empty(); });
    EXPECT_EQ(lines[0].second, "0123456789");

    RawClient tooLong(path);
    tooLong.send("short\n0123456789a\nnever seen\n");
    EXPECT_EQ(tooLong.line(), "too long");
    waitUntil([&] { return lines.size() == 2; });
    EXPECT_EQ(lines[1].second, "short");

    // The third connection is taken when one of the two others has gone.
    RawClient third(path);
    third.send("third\n");
    server->answer(lines[1].first, [] { return std::string("answer\n"); });
    EXPECT_EQ(tooLong.line(), "answer");
    EXPECT_FALSE(tooLong.line());
    waitUntil([&] { return lines.size() == 3; });
    EXPECT_EQ(lines[2].second, "third");
}

} // namespace framewright
