#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace framewright {

/// A file or folder couldn't be read or written.
///
/// `what()` is the whole sentence the user reads, `reason` the part of it that says why, for
/// sentences that name the file in their own way. Both hold the path's bytes as they are, so who
/// puts them into JSON replaces what is not UTF-8.
class FileError : public std::runtime_error {
public:
    enum class Cause {
        missing,    ///< There is no such file, or no folder to hold it.
        notRegular, ///< A folder, a device, a pipe: nothing that holds a document.
        unreadable, ///< It is there, but we may not read it or the disk fails.
        tooLarge,   ///< Larger than the reader allows.
        unwritable, ///< We may not write there, or the disk fails.
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

/// The system's words for an `errno`: "No space left on device".
std::string systemErrorText(int errorNumber);

} // namespace framewright
