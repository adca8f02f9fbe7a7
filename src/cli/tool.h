#pragma once

#include "cli/tool_args.h"
#include "cli/tool_error.h"

#include <QCoroTask>

#include <concepts>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace framewright {

template <class T = void>
using Task = QCoro::Task<T>;

/// What a command answers.
struct ToolResult {
    bool ok = true;
    std::string text{};
    std::vector<std::string> images{}; ///< PNG files, as bytes.

    /// Data, pretty-printed, and below it a note for people when there is one.
    static ToolResult json(nlohmann::json const& data, std::string const& note = {});

    static ToolResult failed(std::string sentence) { return {false, std::move(sentence), {}}; }
};

/// What a tool does: a function from its arguments to a ToolResult, or to a task of one. It says
/// why it failed by throwing.
class Action {
public:
    template <class Function>
    requires std::same_as<std::invoke_result_t<Function&, ToolArgs>, Task<ToolResult>>
    Action(Function function) : m_run(std::move(function))
    {
    }

    template <class Function>
    requires std::same_as<std::invoke_result_t<Function&, ToolArgs>, ToolResult>
    Action(Function function)
        : m_run([function = std::move(function)](ToolArgs args) mutable -> Task<ToolResult> {
              co_return function(std::move(args));
          })
    {
    }

    Task<ToolResult> operator()(ToolArgs args) const { return m_run(std::move(args)); }

private:
    std::function<Task<ToolResult>(ToolArgs)> m_run;
};

/// One command: a row of data and a short action.
///
///     namespace {
///     Param<TrackRef> const track{"track"};
///     Param<Text> const name{"name", "A new name.", optionalParam};
///     }
///
///     Tool trackSet(AppState& editor)
///     {
///         return {
///             .name = "track_set",
///             .description = "Changes a track. Prints it.",
///             .params = {track, name},
///             .action = [&editor](ToolArgs args) {
///                 Id const id = args[track];
///                 if (auto const word = args.find(name))
///                     accepted(editor.renameTrack(id, *word));
///                 return ToolResult::json(trackJSON(editor.project(), id));
///             },
///         };
///     }
///
/// An action that awaits is a coroutine: `-> Task<ToolResult>`, with co_await and co_return. Its
/// captures live as long as the toolbox. It resumes on the main thread, where anything may have
/// changed meanwhile: look ids up again.
struct Tool {
    std::string name;        ///< Lower case with underscores. Users see hyphens.
    std::string description; ///< Whole sentences. The first stands alone in the index.
    /// In the order of the help; values without a name fill the required ones in this order.
    std::vector<Parameter> params{};
    Action action;

    /// {name, description, params, required}, as models are told of tools.
    nlohmann::json descriptor() const;
};

} // namespace framewright
