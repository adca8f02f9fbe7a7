#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace framewright {

/// The path of a file. Documents store it as a "file:///…" URL, which can carry any file name,
/// UTF-8 or not.
struct FileURL {
    std::string path; ///< Absolute, the bytes as the file system has them.

    /// The URL form: "file://" and the path, all but letters, digits and -._~/ escaped.
    std::string text() const;

    /// Reads the URL form; nothing when it is no file URL of this machine, or escaped wrongly.
    static std::optional<FileURL> parse(std::string_view url);

    bool operator==(FileURL const&) const = default;
};

/// `text` with every byte that is not part of valid UTF-8 replaced by U+FFFD.
std::string validUtf8(std::string_view text);

bool isValidUtf8(std::string_view text);

} // namespace framewright
