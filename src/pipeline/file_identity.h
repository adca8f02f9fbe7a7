#pragma once

#include <cstdint>
#include <filesystem>

namespace framewright {

/// A file as it stood when it was looked at: one that is written anew is another one.
struct FileIdentity {
    std::filesystem::path file;
    std::uintmax_t size = 0;
    std::filesystem::file_time_type changed;

    static FileIdentity of(std::filesystem::path const& file);

    /// Whether it was there, and a file.
    bool exists() const { return size != std::uintmax_t(-1); }

    bool operator==(FileIdentity const&) const = default;
};

} // namespace framewright
