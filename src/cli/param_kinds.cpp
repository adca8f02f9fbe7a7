#include "cli/param_kinds.h"

#include "cli/internal/font_names.h"
#include "cli/internal/number_text.h"
#include "cli/references.h"
#include "cli/tool_error.h"
#include "cli/values.h"
#include "model/file_url.h"
#include "platform/file_error.h"
#include "platform/paths.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace framewright {

using nlohmann::json;

namespace {

[[noreturn]] void refuse(Given const& given, std::string const& what)
{
    throw ToolError(std::string(given.name) + what);
}

/// A number a person can have meant; nothing for what is none.
std::optional<double> sensibleNumber(json const& value)
{
    std::optional<double> number;
    if (value.is_number())
        number = value.get<double>();
    else if (value.is_string())
        number = parseNumber(value.get_ref<std::string const&>());
    if (number && !(std::abs(*number) <= largestNumber))
        return std::nullopt;
    return number;
}

/// "a, b or c"
std::string alternatives(std::vector<std::string> const& words)
{
    std::string list;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0)
            list += i + 1 < words.size() ? ", " : " or ";
        list += words[i];
    }
    return list;
}

/// A path a request was sent with: as it is, or as the file URL that stands for it.
std::optional<std::string> pathOf(std::string_view text)
{
    if (text.empty() || text.find('\0') != std::string_view::npos)
        return std::nullopt;
    if (!text.starts_with("file://"))
        return std::string(text);
    auto url = FileURL::parse(text);
    return url ? std::optional(std::move(url->path)) : std::nullopt;
}

std::optional<std::filesystem::path> absolutePath(std::string_view text, std::string_view cwd)
{
    auto const given = pathOf(text);
    if (!given)
        return std::nullopt;
    std::filesystem::path path;
    try {
        path = text.starts_with('~') ? expandTilde(*given) : std::filesystem::path(*given);
    } catch (FileError const&) {
        return std::nullopt;
    }
    if (path.is_relative()) {
        auto const folder = pathOf(cwd);
        if (!folder || !folder->starts_with('/'))
            return std::nullopt;
        path = std::filesystem::path(*folder) / path;
    }
    // "a/.." is not taken out: when a is a link, that would be another place.
    bool const climbs = std::ranges::find(path, "..") != path.end();
    return climbs ? path : path.lexically_normal();
}

} // namespace

std::string Given::text() const
{
    if (word.is_string())
        return word.get<std::string>();
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number()) {
        std::string text = value.dump();
        if (text.ends_with(".0"))
            text.resize(text.size() - 2);
        return text;
    }
    if (value.is_array())
        refuse(*this, " takes one value.");
    // What the client makes of an option that nothing follows.
    if (value.is_boolean())
        refuse(*this, " needs a value.");
    refuse(*this, " must be text.");
}

std::string Text::read(Given const& given) const
{
    return given.text();
}

double Number::read(Given const& given) const
{
    auto const number = sensibleNumber(given.value);
    if (!number)
        refuse(given, " must be a number.");
    return *number;
}

int WholeNumber::read(Given const& given) const
{
    double const number = Number{}.read(given);
    if (number != std::trunc(number))
        refuse(given, " must be a whole number.");
    return static_cast<int>(number);
}

bool Flag::read(Given const& given) const
{
    if (given.value.is_boolean())
        return given.value.get<bool>();
    if (given.value == "true" || given.value == "false")
        return given.value == "true";
    refuse(given, " must be true or false.");
}

std::string Moment::helpFor(std::string help) const
{
    if (!help.empty())
        help += ' ';
    return help + "Seconds (4.5), m:ss.ss, \"end\" or \"playhead\".";
}

