#pragma once

#include "media/media_error.h"

#include <filesystem>
#include <string>

namespace framewright {

/// How sentences call a file: its name without folders, as valid UTF-8.
std::string nameOf(std::filesystem::path const& file);

/// "NAME ending": a sentence about a file, `ending` being all after its name.
MediaError failure(MediaError::Cause cause, std::filesystem::path const& file,
                   std::string const& ending);

/// "NAME couldn't be `done`: reason." for an errno of the system.
MediaError systemFailure(std::filesystem::path const& file, std::string const& done, int error);

/// The same for a negative result of the media library. What the library said last on this
/// thread, if anything, is the reason.
MediaError libraryFailure(std::filesystem::path const& file, std::string const& done, int result);

/// "NAME is incomplete or damaged: reason."
MediaError damage(std::filesystem::path const& file, std::string const& reason);
MediaError damage(std::filesystem::path const& file, int result);

/// Keeps the media library from printing. What it says is kept for the next failure of the same
/// thread instead. Called before any of its other functions; further calls do nothing.
void quietLibrary();

/// Drops what the library said on this thread until now.
void forgetLibraryMessages();

/// Whether the message kept holds these words.
bool librarySaid(char const* words);

} // namespace framewright
