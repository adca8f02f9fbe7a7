#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// Where the images of a reply go. `folder` is the current one.
///
/// With an --out path: there, with the extension png, and numbered when there are several. Else
/// into cache/frames of the workspace that `folder` is, or the temporary folder, under the
/// command's name and the local time: frame-20261122-223105-123.png. Such a name is never one
/// that is taken.
std::vector<std::filesystem::path> imagePaths(std::size_t count, std::string const& command,
                                              std::optional<std::string> const& out,
                                              std::filesystem::path const& folder,
                                              std::filesystem::path const& temporaryFolder,
                                              std::chrono::system_clock::time_point now);

/// Whether a folder holds a workspace's files.
bool isWorkspace(std::filesystem::path const& folder);

} // namespace framewright
