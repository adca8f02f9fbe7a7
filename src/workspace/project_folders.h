#pragma once

#include "model/outcome.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// A folder in a workspace's projects folder.
struct ProjectListing {
    std::string name; ///< The folder's name, with invalid UTF-8 replaced by U+FFFD.
    std::filesystem::path folder;
    std::filesystem::file_time_type modified{}; ///< Of project.json, else of the folder.
    bool hasDocument = false;                   ///< Whether there is a project.json in it.
    bool hasThumbnail = false;
};

/// The projects of a workspace, most recent first, those of the same time by name. Hidden folders
/// and anything that is not a folder are skipped. Throws WorkspaceError when the projects folder is
/// there but can't be listed.
std::vector<ProjectListing> listProjects(std::filesystem::path const& workspace);

/// A project name that a folder can have: without leading or trailing spaces. Refused when it is
/// empty, too long (200 bytes, which leaves room for numbers and time stamps after it), begins
/// with a dot, or holds a slash, a control character or bytes that are not UTF-8.
Outcome<std::string> validProjectName(std::string_view name);

/// A new, empty project folder named `name`, or "NAME 2" and so on when that is taken. Creates the
/// projects folder too. Refused for an unusable name; throws WorkspaceError.
Outcome<std::filesystem::path> createProjectFolder(std::filesystem::path const& workspace,
                                                   std::string_view name);

/// Gives a project another name and returns its new folder. Refused for an unusable name and when
/// another project has it, in any case. Throws WorkspaceError; then nothing has changed.
Outcome<std::filesystem::path> renameProject(std::filesystem::path const& folder,
                                             std::string_view name);

/// Copies a project into a new folder beside it and returns that: everything but its exports and
/// hidden files. Without a name, or when the name is taken, it gets the next free number
/// appended. The copy appears whole or not at all. Blocks for as long as the copying of its media
/// takes. Refused for an unusable name; throws WorkspaceError.
Outcome<std::filesystem::path> duplicateProject(std::filesystem::path const& folder);
Outcome<std::filesystem::path> duplicateProject(std::filesystem::path const& folder,
                                                std::string_view name);

/// Moves a project to the desktop's trash and returns its path there (empty when the desktop does
/// not report it). Never erases: without a trash it throws WorkspaceError and the project stays.
/// Refused when the folder is gone.
Outcome<std::filesystem::path> trashProject(std::filesystem::path const& folder);

} // namespace framewright
