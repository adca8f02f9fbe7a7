#include "cli/internal/font_names.h"

#include "cli/internal/near_words.h"
#include "cli/tool_error.h"
#include "text/font_options.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace framewright {

namespace {

std::string lowered(std::string_view text)
{
    std::string result(text);
    for (char& c : result)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return result;
}

bool isSame(std::string_view a, std::string_view b)
{
    return lowered(a) == lowered(b);
}

/// What an offered font is called: "Strong (Bebas Neue)", "Strong", "Bebas Neue" and what is
/// stored.
std::vector<std::string_view> namesOf(FontOption const& option)
{
    std::string_view const display = option.displayName;
    std::vector<std::string_view> names{display, option.fontName};
    if (auto const bracket = display.find(" ("); bracket != std::string_view::npos) {
        names.push_back(display.substr(0, bracket));
        names.push_back(display.substr(bracket + 2, display.size() - bracket - 3));
    }
    return names;
}

std::optional<std::string> offeredFont(std::string_view text)
{
    for (FontOption const& option : fontOptions()) {
        for (std::string_view const name : namesOf(option)) {
            if (isSame(text, name))
                return std::string(option.fontName);
        }
    }
    return std::nullopt;
}

/// "system:bold" for "System:Bold". Nothing when the text has another form.
std::optional<std::string> systemFont(std::string_view text)
{
    auto const colon = text.find(':');
    std::string const system = lowered(text.substr(0, colon));
    if (colon == std::string_view::npos || (system != "system" && system != "mono"))
        return std::nullopt;
    std::string const weight = lowered(text.substr(colon + 1));
    auto const weights = fontWeightNames();
    if (std::ranges::find(weights, weight) != weights.end())
        return system + ":" + weight;

    std::string list;
    for (std::string_view const name : weights)
        list += (list.empty() ? "" : name == weights.back() ? " or " : ", ") + std::string(name);
    throw ToolError("A weight follows " + system + ": " + list + ", not \"" +
                    std::string(text.substr(colon + 1)) + "\".");
}

/// Suggestions for a misspelt name, the likeliest first.
std::vector<std::string> nearFonts(std::string_view text, std::span<std::string const> installed)
{
    std::vector<std::string> names;
    for (FontOption const& option : fontOptions()) {
        auto const these = namesOf(option);
        // The shorter ones first: of equals, the first is the nearest.
        names.insert(names.end(), these.rbegin(), these.rend());
    }
    names.insert(names.end(), installed.begin(), installed.end());

    constexpr std::size_t enough = 3;
    std::vector<std::string> near;
    auto const addThose = [&](auto const& isNear) {
        for (std::string const& name : names) {
            if (near.size() < enough && isNear(name) && std::ranges::find(near, name) == near.end())
                near.push_back(name);
        }
    };
    if (auto const nearest = nearestWord(text, names))
        addThose([&](std::string const& name) { return name == *nearest; });
    addThose([&](std::string const& name) { return lowered(name).starts_with(lowered(text)); });
    addThose([&](std::string const& name) {
        std::string const firstWord = name.substr(0, name.find(' '));
        return nearestWord(text, std::span(&firstWord, 1)).has_value();
    });
    return near;
}

} // namespace

std::string fontNamed(std::string_view text, std::span<std::string const> installed)
{
    if (auto const offered = offeredFont(text))
        return *offered;
    if (auto const system = systemFont(text))
        return *system;
    if (std::ranges::binary_search(installed, text))
        return std::string(text);
    auto const found =
        std::ranges::find_if(installed, [&](auto const& name) { return isSame(name, text); });
    if (found != installed.end())
        return *found;

    std::string sentence = "No font called " + std::string(text) + ". ";
    auto const near = nearFonts(text, installed);
    for (std::size_t i = 0; i < near.size(); ++i)
        sentence += (i == 0 ? "Did you mean " : i + 1 < near.size() ? ", " : " or ") + near[i];
    sentence += near.empty()
                    ? "Use a name of the list, such as Classic or Bebas Neue, system:bold, "
                      "mono:medium, or an installed PostScript name."
                    : "?";
    throw ToolError(sentence);
}

} // namespace framewright
