#include "cli/internal/line_server.h"

#include "cli/internal/line_connection.h"

#include <cerrno>
#include <exception>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace framewright {

namespace {

/// Delay before accepting again when the system is out of descriptors or memory.
constexpr int roomlessPause = 100; // ms

} // namespace

class LineServer::Loop {
public:
    Loop(CLISocket::Listener listener, Callbacks callbacks, Limits limits);
    ~Loop() { stop(); }

    void post(LineID line, MakeText text, bool isAnswer);
    void stop();

private:
    struct Outgoing {
        LineID line;
        MakeText text;
        bool isAnswer;
    };
    using Connections = std::map<ConnectionID, LineConnection>;

    void run();
    /// Polls. Returns the entries of the wake-up pipe, of the listener, then of each connection in
    /// order.
    std::vector<pollfd> wait() const;
    void wake();
    bool takeWakeUp();
    void acceptPending();
    void sendOutgoing();
    bool deliver(Outgoing const& outgoing, LineConnection& connection);
    bool serve(LineConnection& connection, short events);
    Connections::iterator close(Connections::iterator connection);

    CLISocket::Listener m_listener;
    Callbacks const m_callbacks;
    Limits const m_limits;
    CLISocket::Descriptor m_wakeReader;
    CLISocket::Descriptor m_wakeWriter;

    // The thread's own.
    Connections m_connections;
    ConnectionID m_nextConnection = 1;
    bool m_isRoomless = false;

    std::mutex m_mutex; ///< Guards what follows.
    std::vector<Outgoing> m_outgoing;
    bool m_isStopping = false;

    std::thread m_thread; ///< Last, as it uses all the others.
};

LineServer::Loop::Loop(CLISocket::Listener listener, Callbacks callbacks, Limits limits)
    : m_listener(std::move(listener)), m_callbacks(std::move(callbacks)), m_limits(limits)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        throw CLISocket::SocketError(CLISocket::SocketError::Cause::system,
                                     "The command-line socket could not be served: no more files "
                                     "can be opened.");
    m_wakeReader = CLISocket::Descriptor(ends[0]);
    m_wakeWriter = CLISocket::Descriptor(ends[1]);
    m_thread = std::thread([this] { run(); });
}

void LineServer::Loop::post(LineID line, MakeText text, bool isAnswer)
{
    {
        std::lock_guard const lock(m_mutex);
        if (m_isStopping)
            return;
        m_outgoing.push_back({line, std::move(text), isAnswer});
    }
    wake();
}

void LineServer::Loop::stop()
{
    {
        std::lock_guard const lock(m_mutex);
        m_isStopping = true;
    }
    wake();
    if (!m_thread.joinable())
        return;
    m_thread.join();
    m_connections.clear();
    // While the lock is held, so that the file of an editor that starts now stays.
    ::unlink(m_listener.file.c_str());
    m_listener = {};
}

void LineServer::Loop::wake()
{
    // A full pipe wakes as well.
    [[maybe_unused]] auto const written = ::write(m_wakeWriter.get(), "", 1);
}

/// False when the loop is to end.
bool LineServer::Loop::takeWakeUp()
{
    char bytes[256];
    while (::read(m_wakeReader.get(), bytes, sizeof bytes) > 0) {
    }
    std::lock_guard const lock(m_mutex);
    return !m_isStopping;
}

void LineServer::Loop::run()
{
    while (true) {
        std::vector<pollfd> const entries = wait();
        bool const goesOn = entries[0].revents == 0 || takeWakeUp();
        // Also when stopping: the reply of the command that quits the editor may be among it.
        sendOutgoing();
        if (!goesOn)
            return;
        m_isRoomless = false;

        // New connections come last, so the entries still belong to the connections in order; but
        // one may have gone while something was sent to it.
        auto connection = m_connections.begin();
        for (std::size_t i = 2; i < entries.size() && connection != m_connections.end(); ++i) {
            if (connection->second.socket() != entries[i].fd)
                continue;
            bool const stays = serve(connection->second, entries[i].revents);
            connection = stays ? std::next(connection) : close(connection);
        }
        if (entries[1].revents != 0)
            acceptPending();
    }
}

