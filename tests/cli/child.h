#pragma once

#include "cli/socket.h"

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

namespace framewright {

/// How a child process ended and what it said.
struct Ended {
    int status = -1; ///< -1 when a signal ended it.
    std::string out;
    std::string error;
};

/// A program that runs in a home of its own.
class Child {
public:
    enum class ErrorStream { pipe, terminal };

    /// `words` begin with the executable. XDG_DATA_HOME is "data" in the home.
    Child(std::vector<std::string> const& words, std::filesystem::path const& home,
          std::filesystem::path const& folder, ErrorStream errorStream = ErrorStream::pipe);
    Child(Child const&) = delete;

    pid_t pid() const { return m_pid; }

    /// Reads what it says until it ends. Once.
    Ended wait();

private:
    pid_t m_pid = -1;
    CLISocket::Descriptor m_out;
    CLISocket::Descriptor m_error;
};

} // namespace framewright
