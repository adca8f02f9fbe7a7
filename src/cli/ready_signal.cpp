#include "cli/ready_signal.h"

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace framewright {

ReadySignal ReadySignal::take()
{
    ReadySignal signal;
    char const* const text = std::getenv(variable);
    if (!text)
        return signal;

    int descriptor = -1;
    char const* const end = text + std::strlen(text);
    if (std::from_chars(text, end, descriptor).ptr == end && descriptor > STDERR_FILENO &&
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0)
        signal.m_pipe = CLISocket::Descriptor(descriptor);
    ::unsetenv(variable);
    return signal;
}

void ReadySignal::announce()
{
    // The client may be gone, which is no business of the editor's; but then writing raises
    // SIGPIPE, which is.
    if (m_pipe) {
        auto const previous = std::signal(SIGPIPE, SIG_IGN);
        [[maybe_unused]] auto const written = ::write(m_pipe.get(), "\n", 1);
        std::signal(SIGPIPE, previous);
    }
    m_pipe.close();
}

} // namespace framewright
