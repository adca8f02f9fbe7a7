#pragma once

#include "cli/line_server.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>

namespace framewright {

/// One client of a LineServer: what was read of it and not yet taken, what waits for an answer and
/// what waits to be sent. Belongs to the server's thread.
class LineConnection {
public:
    LineConnection(CLISocket::Descriptor socket, LineServer::ConnectionID id,
                   LineServer::Limits const& limits);

    int socket() const { return m_socket.get(); }

    bool wantsToRead() const;
    bool wantsToWrite() const { return !m_output.empty(); }

    /// Whether nothing more is to come from it or to go to it.
    bool isFinished() const;

    /// Reads what is there, a piece at a time so that others get their turn, and hands out the
    /// lines. False when the connection is broken.
    bool read(LineServer::Callbacks const& callbacks);

    /// Sends what goes without waiting. False when the connection is broken.
    bool write();

    bool isWaiting(std::uint64_t line) const { return m_waiting.contains(line); }
    void setAnswered(std::uint64_t line);

    /// Adds to what is to be sent, and sends what goes. False when the connection is broken or the
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
