#include "media/internal/media_failure.h"

#include "model/file_url.h"

#include <fmt/format.h>

#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <system_error>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

namespace framewright {

namespace {

/// The first message since forgetLibraryMessages(): later ones are mostly its consequences.
thread_local std::string libraryMessage;

void keepMessage(void*, int level, char const* format, va_list arguments)
{
    if (level > AV_LOG_ERROR || !libraryMessage.empty())
        return;
    char line[512];
    if (std::vsnprintf(line, sizeof line, format, arguments) <= 0)
        return;
    libraryMessage = validUtf8(line);
    while (!libraryMessage.empty() &&
           (std::isspace(static_cast<unsigned char>(libraryMessage.back())) ||
            libraryMessage.back() == '.'))
        libraryMessage.pop_back();
}

std::string plainWords(std::string const& message)
{
    struct Known {
        char const* logged;
        char const* plain;
    };
    for (auto const& [logged, plain] : {
             Known{"moov atom not found", "its index is missing"},
             Known{"contradictionary", "its index contradicts itself"},
             Known{"partial file", "its end is missing"},
             Known{"max_streams", "it has too many tracks"},
         }) {
        if (message.find(logged) != std::string::npos)
            return plain;
    }
    return message;
}

std::string systemReason(int error)
{
    return std::generic_category().message(error);
}

std::string libraryReason(int result)
{
    if (!libraryMessage.empty())
        return plainWords(libraryMessage);
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    if (av_strerror(result, text, sizeof text) < 0)
        return "unknown error";
    return text;
}

MediaError::Cause causeOf(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
    case ENOMEM:
    case EFBIG:
    case EMFILE:
    case ENFILE:
        return MediaError::Cause::resources;
    case ENOENT:
    case EACCES:
    case EPERM:
    case ENOTDIR:
    case EROFS:
        return MediaError::Cause::missing;
    case EINVAL:
    case ENOSYS:
        return MediaError::Cause::unsupported;
    default:
        return MediaError::Cause::damaged;
    }
}

MediaError::Cause causeOfResult(int result)
{
    switch (result) {
    case AVERROR_DECODER_NOT_FOUND:
    case AVERROR_ENCODER_NOT_FOUND:
    case AVERROR_DEMUXER_NOT_FOUND:
    case AVERROR_PATCHWELCOME:
    case AVERROR_EXTERNAL:
        return MediaError::Cause::unsupported;
    default:
        return causeOf(AVUNERROR(result));
    }
}

} // namespace

std::string nameOf(std::filesystem::path const& file)
{
    auto const name = file.filename();
    return validUtf8(name.empty() ? file.native() : name.native());
}

MediaError failure(MediaError::Cause cause, std::filesystem::path const& file,
                   std::string const& ending)
{
    return {cause, nameOf(file) + " " + ending};
}

MediaError systemFailure(std::filesystem::path const& file, std::string const& done, int error)
{
    return failure(causeOf(error), file,
                   fmt::format("couldn't be {}: {}.", done, systemReason(error)));
}

MediaError libraryFailure(std::filesystem::path const& file, std::string const& done, int result)
{
    return failure(causeOfResult(result), file,
                   fmt::format("couldn't be {}: {}.", done, libraryReason(result)));
}

MediaError damage(std::filesystem::path const& file, std::string const& reason)
{
    return failure(MediaError::Cause::damaged, file,
                   fmt::format("is incomplete or damaged: {}.", reason));
}

MediaError damage(std::filesystem::path const& file, int result)
{
    return damage(file, libraryReason(result));
}

void quietLibrary()
{
    static bool const isQuiet = [] {
        av_log_set_callback(keepMessage);
        return true;
    }();
    (void)isQuiet;
}

void forgetLibraryMessages()
{
    libraryMessage.clear();
}

bool librarySaid(char const* words)
{
    return libraryMessage.find(words) != std::string::npos;
}

} // namespace framewright
