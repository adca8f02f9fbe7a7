#include "cli/internal/editor_launch.h"

#include "cli/ready_signal.h"
#include "platform/file_error.h"
#include "platform/paths.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace framewright {

namespace {

using Clock = std::chrono::steady_clock;
using Descriptor = CLISocket::Descriptor;
using namespace std::chrono_literals;

constexpr auto patience = 20s;
constexpr auto betweenAttempts = 250ms;
constexpr auto betweenLaunches = 700ms;
constexpr int mostLaunches = 3;

constexpr std::uintmax_t fullLog = 4 * 1024 * 1024;

/// The descriptor of the ready signal's pipe in the editor.
constexpr int readyDescriptor = 3;

/// The log of a background editor. Only one old log is kept, so logs can't fill the disk.
Descriptor openLog()
{
    try {
        std::filesystem::path const folder = applicationSupportFolder();
        ensurePrivateFolder(folder);
        std::filesystem::path const log = folder / "editor.log";
        std::error_code error;
        if (auto const size = std::filesystem::file_size(log, error); !error && size > fullLog)
            std::filesystem::rename(log, folder / "editor.log.old", error);
        return Descriptor(::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    } catch (FileError const&) {
        return {};
    }
}

/// Becomes the editor, in its own session and detached from the client's terminal, folder and
/// pipes.
[[noreturn]] void becomeEditor(std::string const& executable, int log, int ready)
{
    ::setsid();
    if (::chdir("/") != 0)
        ::_exit(127);
    int const null = ::open("/dev/null", O_RDWR);
    ::dup2(null, STDIN_FILENO);
    ::dup2(log >= 0 ? log : null, STDOUT_FILENO);
    ::dup2(log >= 0 ? log : null, STDERR_FILENO);
    if (ready == readyDescriptor)
        ::fcntl(ready, F_SETFD, 0);
    else
        ::dup2(ready, readyDescriptor);
    ::close_range(readyDescriptor + 1, ~0U, 0);
    ::setenv(ReadySignal::variable, std::to_string(readyDescriptor).c_str(), 1);
    ::signal(SIGPIPE, SIG_DFL);
    ::execl(executable.c_str(), executable.c_str(), static_cast<char*>(nullptr));
    ::execl("/proc/self/exe", executable.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
}

/// Starts an editor. The pipe reports when it is ready and closes when it dies. None when no
/// process could be started.
Descriptor launch()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return {};
    Descriptor ready(ends[0]);
    Descriptor const signal(ends[1]);

    std::error_code error;
    std::string const executable = std::filesystem::read_symlink("/proc/self/exe", error).native();
    Descriptor const log = openLog();
    pid_t const child = ::fork();
    if (child == 0)
        becomeEditor(executable, log.get(), signal.get());
    if (child < 0)
        ready.close();
    return ready;
}

enum class News { none, ready, dead };

News waitFor(Descriptor const& pipe, Clock::duration time)
{
    pollfd entry{.fd = pipe.get(), .events = POLLIN, .revents = 0};
    auto const milliseconds = std::chrono::ceil<std::chrono::milliseconds>(std::max(time, 0ns));
    if (::poll(&entry, 1, static_cast<int>(milliseconds.count())) <= 0)
        return News::none;
    char byte;
    ssize_t const length = ::read(pipe.get(), &byte, 1);
    if (length < 0)
        return News::none;
    return length > 0 ? News::ready : News::dead;
}

} // namespace

Descriptor connectToEditor(std::filesystem::path const& socketPath)
{
    if (Descriptor connection = CLISocket::connect(socketPath))
        return connection;

    auto const deadline = Clock::now() + patience;
    auto nextLaunch = Clock::now();
    Descriptor editor;
    bool isAlive = false;
    int launches = 0;
    while (Clock::now() < deadline) {
        if (!isAlive && launches < mostLaunches && Clock::now() >= nextLaunch) {
            editor = launch();
            isAlive = static_cast<bool>(editor);
            ++launches;
            nextLaunch = Clock::now() + betweenLaunches;
        }
        auto wake = std::min(deadline, Clock::now() + betweenAttempts);
        if (!isAlive && launches < mostLaunches)
            wake = std::min(wake, nextLaunch);
        News const news = waitFor(editor, wake - Clock::now());
        if (news != News::none)
            editor.close();
        if (news == News::dead)
            isAlive = false;

        // Even if it died: it may have found another editor that had just started.
        if (Descriptor connection = CLISocket::connect(socketPath))
            return connection;
        if (!isAlive && launches == mostLaunches)
            return {};
    }
    return {};
}

} // namespace framewright
