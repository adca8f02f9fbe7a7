// Commands for the media of the project and the folders they are used from.

#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/tools/project_lookup.h"
#include "workspace/workspace.h"

#include <algorithm>

namespace framewright {

using Json = nlohmann::json;

namespace {

Param<FilePaths> const paths{"paths", "Absolute paths of video, photo or audio files."};

Param<FilePath> const add{"add", "A folder whose files are used in place.", optionalParam};
Param<FilePath> const remove{"remove", "A folder to take off the list; its files stay.",
                             optionalParam};
Param<Flag> const consolidate{
    "consolidate",
    "Copy the open project's files that lie outside the media folders into the project.",
    optionalParam};
Param<Flag> const force{"force", "Remove a folder even when the open project uses its files.",
                        optionalParam};

Task<ToolResult> importMedia(ToolArgs args, AppState& editor)
{
    requireProject(editor);
    // All or none: a half-done import would leave the caller to find out which half.
    std::vector<AppState::Imported> files;
    for (auto const& file : args[paths])
        files.push_back(co_await editor.inspect(file));
    requireProject(editor);
    Json json = Json::array();
    for (MediaAsset const& asset : editor.importFiles(files))
        json.push_back(assetJSON(editor, asset));
    co_return ToolResult::json(json);
}

void addFolder(std::filesystem::path const& folder, std::filesystem::path const& workspace)
{
    if (!std::filesystem::is_directory(folder))
        throw ToolError("There is no folder " + folder.string() + ".");
    auto folders = Workspace::mediaFolders(workspace);
    folders.push_back(folder);
    Workspace::setMediaFolders(folders, workspace);
}

void removeFolder(std::filesystem::path const& folder, std::filesystem::path const& workspace,
                  AppState const& editor, bool isForced)
{
    auto folders = Workspace::mediaFolders(workspace);
    auto const count = std::erase_if(folders, [&](std::filesystem::path const& each) {
        return Workspace::canonicalPath(each) == Workspace::canonicalPath(folder);
    });
    if (count == 0)
        throw ToolError(folder.string() + " is not one of the media folders.");
    auto const used = std::ranges::count_if(*editor.project().assets, [&](auto const& entry) {
        return Workspace::isInside(entry.second.url.path, folder);
    });
    if (used > 0 && !isForced)
        throw ToolError("The open project uses " + std::to_string(used) +
                        (used == 1 ? " file" : " files") + " of " + folder.string() +
                        ". Pass --force to remove it all the same.");
    Workspace::setMediaFolders(folders, workspace);
}

Task<ToolResult> changeMediaFolders(ToolArgs args, AppState& editor)
{
    std::filesystem::path const workspace = workspaceOf(args, editor);
    if (auto const folder = args.find(add))
        addFolder(*folder, workspace);
    if (auto const folder = args.find(remove))
        removeFolder(*folder, workspace, editor, args.get(force, false));

    Json json;
    if (args.get(consolidate, false)) {
        requireProject(editor);
        Json copied = Json::array();
        for (auto const& file :
             accepted(co_await editor.consolidateMedia(Workspace::mediaFolders(workspace))))
            copied.push_back(validUtf8(file.string()));
        json["copied"] = std::move(copied);
    }
    Json folders = Json::array();
    for (auto const& folder : Workspace::mediaFolders(workspace))
        folders.push_back(validUtf8(folder.string()));
    json["mediaFolders"] = std::move(folders);
    co_return ToolResult::json(json);
}

} // namespace

std::vector<Tool> mediaTools(EditorTools tools)
{
    AppState& editor = tools.editor;
    return {
        {
            .name = "media_folders",
            .description =
                "Show or change the folders whose files are used in place, or gather the "
                "open project's other files into it.",
            .params = {add, remove, consolidate, force},
            .action =
                [&editor](ToolArgs args) { return changeMediaFolders(std::move(args), editor); },
        },
        {
            .name = "media_import",
            .description = "Register media files with the project without placing them (clip-add "
                           "can then use them by name). Files stay where they are.",
            .params = {paths},
            .action = [&editor](ToolArgs args) { return importMedia(std::move(args), editor); },
        },
    };
}

} // namespace framewright