double Moment::read(Given const& given) const
{
    if (given.value.is_string()) {
        auto const& text = given.value.get_ref<std::string const&>();
        if (text == "end")
            return given.end ? *given.end : given.references.timelineEnd();
        if (text == "playhead")
            return given.references.playhead();
        auto const seconds = parseSeconds(text);
        if (!seconds || !(std::abs(*seconds) <= largestNumber))
            refuse(given, " must be seconds (4.5), m:ss.ss, \"end\" or \"playhead\", not \"" +
                              text + "\".");
        return *seconds;
    }
    auto const seconds = sensibleNumber(given.value);
    if (!seconds)
        refuse(given, " must be a time.");
    return *seconds;
}

std::filesystem::path FilePath::read(Given const& given) const
{
    std::string const text = given.text();
    auto path = absolutePath(text, given.cwd);
    if (!path)
        throw ToolError("Use an absolute path (or ~/…), not " + text + ".");
    return std::move(*path);
}

std::string TrackRef::helpFor(std::string help) const
{
    return help.empty() ? "v1, a1, t1, s1, a name or an id." : help;
}

Id TrackRef::read(Given const& given) const
{
    return resolveTrack(given.references.project(), given.text()).id;
}

Id ClipRef::read(Given const& given) const
{
    return resolveClip(given.references.project(), given.text()).clip->id;
}

Id BarRef::read(Given const& given) const
{
    return resolveBar(given.references.project(), given.text()).bar->id;
}

ItemRef::Value ItemRef::read(Given const& given) const
{
    auto const item = resolveItem(given.references.project(), given.text());
    if (auto const* const place = std::get_if<ClipPlace>(&item))
        return {What::clip, place->clip->id};
    return {What::bar, std::get<BarPlace>(item).bar->id};
}

Id AssetName::read(Given const& given) const
{
    return resolveAsset(given.references.project(), given.text()).id;
}

RGBAColor Color::read(Given const& given) const
{
    return parseColor(given.text());
}

AspectPreset Canvas::read(Given const& given) const
{
    return parseCanvas(given.text());
}

std::string Font::helpFor(std::string help) const
{
    // The help ends with a full stop of its own in this sentence.
    if (help.ends_with('.'))
        help.pop_back();
    return help + ". Also system:bold, mono:medium, or any installed PostScript name.";
}

std::string Font::read(Given const& given) const
{
    std::string const name = given.text();
    if (name.empty())
        refuse(given, " needs a font's name.");
    return fontNamed(name, given.references.installedFonts());
}

std::vector<double> Numbers::read(Given const& given) const
{
    std::vector<json> parts;
    if (given.value.is_array()) {
        parts.assign(given.value.begin(), given.value.end());
    } else if (given.value.is_string()) {
        std::string_view text = given.value.get_ref<std::string const&>();
        for (std::size_t comma = 0; comma != std::string_view::npos;) {
            comma = text.find(',');
            parts.emplace_back(text.substr(0, comma));
            text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
        }
    } else {
        parts.push_back(given.value);
    }

    std::vector<double> numbers;
    for (json const& part : parts) {
        auto const number = sensibleNumber(part);
        if (!number)
            refuse(given, " must be numbers.");
        numbers.push_back(*number);
    }
    return numbers;
}

namespace detail {

std::size_t choice(Given const& given, std::vector<std::string> const& words)
{
    // Whatever it is instead of a word, the words are what helps.
    auto const isText = given.word.is_string() || given.value.is_string();
    auto const found = isText ? std::ranges::find(words, given.text()) : words.end();
    if (found == words.end())
        refuse(given, " must be " + alternatives(words) + ".");
    return static_cast<std::size_t>(found - words.begin());
}

std::vector<Given> elements(Given const& given)
{
    static json const none;
    if (!given.value.is_array())
        return {given};
    std::vector<Given> elements;
    for (std::size_t i = 0; i < given.value.size(); ++i) {
        bool const hasWord = given.word.is_array() && i < given.word.size();
        elements.push_back({.name = given.name,
                            .value = given.value[i],
                            .word = hasWord ? given.word[i] : none,
                            .cwd = given.cwd,
                            .references = given.references,
                            .end = given.end});
    }
    return elements;
}

} // namespace detail

} // namespace framewright
