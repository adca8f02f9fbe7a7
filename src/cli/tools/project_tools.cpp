// Commands for the workspace, its projects and their media.

#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/tools/project_lookup.h"
#include "tasks/on_worker.h"
#include "workspace/project_folders.h"
#include "workspace/workspace.h"
#include "workspace/workspace_messages.h"

#include <algorithm>
#include <sstream>

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

/// The canvas that a description of what gets made asks for, if it does.
std::optional<AspectPreset> canvasMeant(std::string const& description)
{
    std::istringstream words(description);
    for (std::string word; words >> word;) {
        while (!word.empty() && std::ispunct(static_cast<unsigned char>(word.back())))
            word.pop_back();
        // "Reels" are made of what "reel" means.
        if (auto const preset = aspectPresetNamed(word))
            return preset;
        if (word.ends_with('s')) {
            if (auto const preset = aspectPresetNamed(word.substr(0, word.size() - 1)))
                return preset;
        }
    }
    return std::nullopt;
}

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
    std::filesystem::path folder;
    if (auto const given = args.find(workspacePath)) {
        folder = *given;
        Workspace::setUp(folder);
        folder = accepted(Workspace::openable(folder));
        editor.setWorkspace(folder);
    } else {
        folder = workspaceOf(args, editor);
    }
    if (auto const text = args.find(about)) {
        Workspace::setAbout(*text, folder);
        if (auto const meant = canvasMeant(*text))
            Workspace::setCanvas(*meant, folder);
    }
    return ToolResult::json(workspaceJSON(folder));
}

Json listingJSON(ProjectListing const& listing, AppState const& editor)
{
    bool const isOpen =
        editor.projectFile() && editor.projectFile()->parent_path() == listing.folder;
    return {{"name", listing.name},
            {"path", validUtf8(listing.folder.string())},
            {"open", isOpen},
            {"hasDocument", listing.hasDocument}};
}

Json openedJSON(AppState const& editor)
{
    return {{"project", editor.projectName()},
            {"path", validUtf8(editor.projectFile()->string())},
            {"canvas", ratioName(editor.project().aspect)},
            {"duration", rounded(editor.project().videoDuration())}};
}

AppState::Changes changesKept(ToolArgs const& args)
{
    return args.get(force, false) ? AppState::Changes::discard : AppState::Changes::keep;
}

Task<ToolResult> startProject(ToolArgs args, AppState& editor)
{
    std::filesystem::path const workspace = workspaceOf(args, editor);
    Project project =
        newProject(args.get(canvas, Workspace::canvas(workspace).value_or(AspectPreset::portrait)));
    project.brief = args.find(brief);
    // Before the folder is made, so that a project that can't be left doesn't leave an empty one.
    accepted(co_await editor.confirmDiscardingChanges(changesKept(args)));
    std::filesystem::path const folder = accepted(createProjectFolder(workspace, args[newName]));
    co_await editor.startProject(Workspace::projectFile(folder), std::move(project));
    co_return ToolResult::json(openedJSON(editor));
}

Task<ToolResult> openProject(ToolArgs args, AppState& editor)
{
    std::filesystem::path const file = fileOfProject(args, projectToOpen, editor);
    accepted(co_await editor.confirmDiscardingChanges(changesKept(args)));
    co_await editor.openProject(file);
    co_await editor.assetsLoaded();
    Json json = openedJSON(editor);
    if (Json missing = missingMediaJSON(editor); !missing.empty())
        json["missing"] = std::move(missing);
    if (!editor.unknownKeys().empty())
        json["unknownKeys"] = editor.unknownKeys();
    co_return ToolResult::json(json);
}

Task<ToolResult> closeProject(ToolArgs args, AppState& editor)
{
    requireProject(editor);
    std::string const name = editor.projectName();
    accepted(co_await editor.closeProject(changesKept(args)));
    co_return ToolResult::json({{"closed", name}});
}

} // namespace

std::vector<Tool> projectTools(EditorTools tools)
{
    AppState& editor = tools.editor;
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
            .action = [&editor](ToolArgs args) { return startProject(std::move(args), editor); },
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
