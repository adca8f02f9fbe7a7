// Commands that change clips which are on the timeline already.

#include "cli/references.h"
#include "cli/tools/clip_results.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/values.h"
#include "editor/commands/clip_changing_commands.h"
#include "editor/commands/clip_placing_commands.h"

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

ToolResult setClip(ToolArgs const& args, Editing editing)
{
    Id const id = args[clip];
    ClipChanges changes;
    if (auto const level = args.find(volume))
        changes.volume = static_cast<float>(*level);
    for (TransformOption const& option : transformOptions) {
        if (auto const value = args.find(option.param))
            changes.transform.emplace_back(option.member, *value);
    }
    changes.placeholderName = args.find(name);
    if (changes.isEmpty())
        throw ToolError(
            "Give something to change: volume, scale, offsetX, offsetY, a crop or name.");
    accepted(changeClip(editing, id, changes));
    return clipResult(editing.state, id);
}

/// `seconds`: trimmed from the head; negative when the head was extended.
std::string packedNote(double seconds)
{
    return "Magnetic track: the clip stays packed against its neighbors; its head was trimmed by " +
           secondsText(seconds) + ".";
}

ToolResult trimClip(ToolArgs const& args, Editing editing)
{
    ClipPlace const place = *findClip(editing.project(), args[clip]);
    Id const id = place.clip->id;
    Trim trim;
    trim.start = args.time(start, place.clip->end());
    trim.end = args.time(end, editing.project().videoDuration());
    trim.in = args.find(in);
    trim.out = args.find(out);
    Trimmed const trimmed = accepted(trimClip(editing, id, trim));
    return ToolResult::json({{"clip", clipJSON(editing.project(), id)}},
                            trimmed.headTrimmedBy ? packedNote(*trimmed.headTrimmedBy) : "");
}

ToolResult moveClip(ToolArgs const& args, Editing editing)
{
    ClipPlace const place = *findClip(editing.project(), args[clip]);
    Id const id = place.clip->id;
    std::optional<Id> const onto = args.find(destination);
    Track const& track = onto ? *editing.project().track(*onto) : *place.track;
    double const to = *args.time(moveTo, track.end());
    accepted(moveClip(editing, id, to, onto));
    return clipResult(editing.state, id, to);
}

ToolResult slipClip(ToolArgs const& args, Editing editing)
{
    Id const id = args[clip];
    auto const to = args.find(slipTo);
    auto const by = args.find(slipBy);
    if (to.has_value() == by.has_value())
        throw ToolError("Give --to (a source time) or --by (a shift).");
    if (to)
        accepted(slipClip(editing, id, SlipTo{*to}));
    else
        accepted(slipClip(editing, id, SlipBy{*by}));
    return clipResult(editing.state, id);
}

std::variant<MediaSource, OtherClip> replacementOf(ToolArgs const& args)
{
    if (args.has(with))
        return OtherClip{args[with]};
    if (auto const id = args.find(asset))
        return MediaSource(*id);
    if (auto const file = args.find(path))
        return MediaSource(*file);
    throw ToolError("Give an asset name, a path, or --with a clip.");
}

/// The note on a replacement; `leftSpot` is the other clip's former reference.
std::string replacedNote(Replaced const& result, std::string const& leftSpot)
{
    std::string note;
    if (!leftSpot.empty())
        note = leftSpot + " left its old spot.";
    if (result.isShorter() && !result.fillerID)
        note += (note.empty() ? "" : " ") +
                ("The file is shorter than the clip was (" + secondsText(result.slotLength) +
                 "); the clip now has the file's length. Pass "
                 "--fill to keep the rest as a placeholder.");
    return note;
}

Task<ToolResult> replaceClip(ToolArgs args, Editing editing)
{
    Id const id = args[replaced];
    auto const source = replacementOf(args);
    std::string leftSpot;
    if (auto const* const other = std::get_if<OtherClip>(&source)) {
        ClipPlace const place = *findClip(editing.project(), other->clipID);
        leftSpot = clipRef(editing.project(), *place.track, *place.clip);
    }
    Replaced const result = accepted(co_await replaceClip(
        editing, id, source, args.get(fill, false) ? Fill::withPlaceholder : Fill::leaveRest));

    Json json = {{"clip", clipJSON(editing.project(), result.clipID)}};
    if (result.fillerID)
        json["filler"] = clipJSON(editing.project(), *result.fillerID);
    co_return ToolResult::json(json, replacedNote(result, leftSpot));
}

ToolResult detachAudio(ToolArgs const& args, Editing editing)
{
    Id const id = args[clip];
    DetachedAudio const detached = accepted(detachAudio(editing, id));
    return ToolResult::json({{"clip", clipJSON(editing.project(), id)},
                             {"sound", clipJSON(editing.project(), detached.clipID)}});
}

ToolResult copyClip(ToolArgs const& args, Editing editing)
{
    Id const id = args[clip];
    accepted(copyClips(editing, std::span(&id, 1)));
    return ToolResult::json({{"copied", clipJSON(editing.project(), id)}});
}

ToolResult pasteClips(Editing editing)
{
    requireProject(editing.state);
    double const playhead = editing.state.selection().playhead();
    PlacedClips const pasted = accepted(paste(editing));
    return clipResult(editing.state, pasted.clipIDs.front(), playhead);
}

} // namespace

std::vector<Tool> clipChangingTools(EditorTools tools)
{
    Editing const editing = tools.editing;
    return {
        {
            .name = "clip_set",
            .description =
                "Adjust a clip: level (0-1.5), picture scale (1 = fit), offset (fractions "
                "of the canvas, +y down), crop (fractions per side, max 0.45), or a "
                "placeholder's name.",
            .params = {clip, volume, scale, offsetX, offsetY, cropLeft, cropRight, cropTop,
                       cropBottom, name},
            .action = [editing](ToolArgs args) { return setClip(args, editing); },
        },
        {
            .name = "clip_trim",
            .description =
                "Move a clip's edges. start/end are timeline times (the source follows); "
                "in/out are source times (the timeline start stays). On a magnetic track "
                "the clips after it ripple.",
            .params = {clip, start, end, in, out},
            .action = [editing](ToolArgs args) { return trimClip(args, editing); },
        },
        {
            .name = "clip_move",
            .description = "Move a clip to a time, optionally onto another track of the same kind. "
                           "On a magnetic track this reorders; on a free track it lands at the "
                           "nearest spot that fits.",
            .params = {clip, moveTo, destination},
            .action = [editing](ToolArgs args) { return moveClip(args, editing); },
        },
        {
            .name = "clip_slip",
            .description = "Slide which part of the file a clip plays, keeping its spot and length "
                           "on the timeline (a slip). --to is the new source in point; --by shifts "
                           "it.",
            .params = {clip, slipTo, slipBy},
            .action = [editing](ToolArgs args) { return slipClip(args, editing); },
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
            .action = [editing](ToolArgs args) { return replaceClip(std::move(args), editing); },
        },
        {
            .name = "clip_detach_audio",
            .description = "Lay a video clip's sound on an audio track of its own and silence the "
                           "clip.",
            .params = {clip},
            .action = [editing](ToolArgs args) { return detachAudio(args, editing); },
        },
        {
            .name = "clip_copy",
            .description = "Copy a clip, for clip-paste.",
            .params = {clip},
            .action = [editing](ToolArgs args) { return copyClip(args, editing); },
        },
        {
            .name = "clip_paste",
            .description =
                "Paste the copied clip at the playhead (see seek), on its kind of track.",
            .params = {},
            .action = [editing](ToolArgs) { return pasteClips(editing); },
        },
    };
}

} // namespace framewright
