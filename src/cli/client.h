#pragma once

#include <span>
#include <string>

namespace framewright {

/// The command-line client: sends one command to the running editor and prints its answer. Uses
/// neither Qt nor FFmpeg.
class CLIClient {
public:
    /// `words` are those after "cli". Ends the process: with 0 when the command succeeded, 1 when
    /// it failed, 2 when the editor can't be reached.
    [[noreturn]] static void run(std::span<std::string const> words);
};

} // namespace framewright
