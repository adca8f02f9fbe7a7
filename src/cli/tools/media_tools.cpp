// Commands for the media of the project and the folders they are used from.

#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/tools/project_lookup.h"
#include "editor/commands/media_commands.h"
#include "editor/commands/workspace_commands.h"
#include "workspace/workspace.h"

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

Task<ToolResult> importFiles(ToolArgs args, Editing editing)
{
    requireProject(editing.state);
    Json json = Json::array();
    for (MediaAsset const& asset : accepted(co_await importMedia(editing, args[paths])))
        json.push_back(assetJSON(editing.state, asset));
    co_return ToolResult::json(json);
}

Task<ToolResult> changeMediaFolders(ToolArgs args, Editing editing)
{
    std::filesystem::path const workspace = workspaceOf(args, editing.state);
    if (auto const folder = args.find(add))
        accepted(addMediaFolder(workspace, *folder));
    if (auto const folder = args.find(remove))
        accepted(removeMediaFolder(editing.state, workspace, *folder,
                                   args.get(force, false) ? InUse::removeAnyway : InUse::refuse));
    Json json;
    if (args.get(consolidate, false)) {
        requireProject(editing.state);
        Json copied = Json::array();
        for (auto const& file :
             accepted(co_await consolidateMedia(editing, Workspace::mediaFolders(workspace))))
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
    Editing const editing = tools.editing;
    return {
        {
            .name = "media_folders",
            .description =
                "Show or change the folders whose files are used in place, or gather the "
                "open project's other files into it.",
            .params = {add, remove, consolidate, force},
            .action =
                [editing](ToolArgs args) { return changeMediaFolders(std::move(args), editing); },
        },
        {
            .name = "media_import",
            .description = "Register media files with the project without placing them (clip-add "
                           "can then use them by name). Files stay where they are.",
            .params = {paths},
            .action = [editing](ToolArgs args) { return importFiles(std::move(args), editing); },
        },
    };
}

} // namespace framewright
