#pragma once

#include "platform/test_folder.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace framewright {

/// Writes a file into the test folder.
std::filesystem::path fileOf(std::string const& name, std::string const& bytes);

/// A big-endian number of `count` bytes.
std::string bigEndian(std::uint64_t value, int count);

/// A PNG that declares this size and ends after its header.
std::string pngHeader(std::uint32_t width, std::uint32_t height);

/// `jpeg` with an EXIF block that sets its orientation.
std::string withExifOrientation(std::string const& jpeg, int orientation);

} // namespace framewright
