#pragma once

#include "media/media_error.h"

#include <filesystem>
#include <string>

namespace framewright {

/// The file's name for messages: without folders, as valid UTF-8.
std::string nameOf(std::filesystem::path const& file);

/// An error that reads "NAME ending".
MediaError failure(MediaError::Cause cause, std::filesystem::path const& file,
                   std::string const& ending);

/// "NAME couldn't be `done`: reason." for an errno of the system.
MediaError systemFailure(std::filesystem::path const& file, std::string const& done, int error);

/// The same for a negative result of the media library. The reason is the message it logged on this
/// thread, if any.
MediaError libraryFailure(std::filesystem::path const& file, std::string const& done, int result);

/// "NAME is incomplete or damaged: reason."
MediaError damage(std::filesystem::path const& file, std::string const& reason);
MediaError damage(std::filesystem::path const& file, int result);

/// Keeps the media library from printing its log. Instead, messages are recorded per thread for the
/// next failure. Call it before any of the library's functions; repeated calls do nothing.
void quietLibrary();

/// Discards the message recorded on this thread.
void forgetLibraryMessages();

/// Whether the recorded message contains these words.
bool librarySaid(char const* words);

} // namespace framewright
