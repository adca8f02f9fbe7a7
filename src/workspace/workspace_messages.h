#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace framewright {

/// What is said about workspaces and the projects in them, each sentence once.
namespace WorkspaceMessage {

inline constexpr char chooseFolder[] = "Choose a workspace folder.";
inline constexpr char offerToCreate[] =
    "Create one there? Its files are left alone; Framewright adds a projects folder, its settings "
    "and a guide for Claude Code.";
inline constexpr char createButton[] = "Create Workspace";
inline constexpr char noWorkspace[] = "Set up a workspace folder first.";
inline constexpr char emptyName[] = "A name can't be empty.";

std::string nameTaken(std::string_view name);
std::string notAWorkspace(std::filesystem::path const& folder);
std::string gone(std::filesystem::path const& folder);
std::string couldNotBeOpened(std::filesystem::path const& folder, std::string_view why);
std::string invalidProject(std::string_view projectName);
std::string projectNameTaken(std::string_view name);
std::string couldNotBeTrashed(std::filesystem::path const& projectFolder, std::string_view why);
std::string unusableName(std::string_view name, std::string_view why);

} // namespace WorkspaceMessage

} // namespace framewright
