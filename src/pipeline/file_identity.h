#pragma once

#include <cstdint>
#include <filesystem>

namespace framewright {

/// A file at a moment in time: once it is rewritten, its identity differs.
struct FileIdentity {
    std::filesystem::path file;
    std::uintmax_t size = 0;
    std::filesystem::file_time_type changed;

    static FileIdentity of(std::filesystem::path const& file);

    /// Whether it existed and was a regular file.
    bool exists() const { return size != std::uintmax_t(-1); }

    bool operator==(FileIdentity const&) const = default;
};

} // namespace framewright
