// Commands that copy, rename, save and delete projects as a whole.

#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/tools/project_lookup.h"
#include "platform/atomic_file.h"
#include "tasks/on_worker.h"
#include "workspace/project_folders.h"
#include "workspace/workspace.h"

namespace framewright {

using Json = nlohmann::json;

namespace {

Param<FilePath> const copyPath{
    "path", "Where to put a copy as a single .fwp file. The project itself stays in the workspace.",
    optionalParam};
Param<Text> const newName{"name", "The new name."};
Param<Text> const copyName{"name", "The copy's name (default: the project's and a number).",
                           optionalParam};
Param<Text> const project{"project", "A project's name or path (default: the open one).",
                          optionalParam};
Param<Text> const doomed{"project", "A project's name or path."};

enum class RecoverAction { restore, discard };
Param<Choice<RecoverAction>> const recoverAction{
    "action",
    "restore opens the copy, discard deletes it.",
    {{"restore", RecoverAction::restore}, {"discard", RecoverAction::discard}}};
Param<Flag> const force{"force", "Go on even when changes of the open project can't be saved.",
                        optionalParam};

bool isOpenProject(AppState const& editor, std::filesystem::path const& file)
{
    return editor.projectFile() &&
           Workspace::canonicalPath(*editor.projectFile()) == Workspace::canonicalPath(file);
}

/// The folder of the project that is meant, which lies in a workspace. What is open is saved.
Task<std::filesystem::path> savedFolder(ToolArgs args, Param<Text> which, AppState& editor)
{
    if (!args.has(which))
        requireProject(editor);
    std::filesystem::path const file =
        args.has(which) ? fileOfProject(args, which, editor) : editor.projectFile().value_or("");
    if (!Workspace::isProjectDocument(file))
        throw ToolError("Only projects of a workspace can be renamed, duplicated or deleted.");
    if (isOpenProject(editor, file)) {
        bool const isSaved = co_await editor.saveNow();
        if (!isSaved)
            throw ToolError(editor.errorMessage());
    }
    co_return file.parent_path();
}

Json folderJSON(std::filesystem::path const& folder)
{
    return {{"project", validUtf8(folder.filename().string())},
            {"path", validUtf8(Workspace::projectFile(folder).string())}};
}

Task<ToolResult> saveCopy(std::filesystem::path file, AppState& editor)
{
    if (file.extension() != ".fwp")
        file += ".fwp";
    if (std::filesystem::exists(file))
        throw ToolError("There is a file at " + file.string() + " already.");
    auto const write = [file, project = editor.project()] {
        // An exact copy to be opened anywhere: its paths are absolute.
        writeFileAtomically(file, ProjectDocument(project).data());
    };
    co_await onWorker(write);
    co_return ToolResult::json({{"copy", validUtf8(file.string())}});
}

Task<ToolResult> saveProject(ToolArgs args, AppState& editor)
{
    requireProject(editor);
    if (auto const file = args.find(copyPath)) {
        if (editor.projectFile())
            co_return co_await saveCopy(*file, editor);
        std::filesystem::path own = *file;
        if (own.extension() != ".fwp")
            own += ".fwp";
        if (std::filesystem::exists(own))
            throw ToolError("There is a file at " + own.string() + " already.");
        editor.followTo(own);
    }
    if (!editor.projectFile())
        throw ToolError("Give a path: the project was never saved.");
    if (!co_await editor.saveProject())
        throw ToolError(editor.errorMessage());
    co_return ToolResult::json({{"saved", validUtf8(editor.projectFile()->string())}});
}

Task<ToolResult> renameProjectFolder(ToolArgs args, AppState& editor)
{
    std::filesystem::path const folder = co_await savedFolder(args, project, editor);
    bool const isOpen = isOpenProject(editor, Workspace::projectFile(folder));
    std::filesystem::path const renamed = accepted(renameProject(folder, args[newName]));
    if (isOpen)
        editor.followTo(Workspace::projectFile(renamed));
    co_return ToolResult::json(folderJSON(renamed));
}

Task<ToolResult> duplicateProjectFolder(ToolArgs args, AppState& editor)
{
    std::filesystem::path const folder = co_await savedFolder(args, project, editor);
    std::optional<std::string> const name = args.find(copyName);
    auto const duplicate = [folder, name] {
        return name ? duplicateProject(folder, *name) : duplicateProject(folder);
    };
    std::filesystem::path const copy = accepted(co_await onWorker(duplicate));
    co_return ToolResult::json(folderJSON(copy));
}

Task<ToolResult> deleteProject(ToolArgs args, AppState& editor)
{
    std::filesystem::path const folder = co_await savedFolder(args, doomed, editor);
    bool const isOpen = isOpenProject(editor, Workspace::projectFile(folder));
    auto const trash = [folder] { return trashProject(folder); };
    std::filesystem::path const trashed = accepted(co_await onWorker(trash));
    if (isOpen)
        accepted(co_await editor.closeProject(AppState::Changes::discard));
    Json json = {{"deleted", validUtf8(folder.filename().string())}};
    if (!trashed.empty())
        json["trash"] = validUtf8(trashed.string());
    co_return ToolResult::json(json);
}

Task<ToolResult> recoverProject(ToolArgs args, AppState& editor)
{
    if (args[recoverAction] == RecoverAction::discard) {
        accepted(editor.discardRecovery());
        co_return ToolResult::json({{"recovery", "discarded"}});
    }
    accepted(co_await editor.confirmDiscardingChanges(
        args.get(force, false) ? AppState::Changes::discard : AppState::Changes::keep));
    accepted(co_await editor.restoreRecovery());
    co_return ToolResult::json({{"recovery", "restored"}, {"project", editor.projectName()}},
                               "It is not saved yet; project-save writes it to its own place.");
}

} // namespace

std::vector<Tool> projectFolderTools(EditorTools tools)
{
    AppState& editor = tools.editor;
    return {
        {
            .name = "project_save",
            .description = "Save the open project now, or a copy of it as a single .fwp file. "
                           "Projects of a workspace are saved by themselves a second after each "
                           "change.",
            .params = {copyPath},
            .action = [&editor](ToolArgs args) { return saveProject(std::move(args), editor); },
        },
        {
            .name = "project_rename",
            .description = "Give a project of the workspace another name.",
            .params = {newName, project},
            .action =
                [&editor](ToolArgs args) { return renameProjectFolder(std::move(args), editor); },
        },
        {
            .name = "project_duplicate",
            .description =
                "Copy a project of the workspace, with its media but without its exports. "
                "The open project stays open.",
            .params = {copyName, project},
            .action =
                [&editor](ToolArgs args) {
                    return duplicateProjectFolder(std::move(args), editor);
                },
        },
        {
            .name = "project_delete",
            .description = "Move a project of the workspace to the desktop's trash.",
            .params = {doomed},
            .action = [&editor](ToolArgs args) { return deleteProject(std::move(args), editor); },
        },
        {
            .name = "project_recover",
            .description = "Restore or discard the autosaved copy of a project that wasn't saved "
                           "before the app last closed. Status tells when one is waiting.",
            .params = {recoverAction, force},
            .action = [&editor](ToolArgs args) { return recoverProject(std::move(args), editor); },
        },
    };
}

} // namespace framewright
