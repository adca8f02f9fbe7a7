#pragma once

#include <filesystem>

namespace framewright {

/// Whether a TrueType or OpenType file is whole: every table lies inside it and has the checksum
/// that the file gives for it. What reads fonts takes damage for odd letters, or for none.
bool isWholeFontFile(std::filesystem::path const& file);

} // namespace framewright
