// Commands for exporting, the selection, undo and redo, and the app.

#include "cli/references.h"
#include "cli/tools/clip_results.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "editor/commands/project_commands.h"
#include "editor/commands/rendering_commands.h"
#include "editor/commands/selection_commands.h"
#include "model/file_url.h"

namespace framewright {

using Json = nlohmann::json;

namespace {

Param<Moment> const seekAt{"at", "Where to go."};
Param<Text> const target{"target", "v1:2, s1:3, an id, or none."};

Param<FilePath> const path{"path",
                           "Where to write the .mp4 (default: projects/<name>/exports/<name>-<time>"
                           ".mp4 for a workspace project).",
                           optionalParam};
Param<Flag> const preview{"preview", "Fast SDR render, 960 px on the long side (540x960 for 9:16).",
                          optionalParam};
Param<WholeNumber> const height{"height",
                                "Output height in pixels (1080, 1440, 2160 for 9:16; 720, 1080 for "
                                "16:9); overrides the default.",
                                optionalParam};
Param<Moment> const start{"start", "Export from here.", optionalParam};
Param<Moment> const end{"end", "Export up to here.", optionalParam};

Param<Flag> const force{"force", "Quit even when changes can't be saved or an export is running.",
                        optionalParam};

Task<ToolResult> exportProject(ToolArgs args, EditorTools tools)
{
    AppState& editor = tools.editing.state;
    requireProject(editor);
    MovieWanted wanted;
    wanted.file = args.find(path);
    if (args.get(preview, false))
        wanted.quality = ExportSettings::Quality::preview;
    wanted.height = args.find(height);
    wanted.start = args.find(start);
    wanted.end = args.find(end);
    Progress const progress = args.progress();
    ExportProgress const report = [progress](double fraction, std::string_view stage) {
        progress.report(fraction, stage);
    };
    ExportedMovie const made =
        accepted(co_await exportMovie(editor, tools.exports, wanted, report, args.stopToken()));

    Json json = {{"path", validUtf8(made.movie.file.string())},
                 {"duration", rounded(made.movie.duration)},
                 {"width", made.movie.size.width},
                 {"height", made.movie.size.height},
                 {"fps", made.movie.framesPerSecond},
                 {"frames", made.movie.frames}};
    if (Json missing = missingMediaJSON(made.of); !missing.empty())
        json["missing"] = std::move(missing);
    co_return ToolResult::json(json, wanted.end ? "" : textsBeyondEndNote(made.of.project));
}

ToolResult seekTo(ToolArgs const& args, Editing editing)
{
    requireProject(editing.state);
    accepted(seek(editing, args[seekAt]));
    return ToolResult::json({{"playhead", rounded(editing.state.selection().playhead())}});
}

ToolResult selectTarget(ToolArgs const& args, Editing editing)
{
    requireProject(editing.state);
    Selection& selection = editing.state.selection();
    if (args[target] == "none") {
        selection.clear();
        return {true, "Nothing selected.", {}};
    }
    ItemRef::Value const item = args[Param<ItemRef>("target")];
    if (item.what == ItemRef::What::bar) {
        selection.selectBar(item.id);
        return ToolResult::json({{"selected", {{"bar", item.id.text()}}}});
    }
    selection.selectClip(item.id);
    return ToolResult::json({{"selected", clipJSON(editing.project(), item.id)}});
}

/// What was undone or redone, and what can be next.
ToolResult stepped(char const* did, std::string const& step, AppState const& editor)
{
    Json json = {{did, step}};
    if (auto const name = editor.document().history().undoName())
        json["undo"] = *name;
    if (auto const name = editor.document().history().redoName())
        json["redo"] = *name;
    return ToolResult::json(json);
}

Task<ToolResult> quit(ToolArgs args, EditorTools tools)
{
    auto const cancelled =
        accepted(co_await prepareToQuit(tools.editing.state, tools.exports,
                                        args.get(force, false) ? Unsaved::discard : Unsaved::keep));
    std::string said = "Framewright quits.";
    if (cancelled)
        said = "The export of " + validUtf8(cancelled->filename().string()) + " was cancelled. " +
               said;
    tools.quit();
    co_return ToolResult{true, said, {}};
}

} // namespace

std::vector<Tool> viewTools(EditorTools tools)
{
    Editing const editing = tools.editing;
    return {
        {
            .name = "seek",
            .description = "Move the app's playhead so the user sees that moment.",
            .params = {seekAt},
            .action = [editing](ToolArgs args) { return seekTo(args, editing); },
        },
        {
            .name = "select",
            .description = "Select a clip or subtitle bar in the app (its sidebar opens), or clear "
                           "the selection with \"none\".",
            .params = {target},
            .action = [editing](ToolArgs args) { return selectTarget(args, editing); },
        },
        {
            .name = "undo",
            .description = "Undo the last change (yours or the user's).",
            .params = {},
            .action =
                [editing](ToolArgs) {
                    requireProject(editing.state);
                    return stepped("undone", accepted(undo(editing)), editing.state);
                },
        },
        {
            .name = "redo",
            .description = "Redo the last undone change.",
            .params = {},
            .action =
                [editing](ToolArgs) {
                    requireProject(editing.state);
                    return stepped("redone", accepted(redo(editing)), editing.state);
                },
        },
        {
            .name = "export",
            .description = "Render the piece to an .mp4 with text and captions burned in; "
                           "`--preview` makes a quick 540p file for checking, otherwise the "
                           "footage's own size (up to 4K, HDR kept); default path in the project's "
                           "exports folder, time-stamped.",
            .params = {path, preview, height, start, end},
            .action = [tools](ToolArgs args) { return exportProject(std::move(args), tools); },
        },
        {
            .name = "app_quit",
            .description = "Save the open project and end the editor.",
            .params = {force},
            .action = [tools](ToolArgs args) { return quit(std::move(args), tools); },
        },
    };
}

} // namespace framewright
