// Commands that copy, rename, save and delete projects as a whole.

#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/tools/project_lookup.h"
#include "editor/commands/project_commands.h"
#include "model/file_url.h"
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

/// The document of the named project, by default the open one.
std::filesystem::path documentOf(ToolArgs const& args, Param<Text> const& which, AppState& editor)
{
    if (args.has(which))
        return fileOfProject(args, which, editor);
    requireProject(editor);
    return editor.files().file().value_or("");
}

Json folderJSON(std::filesystem::path const& folder)
{
    return {{"project", validUtf8(folder.filename().string())},
            {"path", validUtf8(Workspace::projectFile(folder).string())}};
}

Task<ToolResult> saveProject(ToolArgs args, AppState& editor)
{
    requireProject(editor);
    if (auto const file = args.find(copyPath)) {
        bool const hasFile = editor.files().file().has_value();
        auto const written = accepted(co_await saveProjectAs(editor, *file));
        co_return ToolResult::json({{hasFile ? "copy" : "saved", validUtf8(written.string())}});
    }
    accepted(co_await saveProject(editor));
    co_return ToolResult::json({{"saved", validUtf8(editor.files().file()->string())}});
}

Task<ToolResult> renameProject(ToolArgs args, AppState& editor)
{
    auto const file = documentOf(args, project, editor);
    co_return ToolResult::json(
        folderJSON(accepted(co_await renameProject(editor, file, args[newName]))));
}

Task<ToolResult> duplicateProject(ToolArgs args, AppState& editor)
{
    auto const file = documentOf(args, project, editor);
    co_return ToolResult::json(
        folderJSON(accepted(co_await duplicateProject(editor, file, args.find(copyName)))));
}

Task<ToolResult> deleteProject(ToolArgs args, AppState& editor)
{
    auto const file = documentOf(args, doomed, editor);
    auto const trash = accepted(co_await deleteProject(editor, file));
    Json json = {{"deleted", validUtf8(file.parent_path().filename().string())}};
    if (!trash.empty())
        json["trash"] = validUtf8(trash.string());
    co_return ToolResult::json(json);
}

Task<ToolResult> recoverProject(ToolArgs args, AppState& editor)
{
    if (args[recoverAction] == RecoverAction::discard) {
        accepted(editor.files().discardRecovery());
        co_return ToolResult::json({{"recovery", "discarded"}});
    }
    accepted(co_await restoreRecovery(editor,
                                      args.get(force, false) ? Unsaved::discard : Unsaved::keep));
    co_return ToolResult::json(
        {{"recovery", "restored"}, {"project", editor.files().projectName()}},
        "It is not saved yet; project-save writes it to its own place.");
}

} // namespace

std::vector<Tool> projectFolderTools(EditorTools tools)
{
    AppState& editor = tools.editing.state;
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
            .action = [&editor](ToolArgs args) { return renameProject(std::move(args), editor); },
        },
        {
            .name = "project_duplicate",
            .description =
                "Copy a project of the workspace, with its media but without its exports. "
                "The open project stays open.",
            .params = {copyName, project},
            .action =
                [&editor](ToolArgs args) { return duplicateProject(std::move(args), editor); },
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
