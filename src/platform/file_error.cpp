#include "platform/file_error.h"

#include <cerrno>
#include <clocale>
#include <cstring>

#include <locale.h>

namespace framewright {

namespace {

FileError::Cause writingCause(int errorNumber)
{
    switch (errorNumber) {
    case ENOENT:
    case ENOTDIR:
        return FileError::Cause::missing;
    case EISDIR:
        return FileError::Cause::notRegular;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return FileError::Cause::noSpace;
    default:
        return FileError::Cause::unwritable;
    }
}

std::string sentence(std::string const& file, std::string const& doing, std::string const& why)
{
    std::string text = "“";
    text += file;
    text += "” could not be ";
    text += doing;
    text += ": ";
    text += why;
    text += '.';
    return text;
}

} // namespace

FileError::FileError(Cause errorCause, std::filesystem::path const& file, std::string const& doing,
                     std::string const& why)
    : std::runtime_error(sentence(file.string(), doing, why)), cause(errorCause), reason(why)
{
}

FileError FileError::fromWriting(std::filesystem::path const& file, std::string const& doing,
                                 int errorNumber)
{
    return {writingCause(errorNumber), file, doing, systemErrorText(errorNumber)};
}

std::string systemErrorText(int errorNumber)
{
    // In English whatever the user's language: it becomes part of an English sentence.
    static locale_t const english = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return ::strerror_l(errorNumber, english);
}

} // namespace framewright
