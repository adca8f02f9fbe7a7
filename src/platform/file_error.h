#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace framewright {

/// A file or folder couldn't be read or written.
///
/// `what()` is the whole sentence the user reads, `reason` the part of it that says why, for
/// sentences that name the file in their own way. Both hold the path's bytes as they are, so
/// callers that write JSON must replace invalid UTF-8.
class FileError : public std::runtime_error {
public:
    enum class Cause {
        missing,    ///< There is no such file, or no folder to hold it.
        notRegular, ///< A folder, device or pipe.
        unreadable, ///< It exists, but permission is missing or the disk fails.
        tooLarge,   ///< Larger than the reader allows.
        unwritable, ///< Permission is missing or the disk fails.
        noSpace,    ///< Disk, quota or file size limit is used up. Trying again may help.
    };

    /// "FILE could not be DOING: REASON." DOING is "read", "written", "created" and so on;
    /// REASON has no full stop.
    FileError(Cause cause, std::filesystem::path const& file, std::string const& doing,
              std::string const& reason);

    /// The error of a failed system call while writing, from its `errno`.
    static FileError fromWriting(std::filesystem::path const& file, std::string const& doing,
                                 int errorNumber);

    Cause const cause;
    std::string const reason;
};

/// The system's text for an `errno`: "No space left on device".
std::string systemErrorText(int errorNumber);

} // namespace framewright
