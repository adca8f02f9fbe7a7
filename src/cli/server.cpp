#include "cli/server.h"

#include "cli/internal/line_server.h"
#include "cli/protocol.h"

#include <QCoreApplication>

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

namespace framewright {

using nlohmann::json;

namespace {

/// The line of a reply, made when it is sent.
LineServer::MakeText lineOf(Reply reply)
{
    return [reply = std::make_shared<Reply const>(std::move(reply))] { return encode(*reply); };
}

std::string tooLongLine()
{
    return encode(Reply{.id = nullptr,
                        .ok = false,
                        .text = "A request line can't be longer than 64 MiB.",
                        .images = {},
                        .tools = nullptr});
}

} // namespace

/// The main thread's part of a server that runs. Commands that still run when it is stopped keep
/// it until they end.
class CLIServer::Session : public std::enable_shared_from_this<Session> {
public:
    explicit Session(Toolbox const& toolbox) : m_toolbox(toolbox) {}

    void start(CLISocket::Listener listener)
    {
        m_lines = std::make_shared<LineServer>(std::move(listener), callbacks());
    }
    void stop();

private:
    using LineID = LineServer::LineID;

    struct Running {
        json id;
        std::stop_source stop;
    };

    LineServer::Callbacks callbacks();
    void post(std::function<void()> work);
    void runPosted();
    void handle(LineID line, Request request);
    void handle(LineID line, json id, ToolRequest request);
    void handle(LineID line, json id, HelpRequest const& request);
    void cancel(LineID line, json const& id);
    void abandon(LineServer::ConnectionID connection);
    template <class Test>
    void requestStop(Test const& test);
    Task<> run(LineID line, json id, ToolCall call);
    Progress progressOf(LineID line, json id);
    void reply(LineID line, Reply reply) { m_lines->answer(line, lineOf(std::move(reply))); }

    Toolbox const& m_toolbox;
    std::map<LineID, Running> m_running;
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_posted; ///< Guarded by the mutex.
    std::shared_ptr<LineServer> m_lines;
};

/// Requests a stop of the commands that the predicate selects.
template <class Test>
void CLIServer::Session::requestStop(Test const& test)
{
    // A stopped command may end at once and remove itself, so collect before stopping.
    std::vector<std::stop_source> sources;
    for (auto const& [line, command] : m_running) {
        if (test(line, command.id))
            sources.push_back(command.stop);
    }
    for (std::stop_source& source : sources)
        source.request_stop();
}

void CLIServer::Session::stop()
{
    m_lines->stop();
    {
        std::lock_guard const lock(m_mutex);
        m_posted.clear();
    }
    requestStop([](LineID, json const&) { return true; });
}

LineServer::Callbacks CLIServer::Session::callbacks()
{
    return {
        .line =
            [this](LineID line, std::string text) {
                post([this, line, request = decodeRequest(text)]() mutable {
                    handle(line, std::move(request));
                });
            },
        .closed =
            [this](LineServer::ConnectionID connection) {
                post([this, connection] { abandon(connection); });
            },
        .tooLong = tooLongLine,
    };
}

/// Posts a call to the main thread. Called on the server's thread.
void CLIServer::Session::post(std::function<void()> work)
{
    {
        std::lock_guard const lock(m_mutex);
        m_posted.push_back(std::move(work));
    }
    // One wake-up each, so that nothing waits where a command runs a loop of its own.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [session = weak_from_this()] {
            if (auto const self = session.lock())
                self->runPosted();
        },
        Qt::QueuedConnection);
}

void CLIServer::Session::runPosted()
{
    std::function<void()> work;
    {
        std::lock_guard const lock(m_mutex);
        if (m_posted.empty()) // The server was stopped.
            return;
        work = std::move(m_posted.front());
        m_posted.pop_front();
    }
    work();
}

void CLIServer::Session::handle(LineID line, Request request)
{
    json const& id = request.id;
    if (auto* const tool = std::get_if<ToolRequest>(&request.what))
        handle(line, id, std::move(*tool));
    else if (auto const* const help = std::get_if<HelpRequest>(&request.what))
        handle(line, id, *help);
    else if (auto const* const cancelled = std::get_if<CancelRequest>(&request.what))
        cancel(line, cancelled->id);
    else
        reply(line, {.id = id,
                     .ok = false,
                     .text = std::get<BadRequest>(request.what).sentence,
                     .images = {},
                     .tools = nullptr});
}

void CLIServer::Session::handle(LineID line, json id, HelpRequest const& request)
{
    Reply answer{.id = std::move(id), .ok = true, .text = {}, .images = {}, .tools = nullptr};
    if (request.command.empty()) {
        answer.text = m_toolbox.helpIndex();
        if (request.wantsTools)
            answer.tools = m_toolbox.descriptors();
    } else if (Tool const* const tool = m_toolbox.find(request.command)) {
        answer.text = m_toolbox.help(*tool);
        if (request.wantsTools)
            answer.tools = json::array({tool->descriptor()});
    } else {
        answer.ok = false;
        answer.text = "Unknown command " + request.command + ".\n\n" + m_toolbox.helpIndex();
    }
    reply(line, std::move(answer));
}

void CLIServer::Session::handle(LineID line, json id, ToolRequest request)
{
    ToolCall call{.tool = std::move(request.tool),
                  .args = std::move(request.args),
                  .words = std::move(request.words),
                  .cwd = std::move(request.cwd),
                  .progress = request.wantsProgress ? progressOf(line, id) : Progress(),
                  .stop = {}};
    run(line, std::move(id), std::move(call));
}

Task<> CLIServer::Session::run(LineID line, json id, ToolCall call)
{
    auto const self = shared_from_this();
    Running& command = m_running[line];
    command.id = id;
    call.stop = command.stop.get_token();

    ToolResult result = co_await m_toolbox.call(std::move(call));
    m_running.erase(line);
    reply(line, {.id = std::move(id),
                 .ok = result.ok,
                 .text = std::move(result.text),
                 .images = std::move(result.images),
                 .tools = nullptr});
}

Progress CLIServer::Session::progressOf(LineID line, json id)
{
    return Progress([lines = m_lines, line, id](double fraction, std::string const& stage) {
        ProgressReport report{.id = id, .fraction = fraction, .stage = stage};
        lines->send(line, [report = std::move(report)] { return encode(report); });
    });
}

void CLIServer::Session::cancel(LineID line, json const& id)
{
    requestStop([&](LineID other, json const& otherID) {
        return other.connection == line.connection && otherID == id;
    });
    m_lines->answer(line, nullptr);
}

void CLIServer::Session::abandon(LineServer::ConnectionID connection)
{
    requestStop([&](LineID line, json const&) { return line.connection == connection; });
}

CLIServer::CLIServer(Toolbox const& toolbox) : m_toolbox(toolbox) {}

CLIServer::~CLIServer()
{
    stop();
}

void CLIServer::start()
{
    start(CLISocket::path());
}

void CLIServer::start(std::filesystem::path const& socketPath)
{
    stop();
    auto session = std::make_shared<Session>(m_toolbox);
    session->start(CLISocket::listen(socketPath));
    m_session = std::move(session);
}

void CLIServer::stop()
{
    // Taken first: a command that ends because of this may stop the server too.
    if (auto const session = std::exchange(m_session, nullptr))
        session->stop();
}

} // namespace framewright
