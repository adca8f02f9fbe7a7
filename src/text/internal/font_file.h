#pragma once

#include <filesystem>

namespace framewright {

/// Whether a TrueType or OpenType file is intact: every table is within the file and matches its
/// checksum. Font engines don't check this and draw wrong letters, or none, from damaged files.
bool isWholeFontFile(std::filesystem::path const& file);

} // namespace framewright
