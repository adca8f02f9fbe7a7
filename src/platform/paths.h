#pragma once

#include <filesystem>
#include <string_view>

namespace framewright {

// The folders this user's files live in. Each is read from the environment anew, so a whole
// editor can be pointed at another home; a variable that does not hold an absolute path counts as
// not set. Nothing here creates a folder but the two functions that say so.

/// $HOME, else the home of this user's account. Throws FileError when neither is known.
std::filesystem::path homeFolder();

/// $XDG_DATA_HOME/Framewright, by default ~/.local/share/Framewright.
std::filesystem::path applicationSupportFolder();

/// $XDG_CACHE_HOME/Framewright, by default ~/.cache/Framewright. May be emptied at any time.
std::filesystem::path cachesFolder();

/// $XDG_CONFIG_HOME/Framewright, by default ~/.config/Framewright.
std::filesystem::path configFolder();

/// $TMPDIR, by default /tmp.
std::filesystem::path temporaryFolder();

/// `path` with a leading "~" or "~user" replaced by that home. Anything else, also the name of
/// nobody, stays as it is.
std::filesystem::path expandTilde(std::string_view path);

/// Makes sure that `folder` is there, with the folders above it. Throws FileError.
void ensureFolder(std::filesystem::path const& folder);

/// Makes sure that `folder` is there and that nobody but this user can look into it (0700). The
/// folders it has to make above it are private too; those that are there stay as they are.
/// Throws FileError, also when the folder belongs to another user.
void ensurePrivateFolder(std::filesystem::path const& folder);

} // namespace framewright
