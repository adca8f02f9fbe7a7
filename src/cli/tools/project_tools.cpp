// Commands for the workspace, its projects and their media.

#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/tools/project_lookup.h"
#include "editor/commands/project_commands.h"
#include "editor/commands/workspace_commands.h"
#include "workspace/project_folders.h"
#include "workspace/workspace.h"

namespace framewright {

using Json = nlohmann::json;

namespace {

Param<FilePath> const workspacePath{"path", "A folder to set up as the workspace, or to switch to.",
                                    optionalParam};
Param<Text> const about{"about",
                        "What gets made here, in a sentence. Sets the canvas new videos start with "
                        "and goes into the workspace's CLAUDE.md.",
                        optionalParam};
Param<Text> const newName{"name", "The project's name."};
Param<Text> const brief{"brief", "What the video should be, in your words.", optionalParam};
Param<Canvas> const canvas{"canvas", "9:16, 16:9, 1:1 or 4:5 (default: the workspace's).",
                           optionalParam};
Param<Text> const projectToOpen{"project", "A project's name, or the path of one."};
Param<Flag> const force{"force", "Go on even when changes of the open project can't be saved.",
                        optionalParam};

Json workspaceJSON(std::filesystem::path const& folder)
{
    Json json = {{"path", validUtf8(folder.string())},
                 {"canvas", ratioName(Workspace::canvas(folder).value_or(AspectPreset::portrait))},
                 {"projects", listProjects(folder).size()}};
    if (auto const text = Workspace::about(folder))
        json["about"] = *text;
    Json folders = Json::array();
    for (auto const& media : Workspace::mediaFolders(folder))
        folders.push_back(validUtf8(media.string()));
    json["mediaFolders"] = std::move(folders);
    return json;
}

ToolResult showWorkspace(ToolArgs const& args, AppState& editor)
{
    auto const given = args.find(workspacePath);
    std::filesystem::path const folder =
        given ? accepted(setUpWorkspace(editor, *given)) : workspaceOf(args, editor);
    if (auto const text = args.find(about))
        describeWorkspace(folder, *text);
    return ToolResult::json(workspaceJSON(folder));
}

Json listingJSON(ProjectListing const& listing, AppState const& editor)
{
    bool const isOpen =
        editor.files().file() && editor.files().file()->parent_path() == listing.folder;
    return {{"name", listing.name},
            {"path", validUtf8(listing.folder.string())},
            {"open", isOpen},
            {"hasDocument", listing.hasDocument}};
}

Json openedJSON(AppState const& editor)
{
    return {{"project", editor.files().projectName()},
            {"path", validUtf8(editor.files().file()->string())},
            {"canvas", ratioName(editor.project().aspect)},
            {"duration", rounded(editor.project().videoDuration())}};
}

Unsaved unsavedChanges(ToolArgs const& args)
{
    return args.get(force, false) ? Unsaved::discard : Unsaved::keep;
}

Task<ToolResult> newProject(ToolArgs args, AppState& editor)
{
    ProjectToStart wanted{workspaceOf(args, editor), args[newName], args.find(canvas),
                          args.find(brief)};
    accepted(co_await startProject(editor, std::move(wanted), unsavedChanges(args)));
    co_return ToolResult::json(openedJSON(editor));
}

Task<ToolResult> openProject(ToolArgs args, AppState& editor)
{
    std::filesystem::path const file = fileOfProject(args, projectToOpen, editor);
    accepted(co_await openProject(editor, file, unsavedChanges(args)));
    Json json = openedJSON(editor);
    if (Json missing = missingMediaJSON(editor); !missing.empty())
        json["missing"] = std::move(missing);
    if (!editor.files().unknownKeys().empty())
        json["unknownKeys"] = editor.files().unknownKeys();
    co_return ToolResult::json(json);
}

Task<ToolResult> closeProject(ToolArgs args, AppState& editor)
{
    requireProject(editor);
    std::string const name = editor.files().projectName();
    accepted(co_await closeProject(editor, unsavedChanges(args)));
    co_return ToolResult::json({{"closed", name}});
}

} // namespace

std::vector<Tool> projectTools(EditorTools tools)
{
    AppState& editor = tools.editing.state;
    return {
        {
            .name = "workspace",
            .description = "Show the workspace folder, or set one up at a path (projects/, "
                           "settings/, cache/) and switch to it.",
            .params = {workspacePath, about},
            .action = [&editor](ToolArgs args) { return showWorkspace(args, editor); },
        },
        {
            .name = "projects",
            .description = "The workspace's projects, the one last changed first.",
            .params = {},
            .action =
                [&editor](ToolArgs args) {
                    Json json = Json::array();
                    for (ProjectListing const& listing : listProjects(workspaceOf(args, editor)))
                        json.push_back(listingJSON(listing, editor));
                    return ToolResult::json(json);
                },
        },
        {
            .name = "project_new",
            .description = "Start a project in the workspace and open it. A name that is taken "
                           "gets a number.",
            .params = {newName, brief, canvas, force},
            .action = [&editor](ToolArgs args) { return newProject(std::move(args), editor); },
        },
        {
            .name = "project_open",
            .description = "Open a project of the workspace by name, or any project by path. What "
                           "is open is saved first.",
            .params = {projectToOpen, force},
            .action = [&editor](ToolArgs args) { return openProject(std::move(args), editor); },
        },
        {
            .name = "project_close",
            .description = "Save the open project and close it.",
            .params = {force},
            .action = [&editor](ToolArgs args) { return closeProject(std::move(args), editor); },
        },
    };
}

} // namespace framewright
