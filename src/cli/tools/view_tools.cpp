// Commands for rendering the piece, the selection, stepping through the history, and the app.

#include "cli/references.h"
#include "cli/tools/clip_results.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "tasks/on_worker.h"
#include "model/time_rules.h"
#include "workspace/workspace.h"

#include <QDateTime>

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

/// "NAME-20261122-223105.mp4", in a folder.
std::filesystem::path unusedExportFile(std::filesystem::path const& folder, AppState const& editor)
{
    std::string const time =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")).toStdString();
    std::string const stem = editor.projectName() + "-" + time;
    std::filesystem::path file = folder / (stem + ".mp4");
    for (int number = 2; std::filesystem::exists(file); ++number)
        file = folder / (stem + "-" + std::to_string(number) + ".mp4");
    return file;
}

/// "projects/NAME/exports/NAME-20261122-223105.mp4"
std::filesystem::path defaultExportFile(AppState const& editor)
{
    if (!editor.projectFile() || !Workspace::isProjectDocument(*editor.projectFile()))
        throw ToolError(
            "Give a path (the project is not in a workspace, so there is no exports folder).");
    std::filesystem::path const folder =
        Workspace::exportsFolder(editor.projectFile()->parent_path());
    std::filesystem::create_directories(folder);
    return unusedExportFile(folder, editor);
}

/// The file that `given` means: with the ending .mp4, and in a folder under the usual name.
std::filesystem::path exportFile(std::filesystem::path given, AppState const& editor)
{
    QString const ending = QString::fromStdString(given.extension().string());
    bool const isMovie = ending.compare(QLatin1String(".mp4"), Qt::CaseInsensitive) == 0;
    if (!isMovie && std::filesystem::is_directory(given))
        return unusedExportFile(given, editor);
    if (given.filename().empty())
        throw ToolError("There is no folder " + given.parent_path().string() + ".");
    if (!isMovie)
        given += ".mp4";
    return given;
}

ExportSettings exportSettings(ToolArgs const& args, AppState const& editor)
{
    ExportSettings settings;
    if (args.get(preview, false))
        settings.quality = ExportSettings::Quality::preview;
    settings.height = args.find(height);
    if (settings.height && (*settings.height < 480 || *settings.height > 4320))
        throw ToolError("height must be 480 to 4320.");
    settings.start = args.find(start);
    settings.end = args.find(end);
    double const from = settings.start.value_or(0);
    if (from < 0)
        throw ToolError("start must be 0 or later.");
    if (settings.end.value_or(editor.project().videoDuration()) - from < timeTolerance)
        throw ToolError("The range is empty.");

    settings.file = args.has(path) ? exportFile(args[path], editor) : defaultExportFile(editor);
    return settings;
}

Task<ToolResult> exportMovie(ToolArgs args, EditorTools tools)
{
    requireProject(tools.editor);
    if (tools.exports.isRunning())
        throw ToolError("An export is already running.");
    ExportSettings const settings = exportSettings(args, tools.editor);
    co_await tools.editor.refreshAssets(AppState::Missing::searched);
    requireProject(tools.editor);
    Json missing = missingMediaJSON(tools.editor);
    std::string const note = settings.end ? "" : textsBeyondEndNote(tools.editor.project());
    Progress const progress = args.progress();
    ExportProgress const report = [progress](double fraction, std::string_view stage) {
        progress.report(fraction, stage);
    };
    ExportResult const made =
        accepted(co_await tools.exports.run(settings, report, args.stopToken()));

    Json json = {{"path", validUtf8(made.file.string())},
                 {"duration", rounded(made.duration)},
                 {"width", made.size.width},
                 {"height", made.size.height},
                 {"fps", made.framesPerSecond},
                 {"frames", made.frames}};
    if (!missing.empty())
        json["missing"] = std::move(missing);
    co_return ToolResult::json(json, note);
}

ToolResult selectTarget(ToolArgs const& args, AppState& editor)
{
    requireProject(editor);
    std::string const word = args[target];
    if (word == "none") {
        editor.select(std::nullopt);
        return {true, "Nothing selected.", {}};
    }
    ItemRef::Value const item = args[Param<ItemRef>("target")];
    if (item.what == ItemRef::What::bar) {
        editor.selectCaption(item.id);
        return ToolResult::json({{"selected", {{"bar", item.id.text()}}}});
    }
    Id const id = item.id;
    editor.select(id);
    return ToolResult::json({{"selected", clipJSON(editor.project(), id)}});
}

ToolResult stepped(std::string const& verb, std::optional<std::string> const& action,
                   AppState const& editor)
{
    if (!action)
        throw ToolError("Nothing to " + verb + ".");
    Json json = {{verb == "undo" ? "undone" : "redone", *action}};
    if (auto const name = editor.history().undoName())
        json["undo"] = *name;
    if (auto const name = editor.history().redoName())
        json["redo"] = *name;
    return ToolResult::json(json);
}

Task<ToolResult> quit(ToolArgs args, EditorTools tools)
{
    bool const isForced = args.get(force, false);
    accepted(co_await tools.editor.confirmDiscardingChanges(isForced ? AppState::Changes::discard
                                                                     : AppState::Changes::keep));
    std::string said = "Framewright quits.";
    if (tools.exports.isRunning()) {
        std::string const file = validUtf8(tools.exports.file().filename().string());
        if (!isForced)
            throw ToolError("The export of " + file +
                            " is still running. Wait until it is done, "
                            "or pass --force to cancel it.");
        said = "The export of " + file + " was cancelled. " + said;
        co_await tools.exports.cancel();
    }
    tools.quit();
    co_return ToolResult{true, said, {}};
}

} // namespace

std::vector<Tool> viewTools(EditorTools tools)
{
    AppState& editor = tools.editor;
    return {
        {
            .name = "seek",
            .description = "Move the app's playhead so the user sees that moment.",
            .params = {seekAt},
            .action =
                [&editor](ToolArgs args) {
                    requireProject(editor);
                    double const time = args[seekAt];
                    if (time < 0)
                        throw ToolError("at must be 0 or later.");
                    editor.seek(time);
                    return ToolResult::json({{"playhead", rounded(editor.currentTime())}});
                },
        },
        {
            .name = "select",
            .description = "Select a clip or subtitle bar in the app (its sidebar opens), or clear "
                           "the selection with \"none\".",
            .params = {target},
            .action = [&editor](ToolArgs args) { return selectTarget(args, editor); },
        },
        {
            .name = "undo",
            .description = "Undo the last change (yours or the user's).",
            .params = {},
            .action =
                [&editor](ToolArgs) {
                    requireProject(editor);
                    return stepped("undo", editor.undo(), editor);
                },
        },
        {
            .name = "redo",
            .description = "Redo the last undone change.",
            .params = {},
            .action =
                [&editor](ToolArgs) {
                    requireProject(editor);
                    return stepped("redo", editor.redo(), editor);
                },
        },
        {
            .name = "export",
            .description = "Render the piece to an .mp4 with text and captions burned in; "
                           "`--preview` makes a quick 540p file for checking, otherwise the "
                           "footage's own size (up to 4K, HDR kept); default path in the project's "
                           "exports folder, time-stamped.",
            .params = {path, preview, height, start, end},
            .action = [tools](ToolArgs args) { return exportMovie(std::move(args), tools); },
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
