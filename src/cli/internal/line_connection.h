#pragma once

#include "cli/internal/line_server.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>

namespace framewright {

/// One client of a LineServer: its unprocessed input, its unanswered lines and its unsent
/// output. Belongs to the server's thread.
class LineConnection {
public:
    LineConnection(CLISocket::Descriptor socket, LineServer::ConnectionID id,
                   LineServer::Limits const& limits);

    int socket() const { return m_socket.get(); }

    bool wantsToRead() const;
    bool wantsToWrite() const { return !m_output.empty(); }

    /// Whether there is nothing left to read from it or to send to it.
    bool isFinished() const;

    /// Reads available input, a limited amount per call so that other clients get their turn, and
    /// hands out its lines. False when the connection is broken.
    bool read(LineServer::Callbacks const& callbacks);

    /// Sends as much as possible without blocking. False when the connection is broken.
    bool write();

    bool isWaiting(std::uint64_t line) const { return m_waiting.contains(line); }
    void setAnswered(std::uint64_t line);

    /// Queues output and sends as much as possible. False when the connection is broken or the
    /// client leaves too much unread.
    bool send(std::string text);

private:
    enum class State {
        reading,
        skipping, ///< The rest of a line that was too long.
        ended,    ///< Nothing more is read; what waits is still answered.
    };

    bool take(std::string_view bytes, LineServer::Callbacks const& callbacks);
    bool takeLines(std::size_t scanned, LineServer::Callbacks const& callbacks);
    bool refuseLine(LineServer::Callbacks const& callbacks);
    void skip(std::string_view bytes);

    CLISocket::Descriptor const m_socket;
    LineServer::ConnectionID const m_id;
    LineServer::Limits const& m_limits;
    State m_state = State::reading;
    std::string m_input;
    std::size_t m_skipped = 0;
    std::uint64_t m_nextLine = 1;
    std::map<std::uint64_t, std::size_t> m_waiting; ///< Unanswered lines and their sizes.
    std::size_t m_waitingBytes = 0;
    std::deque<std::string> m_output;
    std::size_t m_sent = 0;   ///< Of the first text.
    std::size_t m_unsent = 0; ///< Of all together.
};

} // namespace framewright
