#pragma once

#include "cli/tool.h"

#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// A command to run, and who asks.
struct ToolCall {
    std::string tool; ///< With underscores or hyphens.
    nlohmann::json args = nlohmann::json::object();
    nlohmann::json words = nlohmann::json::object(); ///< As in ToolRequest.
    std::string cwd{};
    Progress progress{};
    std::stop_token stop{};
};

/// The registry of all commands. It finds a command, checks its arguments, runs it and turns any
/// failure into a reply.
///
/// Lives on the main thread. It must outlive its calls.
class Toolbox {
public:
    Toolbox(std::vector<Tool> tools, ReferenceContext const& references);

    std::span<Tool const> tools() const { return m_tools; }

    /// The tool of this name, with underscores or hyphens; null when there is none.
    Tool const* find(std::string_view name) const;

    /// Runs a command. Never throws: a failed one has its sentence in the result. Commands that
    /// wait for something let others run meanwhile.
    Task<ToolResult> call(ToolCall call) const;

    /// All commands, a line each.
    std::string helpIndex() const;

    /// One command and its options.
    std::string help(Tool const& tool) const;

    /// An array of all tools' descriptors.
    nlohmann::json descriptors() const;

private:
    /// The options by name, positional values in their places. Throws ToolError.
    ToolArgs arguments(Tool const& tool, ToolCall& call) const;

    std::vector<Tool> m_tools;
    ReferenceContext const& m_references;
};

} // namespace framewright
