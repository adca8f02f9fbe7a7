// Commands that read and change nothing.

#include "cli/references.h"
#include "cli/refusal_sentences.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/tools/style_report.h"
#include "tasks/on_worker.h"
#include "workspace/workspace.h"

namespace framewright {

using Json = nlohmann::json;

namespace {

Param<TrackRef> const oneTrack{"track", optionalParam};
Param<FilePath> const path{"path", "Absolute path of a video, photo or audio file."};

Json projectSummary(AppState const& editor)
{
    Project const& project = editor.project();
    Json tracks = Json::array();
    for (Track const& track : project.tracks)
        tracks.push_back(trackSummaryJSON(project, track));
    Json json = {
        {"name", editor.files().projectName()},         {"canvas", ratioName(project.aspect)},
        {"duration", rounded(project.videoDuration())}, {"assets", project.assets->size()},
        {"saved", !editor.files().isDirty()},           {"tracks", std::move(tracks)}};
    if (editor.files().file())
        json["path"] = validUtf8(editor.files().file()->string());
    if (project.brief)
        json["brief"] = *project.brief;
    return json;
}

/// Problems with the files of saved styles, and invalid values in them and in the project's styles;
/// empty when there are none.
Json styleNotesJSON(StyleStores const& styles, Project const& project, FontRegistry const& fonts)
{
    Json notes = invalidStyles(project, fonts);
    for (StyleStore const* const store : {&styles.captions, &styles.texts}) {
        if (!store->problem().empty())
            notes.push_back(validUtf8(store->problem()));
        for (std::string const& note : store->notes())
            notes.push_back(store->fileName() + ": " + note);
        for (std::string const& name : store->duplicateNames())
            notes.push_back(store->fileName() + ": More than one look is called " + name +
                            "; pick them by id.");
    }
    return notes;
}

/// Why the workspace can't be used; empty when it can.
std::string workspaceProblem(std::filesystem::path const& folder, Project const& project)
{
    try {
        auto const opened = Workspace::openable(folder);
        return opened ? std::string() : sentenceOf(opened.refusal(), project);
    } catch (WorkspaceError const& error) {
        return validUtf8(error.what());
    }
}

Json statusJSON(AppState& editor, StyleStores const& styles, FontRegistry const& fonts)
{
    Json json = {{"version", FRAMEWRIGHT_VERSION}};
    if (auto const folder = Workspace::url(editor.defaults())) {
        json["workspace"] = validUtf8(folder->string());
        if (!Workspace::isWorkspace(*folder))
            json["workspaceProblem"] = workspaceProblem(*folder, editor.project());
    } else {
        json["workspace"] = nullptr;
    }
    if (auto const& waiting = editor.files().recovery().waiting()) {
        json["recovery"] = {{"copy", validUtf8(waiting->file.string())},
                            {"what", "An autosaved copy of a project that wasn't saved before the "
                                     "app last closed. See project-recover."}};
        if (waiting->origin)
            json["recovery"]["project"] = validUtf8(waiting->origin->string());
    }
    if (!editor.files().problem().empty())
        json["problem"] = validUtf8(editor.files().problem());
    if (Json replaced = fontReportJSON(editor.project(), fonts); !replaced.empty())
        json["fonts"] = std::move(replaced);
    if (Json notes = styleNotesJSON(styles, editor.project(), fonts); !notes.empty())
        json["looks"] = std::move(notes);
    if (!editor.isOpen()) {
        json["project"] = nullptr;
        return json;
    }
    json["project"] = projectSummary(editor);
    json["playhead"] = rounded(editor.selection().playhead());
    if (auto const& clips = editor.selection().clips(); !clips.empty())
        json["selected"] = clipJSON(editor.project(), clips.front());
    if (auto const name = editor.document().history().undoName())
        json["undo"] = *name;
    if (auto const name = editor.document().history().redoName())
        json["redo"] = *name;
    if (Json missing = missingMediaJSON(editor); !missing.empty())
        json["missing"] = std::move(missing);
    if (!editor.files().unknownKeys().empty())
        json["unknownKeys"] = editor.files().unknownKeys();
    return json;
}

} // namespace

std::vector<Tool> readingTools(EditorTools tools)
{
    AppState& editor = tools.editing.state;
    FontRegistry const& fonts = tools.fonts;
    return {
        {
            .name = "status",
            .description = "The workspace, the open project and its tracks in short. Start here.",
            .params = {},
            .action = [&editor, &styles = tools.styles, &fonts](ToolArgs) -> Task<ToolResult> {
                co_await editor.media().refresh();
                co_return ToolResult::json(statusJSON(editor, styles, fonts));
            },
        },
        {
            .name = "timeline",
            .description = "The tracks with their clips and refs (optionally one track).",
            .params = {oneTrack},
            .action =
                [&editor](ToolArgs args) {
                    requireProject(editor);
                    if (auto const id = args.find(oneTrack))
                        return ToolResult::json(
                            trackJSON(editor.project(), *editor.project().track(*id)));
                    return ToolResult::json(timelineJSON(editor));
                },
        },
        {
            .name = "media",
            .description = "The project's media assets.",
            .params = {},
            .action = [&editor](ToolArgs) -> Task<ToolResult> {
                requireProject(editor);
                co_await editor.media().refresh();
                Json assets = Json::array();
                for (auto const& [id, asset] : *editor.project().assets)
                    assets.push_back(assetJSON(editor, asset));
                co_return ToolResult::json(assets);
            },
        },
        {
            .name = "probe",
            .description = "One file's facts: kind, length, size, sound. It is not imported.",
            .params = {path},
            .action = [](ToolArgs args) -> Task<ToolResult> {
                std::filesystem::path const file = args[path];
                auto const look = [file] { return probeMedia(file); };
                MediaInfo const info = co_await onWorker(look);
                co_return ToolResult::json(mediaInfoJSON(info));
            },
        },
    };
}

} // namespace framewright
