// Commands that put clips on the timeline and take them off.

#include "cli/references.h"
#include "cli/tools/clip_results.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/values.h"
#include "model/time_rules.h"

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

/// The file a command is to use: an asset of the project, or one from a path.
Task<std::optional<AppState::Imported>> sourceOf(ToolArgs args, AppState& editor)
{
    if (auto const id = args.find(asset)) {
        co_await editor.refreshAssets();
        if (auto const problem = editor.assetProblem(*id))
            throw ToolError(*problem);
        if (auto known = editor.knownMedia(*id))
            co_return known;
        throw ToolError("The asset was removed, or the project closed, meanwhile.");
    }
    if (auto const file = args.find(path))
        co_return co_await editor.inspect(*file);
    co_return std::nullopt;
}

void checkKind(Project const& project, Track const& onto, AppState::Imported const& source)
{
    std::string const& fileName = source.asset.displayName;
    switch (onto.kind) {
    case TrackKind::text:
        throw ToolError("Text clips live on text tracks and media clips on video or audio tracks.");
    case TrackKind::subtitles:
        throw ToolError(trackTitle(project, onto) + " holds subtitle bars, not clips.");
    case TrackKind::video:
        if (source.asset.kind == MediaKind::audio)
            throw ToolError(fileName + " is audio; it cannot go on a video track.");
        break;
    case TrackKind::audio:
        if (source.asset.kind == MediaKind::image)
            throw ToolError("A photo cannot go on an audio track.");
        if (!source.loaded.hasAudio)
            throw ToolError(fileName + " has no sound; it cannot go on an audio track.");
        break;
    }
}

/// The stretch of the file that is asked for, checked against the file's length.
Clip clipOf(ToolArgs const& args, MediaAsset const& source)
{
    bool const isPhoto = source.kind == MediaKind::image;
    double const fileEnd = isPhoto ? longestPhotoLength : source.duration;
    auto const within = [&](double time) { return time >= 0 && time <= fileEnd + timeTolerance; };

    Clip made;
    made.id = Id::random();
    made.assetID = source.id;
    made.sourceStart = args.get(in, 0);
    if (!within(made.sourceStart) || made.sourceStart > fileEnd - timeTolerance)
        throw ToolError("in must be within the file (" + rangeText({0, fileEnd}) + ").");
    double const wholeEnd = isPhoto ? made.sourceStart + photoLength : fileEnd;
    made.sourceEnd =
        args.has(duration) ? made.sourceStart + args[duration] : args.get(out, wholeEnd);
    if (args.has(duration) && args.has(out))
        throw ToolError("Give out or duration, not both.");
    if (isTooShort(made.length()))
        throw ToolError("The clip would be shorter than 0.1 s.");
    if (!within(made.sourceEnd)) {
        throw ToolError(isPhoto ? "Photos become 3-second clips (stretchable to 60 s)."
                                : "The source only runs " + rangeText({0, fileEnd}) + ".");
    }
    made.sourceEnd = std::min(made.sourceEnd, fileEnd);
    return made;
}

Task<ToolResult> addClip(ToolArgs args, AppState& editor)
{
    Id const trackID = args[track];
    requireUnlocked(*editor.project().track(trackID));
    std::optional<AppState::Imported> const source = co_await sourceOf(args, editor);
    if (!source)
        throw ToolError("Give an asset name or a path.");

    // Looking into the file took a while; the track may have changed or gone.
    Id const onto = args[track];
    Track const& destination = *editor.project().track(onto);
    requireUnlocked(destination);
    checkKind(editor.project(), destination, *source);
    Clip const made = clipOf(args, source->asset);
    auto const wanted = args.time(at, destination.end());
    Placed const placed = accepted(
        editor.addClip(editor.withAsset(*source), made, onto, wanted.value_or(destination.end())));
    co_return clipResult(editor, placed.clipID, wanted);
}

