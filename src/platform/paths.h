#pragma once

#include <filesystem>
#include <string_view>

namespace framewright {

// This user's folders. Each call reads the environment again, so an editor can be pointed at
// another home; a variable without an absolute path counts as not set. Only the two `ensure`
// functions create folders.

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

/// `path` with a leading "~" or "~user" replaced by that home. Anything else, also an
/// unknown user's name, is returned unchanged.
std::filesystem::path expandTilde(std::string_view path);

/// Creates `folder` and its missing parents. Throws FileError.
void ensureFolder(std::filesystem::path const& folder);

/// Makes `folder` accessible to this user only (0700); creates it and its missing parents, which
/// are private too. Existing parents keep their permissions.
/// Throws FileError, also when the folder belongs to another user.
void ensurePrivateFolder(std::filesystem::path const& folder);

} // namespace framewright
