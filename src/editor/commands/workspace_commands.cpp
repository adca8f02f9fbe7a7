#include "editor/commands/workspace_commands.h"

#include "model/file_url.h"
#include "workspace/workspace.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace framewright {

namespace {

using Path = std::filesystem::path;

/// The canvas that a description implies, if any.
std::optional<AspectPreset> canvasMeant(std::string const& description)
{
    std::istringstream words(description);
    for (std::string word; words >> word;) {
        while (!word.empty() && std::ispunct(static_cast<unsigned char>(word.back())))
            word.pop_back();
        if (auto const preset = aspectPresetNamed(word))
            return preset;
        if (word.ends_with('s')) { // "Reels" as well as "reel".
            if (auto const preset = aspectPresetNamed(word.substr(0, word.size() - 1)))
                return preset;
        }
    }
    return std::nullopt;
}

} // namespace

Outcome<Path> setUpWorkspace(AppState& state, Path const& folder)
{
    Workspace::setUp(folder);
    auto const usable = Workspace::openable(folder);
    if (usable)
        state.setWorkspace(*usable);
    return usable;
}

void describeWorkspace(Path const& workspace, std::string const& about)
{
    Workspace::setAbout(about, workspace);
    if (auto const canvas = canvasMeant(about))
        Workspace::setCanvas(*canvas, workspace);
}

Outcome<Done> addMediaFolder(Path const& workspace, Path const& folder)
{
    if (!std::filesystem::is_directory(folder))
        return Refusal{Reason::folderMissing, Subject::named(validUtf8(folder.string()))};
    auto folders = Workspace::mediaFolders(workspace);
    folders.push_back(folder);
    Workspace::setMediaFolders(folders, workspace);
    return Done();
}

Outcome<Done> removeMediaFolder(AppState const& state, Path const& workspace, Path const& folder,
                                InUse inUse)
{
    Subject const subject = Subject::named(validUtf8(folder.string()));
    auto folders = Workspace::mediaFolders(workspace);
    auto const removed = std::erase_if(folders, [&](Path const& each) {
        return Workspace::canonicalPath(each) == Workspace::canonicalPath(folder);
    });
    if (removed == 0)
        return Refusal{Reason::notAMediaFolder, subject};
    auto const used = std::ranges::count_if(*state.project().assets, [&](auto const& entry) {
        return Workspace::isInside(entry.second.url.path, folder);
    });
    if (used > 0 && inUse == InUse::refuse)
        return Refusal{Reason::mediaFolderUsed, subject, {}, double(used)};
    Workspace::setMediaFolders(folders, workspace);
    return Done();
}

} // namespace framewright
