#pragma once

#include "cli/toolbox.h"

#include <filesystem>
#include <memory>

namespace framewright {

/// The editor's end of the command line: takes requests from the socket to the toolbox, and its
/// results back.
///
/// To be made, started and stopped on the main thread, whose event loop runs the commands. Sockets
/// are read and written on a thread of their own, where lines are also parsed and replies put into
/// words, so that neither keeps the main thread.
class CLIServer {
public:
    /// The toolbox must outlive the server and the commands it began.
    explicit CLIServer(Toolbox const& toolbox);
    /// Stops.
    ~CLIServer();

    /// Listens at CLISocket::path(). Throws CLISocket::SocketError.
    void start();
    void start(std::filesystem::path const& socketPath);

    /// Closes all connections and the socket before it returns. Running commands are told to stop;
    /// their results go nowhere.
    void stop();

private:
    class Session;
    Toolbox const& m_toolbox;
    std::shared_ptr<Session> m_session;
};

} // namespace framewright
