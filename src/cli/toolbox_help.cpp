#include "cli/toolbox.h"

#include <algorithm>

namespace framewright {

using nlohmann::json;

namespace {

constexpr std::size_t nameColumn = 18;

std::string shownName(Tool const& tool)
{
    std::string name = tool.name;
    std::ranges::replace(name, '_', '-');
    return name;
}

/// Up to the first full stop that ends a sentence: one in "0.5" or ".mp4" does not.
std::string firstSentence(std::string const& text)
{
    for (std::size_t stop = text.find('.'); stop != std::string::npos;
         stop = text.find('.', stop + 1)) {
        if (stop + 1 == text.size() || text[stop + 1] == ' ' || text[stop + 1] == '\n')
            return text.substr(0, stop + 1);
    }
    return text;
}

std::string typeName(Parameter const& param)
{
    switch (param.type) {
    case Parameter::Type::string:
        return "string";
    case Parameter::Type::number:
        return "number";
    case Parameter::Type::boolean:
        return "boolean";
    }
    return "string";
}

/// What stands between < and >.
std::string shownType(Parameter const& param)
{
    if (param.words.empty())
        return typeName(param);
    std::string words;
    for (std::string const& word : param.words)
        words += (words.empty() ? "" : "|") + word;
    return words;
}

json schema(Parameter const& param)
{
    json item{{"type", typeName(param)}};
    if (!param.words.empty())
        item["enum"] = param.words;
    json result = item;
    if (param.count == Parameter::Count::list)
        result = {{"type", "array"}, {"items", item}};
    result["description"] = param.help;
    return result;
}

} // namespace

json Tool::descriptor() const
{
    json options = json::object();
    json required = json::array();
    for (Parameter const& param : params) {
        options[param.name] = schema(param);
        if (param.isRequired)
            required.push_back(param.name);
    }
    return {
        {"name", name}, {"description", description}, {"params", options}, {"required", required}};
}

std::string Toolbox::helpIndex() const
{
    std::string text = "Commands (run `cli help <command>` for options):";
    for (Tool const& tool : m_tools) {
        std::string name = shownName(tool);
        name.resize(std::max(name.size(), nameColumn), ' ');
        text += "\n  " + name + " " + firstSentence(tool.description);
    }
    return text;
}

std::string Toolbox::help(Tool const& tool) const
{
    std::string text = shownName(tool) + ": " + tool.description;
    for (Parameter const& param : tool.params) {
        text += "\n  --" + param.name + " <" + shownType(param) + ">";
        if (param.isRequired)
            text += " (required)";
        text += "  " + param.help;
    }
    return text;
}

json Toolbox::descriptors() const
{
    json all = json::array();
    for (Tool const& tool : m_tools)
        all.push_back(tool.descriptor());
    return all;
}

} // namespace framewright
