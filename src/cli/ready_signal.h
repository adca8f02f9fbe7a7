#pragma once

#include "cli/socket.h"

namespace framewright {

/// How a freshly launched editor tells the client that waits for it that it can be reached.
///
/// The client hands down a pipe and names it in FRAMEWRIGHT_READY_FD. It hears of the editor's
/// death too: the pipe ends with the process.
class ReadySignal {
public:
    static constexpr char const* variable = "FRAMEWRIGHT_READY_FD";

    /// Takes the pipe from the environment, so that no child of this process gets it. To be made
    /// at the start of the process, before there are threads. Without the variable it does nothing.
    static ReadySignal take();

    /// Says that the socket is open. Once; later calls do nothing.
    void announce();

private:
    CLISocket::Descriptor m_pipe;
};

} // namespace framewright
