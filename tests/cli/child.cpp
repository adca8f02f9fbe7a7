#include "child.h"

#include <array>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace framewright {

namespace {

using Descriptor = CLISocket::Descriptor;

struct Stream {
    Descriptor reader;
    Descriptor writer;
};

Stream pipeStream()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

Stream terminalStream()
{
    Descriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!master || ::grantpt(master.get()) != 0 || ::unlockpt(master.get()) != 0)
        throw std::runtime_error("no terminal");
    Descriptor slave(::open(::ptsname(master.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    return {std::move(master), std::move(slave)};
}

std::vector<std::string> environmentIn(std::filesystem::path const& home)
{
    std::vector<std::string> environment;
    for (char** entry = environ; *entry; ++entry) {
        std::string const text = *entry;
        bool const isOurs = text.starts_with("HOME=") || text.starts_with("XDG_") ||
                            text.starts_with("VELMORA_") || text.starts_with("FRAMEWRIGHT_");
        if (!isOurs)
            environment.push_back(text);
    }
    environment.push_back("HOME=" + home.native());
    environment.push_back("XDG_DATA_HOME=" + (home / "data").native());
    return environment;
}

std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> result;
    for (std::string& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

} // namespace

Child::Child(std::vector<std::string> const& words, std::filesystem::path const& home,
             std::filesystem::path const& folder, ErrorStream errorStream)
{
    Stream out = pipeStream();
    Stream error = errorStream == ErrorStream::terminal ? terminalStream() : pipeStream();
    std::vector<std::string> arguments = words;
    std::vector<std::string> environment = environmentIn(home);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, out.writer.get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, error.writer.get(), STDERR_FILENO);
    int const failure = ::posix_spawn(&m_pid, words[0].c_str(), &actions, nullptr,
                                      pointers(arguments).data(), pointers(environment).data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        throw std::runtime_error("no process");
    m_out = std::move(out.reader);
    m_error = std::move(error.reader);
}

Ended Child::wait()
{
    Ended ended;
    std::array<std::string*, 2> const texts{&ended.out, &ended.error};
    std::array<pollfd, 2> entries{pollfd{m_out.get(), POLLIN, 0}, pollfd{m_error.get(), POLLIN, 0}};
    while (entries[0].fd >= 0 || entries[1].fd >= 0) {
        ::poll(entries.data(), entries.size(), -1);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (entries[i].revents == 0)
                continue;
            char bytes[65536];
            ssize_t const length = ::read(entries[i].fd, bytes, sizeof bytes);
            // A terminal ends with an error.
            if (length <= 0)
                entries[i].fd = -1;
            else
                texts[i]->append(bytes, static_cast<std::size_t>(length));
        }
    }
    int status = 0;
    ::waitpid(m_pid, &status, 0);
    if (WIFEXITED(status))
        ended.status = WEXITSTATUS(status);
    return ended;
}

} // namespace framewright
