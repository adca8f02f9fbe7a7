#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace framewright {

/// A media file couldn't be opened, decoded or written.
///
/// `what()` is the whole sentence the user reads; `cause` is for code that can act on it.
class MediaError : public std::runtime_error {
public:
    enum class Cause {
        missing,     ///< No such file, or no permission.
        unsupported, ///< A format or codec this build can't handle, or no media at all.
        damaged,     ///< The data contradicts itself. Trying again won't help.
        resources,   ///< Memory or disk space ran out. Trying again may help.
    };

    MediaError(Cause errorCause, std::string const& sentence)
        : std::runtime_error(sentence), cause(errorCause)
    {
    }

    Cause const cause;
};

} // namespace framewright
