#pragma once

#include "platform/file_error.h"

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// Makes `bytes` the whole content of `file`, at one stroke: whoever reads it, at any moment and
/// also after a crash or a power cut, finds the old content or the new one, never a part.
///
/// The bytes go into a hidden file beside it, to the disk, and then under its name. A file that is
/// there keeps its permissions; a new one gets the usual ones. Through a symbolic link the file
/// it leads to is written, and the link stays. Hidden files that a killed writer of the same file
/// left behind are removed once they are an hour old.
///
/// Throws FileError when it can't, with the old content in place and nothing left over; also when
/// the file is write-protected or is not a regular file. Blocks until the disk has the bytes. May
/// be called from any thread; of two writers of one file the later wins whole.
void writeFileAtomically(std::filesystem::path const& file, std::string_view bytes);

/// What became of a replacement.
struct FileReplacement {
    bool isDone = false; ///< When not, the file holds what someone else put there last.
    /// What others put there while it was tried, oldest first. Who read the file in that moment saw
    /// our bytes, so what they write now may not carry these along.
    std::vector<std::string> found;
};

/// The same, but only in place of a file that still holds `expected` by the very moment of the
/// replacement; one that holds something else is left as it is.
///
/// Nothing that another program puts there meanwhile is lost, where the file system can exchange
/// two files (all usual ones of Linux can; elsewhere a moment remains in which it could be).
FileReplacement replaceFileAtomically(std::filesystem::path const& file, std::string_view bytes,
                                      std::string_view expected);

/// The bytes of a regular file, at most `limit` of them. Throws FileError: `missing`,
/// `notRegular`, `unreadable` or `tooLarge`. Never waits for a pipe or a device.
std::string readFile(std::filesystem::path const& file,
                     std::uintmax_t limit = std::numeric_limits<std::uintmax_t>::max());

} // namespace framewright
