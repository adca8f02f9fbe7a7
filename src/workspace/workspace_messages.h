#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace framewright {

/// The sentences of workspace errors.
namespace WorkspaceMessage {

std::string couldNotBeOpened(std::filesystem::path const& folder, std::string_view why);
std::string invalidProject(std::string_view projectName);
std::string couldNotBeTrashed(std::filesystem::path const& projectFolder, std::string_view why);

} // namespace WorkspaceMessage

} // namespace framewright
