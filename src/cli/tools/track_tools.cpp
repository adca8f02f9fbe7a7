// Commands for tracks and the canvas.

#include "cli/references.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "editor/commands/track_commands.h"

namespace framewright {

using Json = nlohmann::json;

namespace {

Param<Choice<TrackKind>> const kind{
    "kind",
    "video, audio or text (subtitles tracks come from captions-generate).",
    {{"video", TrackKind::video}, {"audio", TrackKind::audio}, {"text", TrackKind::text}}};
Param<Text> const newName{"name", "The track's name (default: the kind and a number).",
                          optionalParam};
Param<Flag> const newMagnetic{
    "magnetic", "Pack clips edge to edge (default: only the first video track).", optionalParam};
Param<Flag> const top{
    "top", "Put a video track above all other video tracks (it composites on top).", optionalParam};

Param<TrackRef> const track{"track"};
Param<Text> const name{"name", "A new name.", optionalParam};
Param<Flag> const magnetic{"magnetic",
                           "Pack clips edge to edge; turning it off keeps clips where they are.",
                           optionalParam};
Param<Flag> const locked{"locked", "Refuse every edit.", optionalParam};
Param<Flag> const hidden{"hidden", "Show nothing from this track (not for audio tracks).",
                         optionalParam};
Param<Number> const opacity{
    "opacity", "Video only: 0 to 1; below 1 the tracks beneath show through.", optionalParam};
Param<Flag> const muted{"muted", "Silence the track.", optionalParam};
Param<Flag> const solo{"solo", "Hear only soloed tracks.", optionalParam};
Param<Number> const volume{"volume", "Track level, 0 to 1.5.", optionalParam};
Param<Flag> const ducks{"ducks", "Audio only: lower this track under other audio (voiceovers).",
                        optionalParam};
Param<WholeNumber> const by{"by", "Places down the list; negative for up."};
Param<Canvas> const to{"to", "9:16, 16:9, 1:1 or 4:5.", optionalParam};

ToolResult trackResult(AppState const& editor, Id const& id)
{
    return ToolResult::json(trackJSON(editor.project(), *editor.project().track(id)));
}

ToolResult addTrack(ToolArgs const& args, Editing editing)
{
    NewTrack added;
    added.kind = args[kind];
    added.name = args.find(newName);
    added.isMagnetic = args.find(newMagnetic);
    if (args.get(top, false))
        added.place = TrackPlace::top;
    return trackResult(editing.state, accepted(addTrack(editing, added)));
}

ToolResult setTrack(ToolArgs const& args, Editing editing)
{
    Id const id = args[track];
    TrackChanges changes;
    changes.name = args.find(name);
    changes.isMagnetic = args.find(magnetic);
    changes.isLocked = args.find(locked);
    changes.isHidden = args.find(hidden);
    changes.opacity = args.find(opacity);
    changes.isMuted = args.find(muted);
    changes.isSolo = args.find(solo);
    if (auto const level = args.find(volume))
        changes.volume = static_cast<float>(*level);
    changes.ducks = args.find(ducks);
    accepted(changeTrack(editing, id, changes));
    return trackResult(editing.state, id);
}

ToolResult moveTrack(ToolArgs const& args, Editing editing)
{
    Id const id = args[track];
    accepted(moveTrack(editing, id, args[by]));
    return trackResult(editing.state, id);
}

ToolResult removeTrack(ToolArgs const& args, Editing editing)
{
    Id const id = args[track];
    std::string const title = trackTitle(editing.project(), *editing.project().track(id));
    accepted(removeTrack(editing, id));
    Json tracks = Json::array();
    for (Track const& left : editing.project().tracks)
        tracks.push_back(trackSummaryJSON(editing.project(), left));
    return ToolResult::json({{"removed", title}, {"tracks", tracks}});
}

ToolResult showRatio(ToolArgs const& args, Editing editing)
{
    requireProject(editing.state);
    if (auto const preset = args.find(to))
        changeAspect(editing, *preset);
    AspectPreset const canvas = editing.project().aspect;
    PixelSize const size = baseCanvas(canvas);
    return ToolResult::json(
        {{"canvas", ratioName(canvas)}, {"width", size.width}, {"height", size.height}});
}

} // namespace

std::vector<Tool> trackTools(EditorTools tools)
{
    Editing const editing = tools.editing;
    return {
        {
            .name = "track_add",
            .description = "Add a track. Video tracks go just above the audio tracks (below other "
                           "video), or on top with top: true; audio at the bottom; text and "
                           "subtitles on top.",
            .params = {kind, newName, newMagnetic, top},
            .action = [editing](ToolArgs args) { return addTrack(args, editing); },
        },
        {
            .name = "track_set",
            .description = "Change a track: name, magnetic, locked, hidden (video/text/subtitles), "
                           "opacity (video, 0-1), muted, solo, volume (0-1.5) and ducks (audio).",
            .params = {track, name, magnetic, locked, hidden, opacity, muted, solo, volume, ducks},
            .action = [editing](ToolArgs args) { return setTrack(args, editing); },
        },
        {
            .name = "track_move",
            .description = "Move a track up or down the list. Upper video tracks cover lower ones.",
            .params = {track, by},
            .action = [editing](ToolArgs args) { return moveTrack(args, editing); },
        },
        {
            .name = "track_remove",
            .description = "Delete a track and everything on it.",
            .params = {track},
            .action = [editing](ToolArgs args) { return removeTrack(args, editing); },
        },
        {
            .name = "ratio",
            .description =
                "Show or change the canvas: 9:16 (default), 16:9, 1:1 or 4:5. Everything "
                "keeps its normalized placement; exports follow.",
            .params = {to},
            .action = [editing](ToolArgs args) { return showRatio(args, editing); },
        },
    };
}

} // namespace framewright
