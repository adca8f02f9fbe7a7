#pragma once

#include "platform/file_error.h"

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// Replaces the content of `file` with `bytes` atomically: a reader finds all of the old content
/// or all of the new one, also after a crash or a power cut.
///
/// The bytes are written to a hidden file beside it and flushed to disk before that file takes the
/// name. An existing file keeps its permissions. A symbolic link stays; the file it leads to is
/// replaced. Hidden files left by a killed writer of the same file are removed after an hour.
///
/// Throws FileError on failure, with the old content in place and no leftovers; also when the
/// file is write-protected or not a regular file. Blocks until the bytes are on disk. Safe on any
/// thread; of two concurrent writers the later one wins.
void writeFileAtomically(std::filesystem::path const& file, std::string_view bytes);

/// The result of a conditional replacement.
struct FileReplacement {
    bool isDone = false; ///< If not, the file holds what another program wrote last.
    /// What other programs wrote during the attempt, oldest first. One of them may have read our
    /// bytes in between, so its next write may lack these.
    std::vector<std::string> found;
};

/// The same, but only if the file still holds `expected` when it is replaced.
///
/// Nothing another program writes meanwhile is lost, provided the file system can exchange two
/// names (ext4, XFS, Btrfs and tmpfs can). Without that, a write between comparison and rename is
/// overwritten silently.
FileReplacement replaceFileAtomically(std::filesystem::path const& file, std::string_view bytes,
                                      std::string_view expected);

/// The bytes of a regular file, at most `limit` of them. Throws FileError: `missing`,
/// `notRegular`, `unreadable` or `tooLarge`. Never waits for a pipe or a device.
std::string readFile(std::filesystem::path const& file,
                     std::uintmax_t limit = std::numeric_limits<std::uintmax_t>::max());

} // namespace framewright
