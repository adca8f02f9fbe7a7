#include "workspace/workspace_messages.h"

#include "model/file_url.h"

namespace framewright::WorkspaceMessage {

namespace {

std::string inQuotes(std::string_view name)
{
    return "“" + validUtf8(name) + "”";
}

/// A folder's name, also for a path with a trailing slash.
std::string folderName(std::filesystem::path const& folder)
{
    return (folder.has_filename() ? folder : folder.parent_path()).filename().string();
}

} // namespace

std::string couldNotBeOpened(std::filesystem::path const& folder, std::string_view why)
{
    return "The workspace at " + validUtf8(folder.string()) +
           " could not be opened: " + validUtf8(why);
}

std::string invalidProject(std::string_view projectName)
{
    return validUtf8(projectName) +
           "'s project.json on disk is not a valid project; the app keeps its own copy.";
}

std::string couldNotBeTrashed(std::filesystem::path const& projectFolder, std::string_view why)
{
    return inQuotes(folderName(projectFolder)) +
           " could not be moved to the trash and stays where it is: " + validUtf8(why) + ".";
}

} // namespace framewright::WorkspaceMessage
