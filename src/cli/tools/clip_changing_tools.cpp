// Commands that change clips which are on the timeline already.

#include "cli/references.h"
#include "cli/tools/clip_results.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/values.h"

namespace framewright {

using Json = nlohmann::json;

namespace {

Param<ClipRef> const clip{"clip", "v1:2 or a clip id."};
Param<Number> const volume{"volume", "Level, 0 to 1.5 (1 leaves the sound as it is).",
                           optionalParam};
Param<Number> const scale{
    "scale", "Video only: 1 fits the canvas; 1.78 fills a landscape clip's height.", optionalParam};
Param<Number> const offsetX{
    "offsetX", "Video only: horizontal shift as a fraction of the canvas width.", optionalParam};
Param<Number> const offsetY{"offsetY", "Video only: vertical shift, positive is down.",
                            optionalParam};
Param<Number> const cropLeft{"cropLeft", "Fraction removed from the left (0-0.45).", optionalParam};
Param<Number> const cropRight{"cropRight", "Fraction removed from the right.", optionalParam};
Param<Number> const cropTop{"cropTop", "Fraction removed from the top.", optionalParam};
Param<Number> const cropBottom{"cropBottom", "Fraction removed from the bottom.", optionalParam};
Param<Text> const name{"name", "Placeholders only: a new name.", optionalParam};

struct TransformOption {
    Param<Number> const& param;
    double ClipTransform::*member;
};

TransformOption const transformOptions[] = {
    {scale, &ClipTransform::scale},           {offsetX, &ClipTransform::offsetX},
    {offsetY, &ClipTransform::offsetY},       {cropLeft, &ClipTransform::cropLeft},
    {cropRight, &ClipTransform::cropRight},   {cropTop, &ClipTransform::cropTop},
    {cropBottom, &ClipTransform::cropBottom},
};

Param<Moment> const start{"start", "New timeline start.", optionalParam};
Param<Moment> const end{"end", "New timeline end.", optionalParam};
Param<Number> const in{"in", "New source in point (seconds into the file).", optionalParam};
Param<Number> const out{"out", "New source out point.", optionalParam};

Param<Moment> const moveTo{"to", "Timeline time for the clip's start."};
Param<TrackRef> const destination{"track", "Destination track (default: its own).", optionalParam};

Param<Number> const slipTo{"to", "New source in point, in seconds of the file.", optionalParam};
Param<Number> const slipBy{"by", "Shift the window by this many seconds (negative for earlier).",
                           optionalParam};

Param<ClipRef> const replaced{"clip", "v1:2 or a clip id (a placeholder or a media clip)."};
Param<AssetName> const asset{"asset", "An imported asset's name or id.", optionalParam};
Param<FilePath> const path{"path", "A file to import and use instead of asset.", optionalParam};
Param<ClipRef> const with{"with", "A clip on the timeline (v1:3 or an id) to move into this spot.",
                          optionalParam};
Param<Flag> const fill{"fill", "When the source is shorter, fill what is left with a placeholder.",
                       optionalParam};

ToolResult setClip(ToolArgs const& args, AppState& editor)
{
    Id const id = args[clip];
    ClipPlace const place = editableClip(editor, id);
    if (place.clip->isText())
        throw ToolError("Use text-set for text clips.");

    AppState::ClipChanges changes;
    if (auto const level = args.find(volume))
        changes.volume = static_cast<float>(*level);
    ClipTransform transform = place.clip->transform;
    for (TransformOption const& option : transformOptions) {
        if (auto const value = args.find(option.param)) {
            transform.*option.member = *value;
            changes.transform = transform;
        }
    }
    if (changes.transform && place.track->kind != TrackKind::video)
        throw ToolError("Scale, offset and crop apply to clips on video tracks.");
    changes.placeholderName = args.find(name);
    if (changes.placeholderName && !place.clip->isPlaceholder())
        throw ToolError("Only placeholders can be renamed.");
    if (!changes.volume && !changes.transform && !changes.placeholderName)
        throw ToolError(
            "Give something to change: volume, scale, offsetX, offsetY, a crop or name.");

    accepted(editor.changeClip(id, changes));
    return clipResult(editor, id);
}

std::string packedNote(double headTrimmedBy)
{
    return "Magnetic track: the clip stays packed against its neighbors; its head was trimmed by " +
           secondsText(headTrimmedBy) + ".";
}

ToolResult trimClip(ToolArgs const& args, AppState& editor)
{
    Id const id = args[clip];
    ClipPlace const place = editableClip(editor, id);
    Trim trim;
    trim.start = args.time(start, place.clip->end());
    trim.end = args.time(end, editor.project().videoDuration());
    trim.in = args.find(in);
    trim.out = args.find(out);
    if (!trim.start && !trim.end && !trim.in && !trim.out)
        throw ToolError("Give start, end, in or out.");
    Trimmed const trimmed = accepted(editor.trimClip(id, trim));
    return ToolResult::json({{"clip", clipJSON(editor.project(), id)}},
                            trimmed.headTrimmedBy ? packedNote(*trimmed.headTrimmedBy) : "");
}

ToolResult moveClip(ToolArgs const& args, AppState& editor)
{
    Id const id = args[clip];
    ClipPlace const place = editableClip(editor, id);
    std::optional<Id> const onto = args.find(destination);
    Track const& track = onto ? *editor.project().track(*onto) : *place.track;
    requireUnlocked(track);
    double const to = *args.time(moveTo, track.end());
    if (to < 0)
        throw ToolError("to must be 0 or later.");
    accepted(editor.moveClip(id, to, onto));
    return clipResult(editor, id, to);
}

ToolResult slipClip(ToolArgs const& args, AppState& editor)
{
    Id const id = args[clip];
    ClipPlace const place = editableClip(editor, id);
    auto const to = args.find(slipTo);
    auto const by = args.find(slipBy);
    if (to.has_value() == by.has_value())
        throw ToolError("Give --to (a source time) or --by (a shift).");
    if (!place.clip->hasMedia())
        throw ToolError("Only clips with a file have a range to slide");
    accepted(editor.editRange(id, to ? *to : place.clip->sourceStart + *by));
    return clipResult(editor, id);
}

/// The clip that is to move into the spot, checked in the words of the command.
Replacement otherClip(ToolArgs const& args, AppState& editor, Id const& id)
{
    Id const other = args[with];
    if (other == id)
        throw ToolError("A clip cannot replace itself.");
    ClipPlace const place = editableClip(editor, other);
    if (!place.clip->hasMedia())
        throw ToolError(clipRef(editor.project(), *place.track, *place.clip) +
                        " carries no file to bring along.");
    return {Replacement::From::timeline, other};
}

Task<ToolResult> replaceClip(ToolArgs args, AppState& editor)
{
    Id id = args[replaced];
    if (editableClip(editor, id).clip->isText())
        throw ToolError("Text clips carry no file; use text-set.");
    if (!args.has(asset) && !args.has(path) && !args.has(with))
        throw ToolError("Give an asset name, a path, or --with a clip.");

    Replacement source;
    std::optional<AppState::Imported> file;
    if (args.has(with)) {
        source = otherClip(args, editor, id);
    } else if (auto const assetID = args.find(asset)) {
        source = {Replacement::From::file, *assetID};
    } else {
        file = co_await editor.inspect(args[path]);
        source = {Replacement::From::file, file->asset.id};
        id = args[replaced]; // It may be gone by now.
    }
    ClipPlace const place = editableClip(editor, id);
    MediaAsset const* const known = editor.project().asset(source.id);
    if (source.from == Replacement::From::file) {
        MediaAsset const& used = file ? file->asset : *known;
        if (used.kind == MediaKind::image && place.track->kind == TrackKind::audio)
            throw ToolError("A photo cannot replace an audio clip.");
        if (used.kind == MediaKind::audio && place.track->kind == TrackKind::video)
            throw ToolError(used.displayName + " is audio; it cannot replace a video clip.");
    }
    std::string const otherRef =
        args.has(with) ? clipRef(editor.project(), *findClip(editor.project(), source.id)->track,
                                 *findClip(editor.project(), source.id)->clip)
                       : "";
    Replaced const result = accepted(editor.replaceClip(
        file ? editor.withAsset(*file) : editor.project(), id, source,
        args.get(fill, false) ? AppState::Fill::withPlaceholder : AppState::Fill::leaveRest));

    Json json = {{"clip", clipJSON(editor.project(), result.clipID)}};
    if (result.fillerID)
        json["filler"] = clipJSON(editor.project(), *result.fillerID);
    std::string note;
    if (!otherRef.empty())
        note = otherRef + " left its old spot.";
    if (result.isShorter() && !result.fillerID)
        note += (note.empty() ? "" : " ") +
                ("The file is shorter than the clip was (" + secondsText(result.slotLength) +
                 "); the clip now has the file's length. Pass "
                 "--fill to keep the rest as a placeholder.");
    co_return ToolResult::json(json, note);
}

ToolResult detachAudio(ToolArgs const& args, AppState& editor)
{
    Id const id = args[clip];
    editableClip(editor, id);
    DetachedAudio const detached = accepted(editor.detachAudio(id));
    return ToolResult::json({{"clip", clipJSON(editor.project(), id)},
                             {"sound", clipJSON(editor.project(), detached.clipID)}});
}

Task<ToolResult> checkSource(ToolArgs args, AppState& editor)
{
    co_await editor.refreshAssets();
    co_return co_await replaceClip(std::move(args), editor);
}

} // namespace

std::vector<Tool> clipChangingTools(EditorTools tools)
{
    AppState& editor = tools.editor;
    return {
        {
            .name = "clip_set",
            .description =
                "Adjust a clip: level (0-1.5), picture scale (1 = fit), offset (fractions "
                "of the canvas, +y down), crop (fractions per side, max 0.45), or a "
                "placeholder's name.",
            .params = {clip, volume, scale, offsetX, offsetY, cropLeft, cropRight, cropTop,
                       cropBottom, name},
            .action = [&editor](ToolArgs args) { return setClip(args, editor); },
        },
        {
            .name = "clip_trim",
            .description =
                "Move a clip's edges. start/end are timeline times (the source follows); "
                "in/out are source times (the timeline start stays). On a magnetic track "
                "the clips after it ripple.",
            .params = {clip, start, end, in, out},
            .action = [&editor](ToolArgs args) { return trimClip(args, editor); },
        },
        {
            .name = "clip_move",
            .description = "Move a clip to a time, optionally onto another track of the same kind. "
                           "On a magnetic track this reorders; on a free track it lands at the "
                           "nearest spot that fits.",
            .params = {clip, moveTo, destination},
            .action = [&editor](ToolArgs args) { return moveClip(args, editor); },
        },
        {
            .name = "clip_slip",
            .description = "Slide which part of the file a clip plays, keeping its spot and length "
                           "on the timeline (a slip). --to is the new source in point; --by shifts "
                           "it.",
            .params = {clip, slipTo, slipBy},
            .action = [&editor](ToolArgs args) { return slipClip(args, editor); },
        },
        {
            .name = "clip_replace",
            .description =
                "Swap what is behind a clip or placeholder, keeping its spot and length: "
                "a file (from its start) with `--asset` or `--path`, or another clip from "
                "the timeline with `--with` (that clip leaves its old spot and brings its "
                "own in/out, level and placement). A shorter source keeps its own length "
                "unless `--fill` puts a placeholder over the rest.",
            .params = {replaced, asset, path, with, fill},
            .action = [&editor](ToolArgs args) { return checkSource(std::move(args), editor); },
        },
        {
            .name = "clip_detach_audio",
            .description = "Lay a video clip's sound on an audio track of its own and silence the "
                           "clip.",
            .params = {clip},
            .action = [&editor](ToolArgs args) { return detachAudio(args, editor); },
        },
        {
            .name = "clip_copy",
            .description = "Copy a clip, for clip-paste.",
            .params = {clip},
            .action =
                [&editor](ToolArgs args) {
                    Id const id = args[clip];
                    editor.copyClips(std::span(&id, 1));
                    return ToolResult::json({{"copied", clipJSON(editor.project(), id)}});
                },
        },
        {
            .name = "clip_paste",
            .description =
                "Paste the copied clip at the playhead (see seek), on its kind of track.",
            .params = {},
            .action =
                [&editor](ToolArgs) {
                    requireProject(editor);
                    double const playhead = editor.currentTime();
                    PlacedClips const pasted = accepted(editor.paste());
                    return clipResult(editor, pasted.clipIDs.front(), playhead);
                },
        },
    };
}

} // namespace framewright