ToolResult addPlaceholder(ToolArgs const& args, AppState& editor)
{
    requireProject(editor);
    NewPlaceholder placeholder;
    placeholder.id = Id::random();
    placeholder.name = args[name];
    placeholder.length = args.get(slotDuration, 3);
    placeholder.trackID = args.find(slotTrack);
    double end = editor.project().videoDuration();
    if (placeholder.trackID) {
        Track const& onto = *editor.project().track(*placeholder.trackID);
        if (onto.kind != TrackKind::video && onto.kind != TrackKind::audio)
            throw ToolError("Placeholders go on video or audio tracks. " +
                            trackTitle(editor.project(), onto) + " is a " +
                            (onto.kind == TrackKind::text ? "text" : "subtitles") +
                            " track; use text-add or the caption commands there.");
        requireUnlocked(onto);
        end = onto.end();
    }
    placeholder.time = args.time(slotAt, end);
    Placed const placed = accepted(editor.addPlaceholder(placeholder));
    return clipResult(editor, placed.clipID, placeholder.time);
}

ToolResult splitClip(ToolArgs const& args, AppState& editor)
{
    Id const id = args[clip];
    ClipPlace const place = editableClip(editor, id);
    double const time = *args.time(cutAt, place.clip->end());
    if (!canSplit(*place.clip, time))
        throw ToolError(secondsText(time) + " is not inside the clip (" +
                        rangeText(place.clip->range()) + ") with 0.1 s to spare on each side.");
    SplitClip const halves = accepted(editor.splitClip(id, std::nullopt, time));
    return ToolResult::json({{"clips",
                              {clipJSON(editor.project(), halves.firstID),
                               clipJSON(editor.project(), halves.secondID)}}});
}

ToolResult removeClip(ToolArgs const& args, AppState& editor)
{
    Id const id = args[clip];
    ClipPlace const place = editableClip(editor, id);
    Json const removed = clipJSON(editor.project(), *place.track, *place.clip);
    Removed const result = accepted(editor.removeClips(std::span(&id, 1)));
    return ToolResult::json({{"removed", removed}},
                            result.closedGap ? "Later clips closed the gap." : "");
}

ToolResult duplicateClip(ToolArgs const& args, AppState& editor)
{
    ItemRef::Value const original = args[item];
    if (original.what == ItemRef::What::bar)
        throw ToolError("Bar not duplicated. Subtitle bars can't be copied yet.");
    ClipPlace const place = editableClip(editor, original.id);
    double const wanted = place.clip->end();
    PlacedClips const copies =
        accepted(editor.duplicateClips(std::span(&original.id, 1)), "Clip not duplicated.");
    return clipResult(editor, copies.clipIDs.front(), wanted);
}

} // namespace

std::vector<Tool> clipTools(EditorTools tools)
{
    AppState& editor = tools.editor;
    return {
        {
            .name = "clip_add",
            .description = "Put a piece of a media file on a video or audio track. Give an asset "
                           "name (see media) or a path to import. Defaults: whole file (photos 3 "
                           "s), appended at the end of the track.",
            .params = {track, asset, path, at, in, out, duration},
            .action = [&editor](ToolArgs args) { return addClip(std::move(args), editor); },
        },
        {
            .name = "placeholder_add",
            .description = "Add a named stand-in (a black plate on video, silence on audio) for "
                           "footage that does not exist yet. The user can drop a file on it later.",
            .params = {name, slotTrack, slotDuration, slotAt},
            .action = [&editor](ToolArgs args) { return addPlaceholder(args, editor); },
        },
        {
            .name = "clip_split",
            .description = "Cut a clip in two at a timeline time. Returns both halves.",
            .params = {clip, cutAt},
            .action = [&editor](ToolArgs args) { return splitClip(args, editor); },
        },
        {
            .name = "clip_remove",
            .description = "Delete a clip. On a magnetic track the clips after it close the gap.",
            .params = {clip},
            .action = [&editor](ToolArgs args) { return removeClip(args, editor); },
        },
        {
            .name = "clip_duplicate",
            .description = "Copy a clip right after itself (a subtitle bar too, with an s-ref).",
            .params = {item},
            .action = [&editor](ToolArgs args) { return duplicateClip(args, editor); },
        },
    };
}

} // namespace framewright
