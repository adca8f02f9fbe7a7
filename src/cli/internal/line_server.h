#pragma once

#include "cli/socket.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace framewright {

/// Takes connections on a local socket, reads lines from them and writes lines to them, on a thread
/// of its own. What the lines say is not its business.
///
/// No client can hold it up or use up its memory: reading pauses while too much of a client's is
/// unanswered, and one that does not fetch its answers is dropped.
class LineServer {
public:
    using ConnectionID = std::uint64_t; ///< Never used twice.

    /// A line that was read, for answering it.
    struct LineID {
        ConnectionID connection = 0;
        std::uint64_t number = 0;

        auto operator<=>(LineID const&) const = default;
    };

    struct Limits {
        std::size_t line = 64 * 1024 * 1024;         ///< A longer line is answered with `tooLong`.
        std::size_t unsent = 256 * 1024 * 1024;      ///< Waiting for one client to read it.
        std::size_t waitingBytes = 64 * 1024 * 1024; ///< Of one client's unanswered lines.
        std::size_t waitingLines = 256;
        std::size_t connections = 256; ///< More wait until another has gone.
    };

    /// Called on the server's thread, except after stop().
    struct Callbacks {
        std::function<void(LineID, std::string line)> line;
        std::function<void(ConnectionID)> closed;
        std::function<std::string()> tooLong; ///< What to answer, with its line feed.
    };

    /// Makes the text to send, with its line feed, on the server's thread.
    using MakeText = std::function<std::string()>;

    LineServer(CLISocket::Listener listener, Callbacks callbacks, Limits limits);
    LineServer(CLISocket::Listener listener, Callbacks callbacks)
        : LineServer(std::move(listener), std::move(callbacks), Limits{})
    {
    }
    /// Stops.
    ~LineServer();

    /// Sends something before the answer. To a line that was answered, or whose connection is
    /// gone, it sends nothing. From any thread.
    void send(LineID line, MakeText text);

    /// Sends the answer of a line, or with no text says that it has none. Each line is to be
    /// answered once. From any thread.
    void answer(LineID line, MakeText text);

    /// Sends what goes at once of what was given to send, closes every connection and the socket,
    /// and returns when the thread has ended. Afterwards nothing is called and nothing sent.
    void stop();

private:
    class Loop;
    std::unique_ptr<Loop> m_loop;
};

} // namespace framewright
