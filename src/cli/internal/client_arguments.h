#pragma once

#include "cli/protocol.h"

#include <optional>
#include <span>
#include <string>
#include <variant>

namespace framewright {

/// The parsed words after "cli".
struct ClientCommand {
    std::variant<ToolRequest, HelpRequest> request; ///< Its cwd is still empty.
    std::optional<std::string> imagePath;           ///< Of --out, where the images go.
};

/// A command line that the client itself rejects. `what()` is the whole sentence.
struct UsageError {
    std::string sentence;
};

/// Parses the words after "cli".
///
///     clip-add v1 --in 4 --fill     {"tool": "clip-add", "args": {"_": ["v1"], "in": 4, "fill":
///     true}}
///
/// An option that is given several times gets an array of its values. After a bare "--" every word
/// is a value. A word that is not UTF-8 can only be a file name and becomes its file URL,
/// absolute from `folder`.
std::variant<ClientCommand, UsageError> parseArguments(std::span<std::string const> words,
                                                       std::string const& folder);

/// A word's value: true and false are booleans, decimal numbers are numbers, all else is text.
nlohmann::json clientValue(std::string const& word);

} // namespace framewright
