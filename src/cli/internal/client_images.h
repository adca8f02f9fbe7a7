#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// Where the images of a reply go. `folder` is the current one.
///
/// With an --out path: there, with the extension png. Else into cache/frames of the workspace that
/// `folder` is, or the temporary folder, under the command's name and the local time:
/// frame-20261122-223105-123.png; numbered on until `isFree` accepts the name. Several images are
/// numbered from 1. An --out that is a folder takes such names too.
std::vector<std::filesystem::path>
imagePaths(std::size_t count, std::string const& command, std::optional<std::string> const& out,
           std::filesystem::path const& folder, std::chrono::system_clock::time_point now,
           std::function<bool(std::filesystem::path const&)> const& isFree);

/// Removes the oldest images with such names from a cache folder until `keep` are left. Other files
/// are not touched, and failures are ignored.
void removeOldImages(std::filesystem::path const& folder, std::size_t keep);

/// The default folder for images.
std::filesystem::path framesCache(std::filesystem::path const& workspace);

/// Whether a folder holds a workspace's files.
bool isWorkspace(std::filesystem::path const& folder);

/// Why an image couldn't be written: the path and the system's words.
class ImageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Makes an empty file of this name, and the folders above it. False when the name is taken.
/// Throws ImageError.
bool claim(std::filesystem::path const& path);

/// Writes an image: first beside its place, then under its name. Makes the folders above it.
/// Throws ImageError and leaves no partial file.
void writeImage(std::filesystem::path const& path, std::string_view bytes);

} // namespace framewright
