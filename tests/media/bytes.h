#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace framewright {

std::string bytesOf(std::filesystem::path const& file);

/// Writes `bytes` as a file of this name in the test folder.
std::filesystem::path fileOf(std::string const& name, std::string const& bytes);

/// A number in `count` bytes, the highest first.
std::string bigEndian(std::uint64_t value, int count);

/// A PNG that claims these sides and ends after its header.
std::string pngHeader(std::uint32_t width, std::uint32_t height);

/// `jpeg` with an EXIF block that says it has this orientation.
std::string withExifOrientation(std::string const& jpeg, int orientation);

} // namespace framewright
