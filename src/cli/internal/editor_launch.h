#pragma once

#include "cli/socket.h"

#include <filesystem>

namespace framewright {

/// A connection to the editor. Launches one in the background when none answers, and waits up to
/// 20 seconds for it. None when that fails.
CLISocket::Descriptor connectToEditor(std::filesystem::path const& socketPath);

} // namespace framewright