std::vector<pollfd> LineServer::Loop::wait() const
{
    bool const accepts = m_connections.size() < m_limits.connections && !m_isRoomless;
    std::vector<pollfd> entries{{m_wakeReader.get(), POLLIN, 0},
                                {accepts ? m_listener.socket.get() : -1, POLLIN, 0}};
    for (auto const& [id, connection] : m_connections) {
        int const events =
            (connection.wantsToRead() ? POLLIN : 0) | (connection.wantsToWrite() ? POLLOUT : 0);
        entries.push_back({connection.socket(), static_cast<short>(events), 0});
    }
    ::poll(entries.data(), entries.size(), m_isRoomless ? roomlessPause : -1);
    return entries;
}

/// False when it is to be closed.
bool LineServer::Loop::serve(LineConnection& connection, short events)
{
    try {
        if ((events & POLLIN) && !connection.read(m_callbacks))
            return false;
        if ((events & POLLOUT) && !connection.write())
            return false;
    } catch (std::bad_alloc const&) {
        return false;
    }
    // Both directions are closed: nobody is left to read an answer. While input is read, that is
    // found out once all of it has been.
    bool const isGone =
        (events & (POLLHUP | POLLERR)) && !((events & POLLIN) && connection.wantsToRead());
    return !isGone && !connection.isFinished();
}

LineServer::Loop::Connections::iterator LineServer::Loop::close(Connections::iterator connection)
{
    ConnectionID const id = connection->first;
    auto const next = m_connections.erase(connection);
    m_callbacks.closed(id);
    return next;
}

void LineServer::Loop::acceptPending()
{
    while (m_connections.size() < m_limits.connections) {
        CLISocket::Descriptor socket(
            ::accept4(m_listener.socket.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!socket) {
            if (errno == EINTR || errno == ECONNABORTED)
                continue;
            // Out of resources, the listener stays readable: without a pause this loop would spin.
            m_isRoomless = errno != EAGAIN && errno != EWOULDBLOCK;
            return;
        }
        if (!CLISocket::isOwnPeer(socket.get()))
            continue;
        ConnectionID const id = m_nextConnection++;
        m_connections.try_emplace(id, std::move(socket), id, m_limits);
    }
}

void LineServer::Loop::sendOutgoing()
{
    std::vector<Outgoing> outgoing;
    {
        std::lock_guard const lock(m_mutex);
        outgoing.swap(m_outgoing);
    }
    for (Outgoing const& each : outgoing) {
        auto const found = m_connections.find(each.line.connection);
        if (found != m_connections.end() && !deliver(each, found->second))
            close(found);
    }
}

/// False when the connection is to be closed.
bool LineServer::Loop::deliver(Outgoing const& outgoing, LineConnection& connection)
{
    if (!connection.isWaiting(outgoing.line.number))
        return true;
    if (outgoing.isAnswer)
        connection.setAnswered(outgoing.line.number);
    try {
        if (outgoing.text && !connection.send(outgoing.text()))
            return false;
    } catch (std::bad_alloc const&) {
        return false;
    }
    return !connection.isFinished();
}

LineServer::LineServer(CLISocket::Listener listener, Callbacks callbacks, Limits limits)
    : m_loop(std::make_unique<Loop>(std::move(listener), std::move(callbacks), limits))
{
}

LineServer::~LineServer() = default;

void LineServer::send(LineID line, MakeText text)
{
    m_loop->post(line, std::move(text), false);
}

void LineServer::answer(LineID line, MakeText text)
{
    m_loop->post(line, std::move(text), true);
}

void LineServer::stop()
{
    m_loop->stop();
}

} // namespace framewright
