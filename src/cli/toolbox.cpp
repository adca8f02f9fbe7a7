#include "cli/toolbox.h"

#include "cli/internal/near_words.h"
#include "cli/protocol.h"
#include "cli/refusal_sentences.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

namespace framewright {

using nlohmann::json;

namespace {

std::string withUnderscores(std::string_view name)
{
    std::string result(name);
    std::ranges::replace(result, '-', '_');
    return result;
}

std::string withHyphens(std::string_view name)
{
    std::string result(name);
    std::ranges::replace(result, '_', '-');
    return result;
}

/// Whether an option has a value. Callers that fill in every key say null for none.
bool isGiven(json const& options, Parameter const& param)
{
    auto const found = options.find(param.name);
    return found != options.end() && !found->is_null() && !(found->is_array() && found->empty());
}

json const& at(json const& array, std::size_t place)
{
    static json const none;
    return array.is_array() && place < array.size() ? array[place] : none;
}

json takeKey(json& object, char const* key)
{
    auto const found = object.find(key);
    if (found == object.end())
        return nullptr;
    json value = std::move(*found);
    object.erase(found);
    return value;
}

/// Gives the values without a name to the required options that have none yet.
void fillPositionals(Tool const& tool, json& options, json& words)
{
    json values = takeKey(options, positionalKey);
    json const spellings = takeKey(words, positionalKey);
    if (values.is_null())
        values = json::array();
    else if (!values.is_array())
        values = json::array({std::move(values)});

    std::size_t next = 0;
    for (Parameter const& param : tool.params) {
        if (next == values.size())
            break;
        if (!param.isRequired || isGiven(options, param))
            continue;
        if (param.count == Parameter::Count::list) {
            json list = json::array();
            json listWords = json::array();
            for (; next < values.size(); ++next) {
                list.push_back(values[next]);
                listWords.push_back(at(spellings, next));
            }
            options[param.name] = std::move(list);
            words[param.name] = std::move(listWords);
        } else {
            options[param.name] = values[next];
            words[param.name] = at(spellings, next);
            ++next;
        }
    }
    if (next < values.size()) {
        std::string const name = withHyphens(tool.name);
        throw ToolError("Too many values for " + name + ". Run `cli help " + name + "`.");
    }
}

/// Nothing is dropped silently: an option that the tool does not have is an error.
void refuseUnknown(Tool const& tool, json const& options)
{
    for (auto const& [name, value] : options.items()) {
        if (std::ranges::find(tool.params, name, &Parameter::name) != tool.params.end())
            continue;
        std::vector<std::string> names;
        for (Parameter const& param : tool.params)
            names.push_back(param.name);
        std::string const command = withHyphens(tool.name);
        std::string sentence = command + " has no option --" + name + ".";
        if (auto const near = nearestWord(name, names))
            sentence += " Did you mean --" + *near + "?";
        throw ToolError(sentence + " Run `cli help " + command + "`.");
    }
}

void requireAll(Tool const& tool, json const& options)
{
    std::string missing;
    for (Parameter const& param : tool.params) {
        if (param.isRequired && !isGiven(options, param))
            missing += (missing.empty() ? "--" : " and --") + param.name;
    }
    if (missing.empty())
        return;
    std::string const name = withHyphens(tool.name);
    throw ToolError(name + " needs " + missing + ". Run `cli help " + name + "`.");
}

/// The open project; an empty one when none is, which a refusal then says nothing of.
Project const& openProject(ReferenceContext const& references)
{
    static Project const none;
    try {
        return references.project();
    } catch (std::exception const&) {
        return none;
    }
}

/// The sentence of whatever a command failed with: the one place where a refusal, an error of a
/// service and our own mistakes become a reply.
std::string sentenceOf(std::exception_ptr const& failure, std::string const& command,
                       ReferenceContext const& references)
{
    try {
        std::rethrow_exception(failure);
    } catch (RefusedEdit const& refused) {
        std::string const why = sentenceOf(refused.refusal, openProject(references));
        return refused.failure.empty() ? why : refused.failure + " " + why;
    } catch (std::bad_alloc const&) {
        return "There was not enough memory for " + command + ".";
    } catch (std::runtime_error const& error) {
        return error.what();
    } catch (std::exception const& error) {
        // Not an error made for people, so it needs a sentence around it.
        return command + " failed unexpectedly: " + error.what() + ".";
    } catch (...) {
        return command + " failed unexpectedly.";
    }
}

} // namespace

ToolResult ToolResult::json(nlohmann::json const& data, std::string const& note)
{
    std::string text = data.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
    if (!note.empty())
        text += "\n" + note;
    return {.text = std::move(text)};
}

Toolbox::Toolbox(std::vector<Tool> tools, ReferenceContext const& references)
    : m_tools(std::move(tools)), m_references(references)
{
}

Tool const* Toolbox::find(std::string_view name) const
{
    auto const found = std::ranges::find(m_tools, withUnderscores(name), &Tool::name);
    return found == m_tools.end() ? nullptr : &*found;
}

Task<ToolResult> Toolbox::call(ToolCall call) const
{
    std::exception_ptr failure;
    try {
        Tool const* const tool = find(call.tool);
        if (!tool)
            throw ToolError("Unknown command " + call.tool + ". Run `cli help` for the list.");
        ToolArgs args = arguments(*tool, call);
        co_return co_await tool->action(std::move(args));
    } catch (...) {
        failure = std::current_exception();
    }
    co_return ToolResult::failed(sentenceOf(failure, withHyphens(call.tool), m_references));
}

ToolArgs Toolbox::arguments(Tool const& tool, ToolCall& call) const
{
    if (!call.args.is_object() || !call.words.is_object())
        throw ToolError("The arguments of " + withHyphens(tool.name) + " must be an object.");
    fillPositionals(tool, call.args, call.words);
    refuseUnknown(tool, call.args);
    requireAll(tool, call.args);

    ToolArgs args(std::move(call.args), std::move(call.words), call.cwd, m_references,
                  call.progress, call.stop);
    for (Parameter const& param : tool.params)
        args.check(param);
    return args;
}

} // namespace framewright
