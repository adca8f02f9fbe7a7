// Commands that put clips on the timeline and take them off.

#include "cli/references.h"
#include "cli/tools/clip_results.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "editor/commands/clip_placing_commands.h"

namespace framewright {

using Json = nlohmann::json;

namespace {

Param<TrackRef> const track{
    "track", "v1, v2, a1… (a video track for video/photos, an audio track for sound)."};
Param<AssetName> const asset{"asset", "An imported asset's name or id.", optionalParam};
Param<FilePath> const path{"path", "A file to import and use instead of asset.", optionalParam};
Param<Moment> const at{"at", "Timeline time to place the clip at (default: end of the track).",
                       optionalParam};
Param<Number> const in{"in", "Source in point in seconds (default 0).", optionalParam};
Param<Number> const out{"out", "Source out point in seconds (default: end of the file).",
                        optionalParam};
Param<Number> const duration{"duration", "Length in seconds from the in point (instead of out).",
                             optionalParam};

Param<Text> const name{"name", "What will go here, e.g. \"B-roll: coffee pour\"."};
Param<TrackRef> const slotTrack{
    "track", "Video or audio track (default: the first unlocked video track).", optionalParam};
Param<Number> const slotDuration{"duration", "Seconds (default 3).", optionalParam};
Param<Moment> const slotAt{"at", "Where on the timeline (default: end of the track).",
                           optionalParam};

Param<ClipRef> const clip{"clip", "v1:2 or a clip id."};
Param<Moment> const cutAt{"at", "Where to cut; must be inside the clip."};
Param<ItemRef> const item{"clip", "v1:2, s1:3 or an id."};

/// The file that either option names.
MediaSource sourceOf(ToolArgs const& args)
{
    if (auto const id = args.find(asset))
        return *id;
    if (auto const file = args.find(path))
        return *file;
    throw ToolError("Give an asset name or a path.");
}

Task<ToolResult> addClip(ToolArgs args, Editing editing)
{
    ClipToAdd wanted{sourceOf(args), args[track]};
    Track const* const onto = editing.project().track(wanted.trackID);
    wanted.time = args.time(at, onto->end());
    wanted.sourceStart = args.find(in);
    wanted.sourceEnd = args.find(out);
    wanted.length = args.find(duration);
    if (wanted.sourceEnd && wanted.length)
        throw ToolError("Give out or duration, not both.");
    auto const time = wanted.time;
    Placed const placed = accepted(co_await addClip(editing, std::move(wanted)));
    co_return clipResult(editing.state, placed.clipID, time);
}

ToolResult addPlaceholder(ToolArgs const& args, Editing editing)
{
    requireProject(editing.state);
    PlaceholderToAdd wanted{args[name], args.find(slotDuration), args.find(slotTrack)};
    double const end = wanted.trackID ? editing.project().track(*wanted.trackID)->end()
                                      : editing.project().videoDuration();
    wanted.time = args.time(slotAt, end);
    Placed const placed = accepted(addPlaceholder(editing, wanted));
    return clipResult(editing.state, placed.clipID, wanted.time);
}

ToolResult splitClip(ToolArgs const& args, Editing editing)
{
    ClipPlace const place = *findClip(editing.project(), args[clip]);
    double const time = *args.time(cutAt, place.clip->end());
    SplitClip const halves = accepted(splitClip(editing, place.clip->id, time));
    return ToolResult::json({{"clips",
                              {clipJSON(editing.project(), halves.firstID),
                               clipJSON(editing.project(), halves.secondID)}}});
}

ToolResult removeClip(ToolArgs const& args, Editing editing)
{
    Id const id = args[clip];
    Json const removed = clipJSON(editing.project(), id);
    Removed const result = accepted(removeClips(editing, std::span(&id, 1)));
    return ToolResult::json({{"removed", removed}},
                            result.closedGap ? "Later clips closed the gap." : "");
}

ToolResult duplicateClip(ToolArgs const& args, Editing editing)
{
    ItemRef::Value const original = args[item];
    if (original.what == ItemRef::What::bar)
        throw ToolError("Bar not duplicated. Subtitle bars can't be copied yet.");
    double const wanted = findClip(editing.project(), original.id)->clip->end();
    PlacedClips const copies =
        accepted(duplicateClips(editing, std::span(&original.id, 1)), "Clip not duplicated.");
    return clipResult(editing.state, copies.clipIDs.front(), wanted);
}

} // namespace

std::vector<Tool> clipTools(EditorTools tools)
{
    Editing const editing = tools.editing;
    return {
        {
            .name = "clip_add",
            .description = "Put a piece of a media file on a video or audio track. Give an asset "
                           "name (see media) or a path to import. Defaults: whole file (photos 3 "
                           "s), appended at the end of the track.",
            .params = {track, asset, path, at, in, out, duration},
            .action = [editing](ToolArgs args) { return addClip(std::move(args), editing); },
        },
        {
            .name = "placeholder_add",
            .description = "Add a named stand-in (a black plate on video, silence on audio) for "
                           "footage that does not exist yet. The user can drop a file on it later.",
            .params = {name, slotTrack, slotDuration, slotAt},
            .action = [editing](ToolArgs args) { return addPlaceholder(args, editing); },
        },
        {
            .name = "clip_split",
            .description = "Cut a clip in two at a timeline time. Returns both halves.",
            .params = {clip, cutAt},
            .action = [editing](ToolArgs args) { return splitClip(args, editing); },
        },
        {
            .name = "clip_remove",
            .description = "Delete a clip. On a magnetic track the clips after it close the gap.",
            .params = {clip},
            .action = [editing](ToolArgs args) { return removeClip(args, editing); },
        },
        {
            .name = "clip_duplicate",
            .description = "Copy a clip right after itself (a subtitle bar too, with an s-ref).",
            .params = {item},
            .action = [editing](ToolArgs args) { return duplicateClip(args, editing); },
        },
    };
}

} // namespace framewright
