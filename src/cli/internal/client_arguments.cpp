#include "cli/internal/client_arguments.h"

#include "cli/internal/number_text.h"
#include "model/file_url.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <map>
#include <vector>

namespace framewright {

using nlohmann::json;

namespace {

constexpr double largestExactWhole = 9007199254740992; // 2^53

/// Commands that return images, which the client writes. For these --out is the client's own and
/// is not sent. Other commands may have an option of that name themselves (the out point of
/// `clip-add`, the file `template` writes), so for them it is sent like any other.
bool returnsImages(std::string const& command)
{
    std::string name = command;
    std::ranges::replace(name, '-', '_');
    return name == "frame" || name == "contact_sheet";
}

/// The values of one option, and their original spelling where parsing lost it.
struct Values {
    std::vector<json> values;
    std::vector<json> words;

    void add(std::string const& word, std::string const& folder)
    {
        json value;
        if (isValidUtf8(word))
            value = clientValue(word);
        else
            value = FileURL{(std::filesystem::path(folder) / word).native()}.text();
        words.push_back(value.is_string() ? json() : json(word));
        values.push_back(std::move(value));
    }
    void addFlag()
    {
        values.push_back(true);
        words.push_back(nullptr);
    }
    bool hasWords() const
    {
        return std::ranges::any_of(words, [](json const& word) { return !word.is_null(); });
    }
};

/// The parsed words after the command.
struct Words {
    std::map<std::string, Values> options;
    std::optional<std::string> imagePath;
    bool wantsHelp = false;
};

std::optional<UsageError> keepImagePath(Words& result, std::optional<std::string> const& path)
{
    if (!path || path->empty())
        return UsageError{"--out needs a path."};
    if (result.imagePath)
        return UsageError{"--out was given more than once."};
    result.imagePath = path;
    return std::nullopt;
}

std::optional<UsageError> readWords(std::span<std::string const> words, bool keepsOut,
                                    std::string const& folder, Words& result)
{
    bool onlyValues = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::string const& word = words[i];
        if (onlyValues || !word.starts_with("--")) {
            result.options[positionalKey].add(word, folder);
            continue;
        }
        if (word == "--") {
            onlyValues = true;
            continue;
        }
        std::size_t const equals = word.find('=');
        std::string const name = validUtf8(word.substr(2, equals - 2));
        std::optional<std::string> value;
        if (equals != std::string::npos)
            value = word.substr(equals + 1);
        else if (name != "help" && i + 1 < words.size() && !words[i + 1].starts_with("--"))
            value = words[++i];

        if (name == "help") {
            result.wantsHelp = true;
        } else if (name == "out" && keepsOut) {
            if (auto error = keepImagePath(result, value))
                return error;
        } else if (value) {
            result.options[name].add(*value, folder);
        } else {
            result.options[name].addFlag();
        }
    }
    return std::nullopt;
}

} // namespace

json clientValue(std::string const& word)
{
    if (word == "true" || word == "false")
        return word == "true";
    auto const number = parseNumber(word);
    if (!number)
        return word;
    if (*number == std::trunc(*number) && std::abs(*number) < largestExactWhole)
        return static_cast<std::int64_t>(*number);
    return *number;
}

std::variant<ClientCommand, UsageError> parseArguments(std::span<std::string const> words,
                                                       std::string const& folder)
{
    if (words.empty() || words[0] == "--help" || words[0] == "-h")
        return ClientCommand{HelpRequest{}, std::nullopt};
    if (words[0] == "help") {
        if (words.size() > 2)
            return UsageError{"help takes one command."};
        return ClientCommand{
            HelpRequest{.command = words.size() > 1 ? validUtf8(words[1]) : std::string()},
            std::nullopt};
    }

    Words result;
    if (auto error = readWords(words.subspan(1), returnsImages(words[0]), folder, result))
        return *error;
    if (result.wantsHelp)
        return ClientCommand{HelpRequest{.command = validUtf8(words[0])}, std::nullopt};

    ToolRequest request{.tool = validUtf8(words[0])};
    for (auto& [name, given] : result.options) {
        bool const isArray = name == positionalKey || given.values.size() > 1;
        if (given.hasWords())
            request.words[name] = isArray ? json(given.words) : given.words[0];
        request.args[name] = isArray ? json(given.values) : given.values[0];
    }
    return ClientCommand{std::move(request), std::move(result.imagePath)};
}

} // namespace framewright
