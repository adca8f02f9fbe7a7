#include "cli/tools/json_views.h"

#include "cli/references.h"
#include "cli/values.h"
#include "model/stored_fields.h"

#include <cmath>

namespace framewright {

using Json = nlohmann::json;

double rounded(double number)
{
    return std::round(number * 1e6) / 1e6;
}

namespace {

Json transformJSON(ClipTransform const& transform)
{
    // Defaults are omitted: most clips are not transformed.
    Json json = Json::object();
    std::apply(
        [&](auto const&... field) {
            auto const add = [&](auto const& each) {
                double const value = transform.*each.member;
                if (value != ClipTransform{}.*each.member)
                    json[each.key] = rounded(value);
            };
            (add(field), ...);
        },
        Stored<ClipTransform>::fields);
    return json;
}

Json textJSON(TextOverlay const& text)
{
    CaptionStyle const style = normalized(text.style).style; // As drawn.
    Json json = {{"words", text.text},
                 {"x", rounded(text.x)},
                 {"y", rounded(text.y)},
                 {"look", style.name},
                 {"font", style.fontName},
                 {"size", rounded(style.fontSize)},
                 {"color", formatColor(style.textColor)}};
    if (text.scale != 1)
        json["scale"] = rounded(text.scale);
    if (std::string const effects = style.featureSummary(); !effects.empty())
        json["effects"] = effects;
    return json;
}

} // namespace

Json clipJSON(Project const& project, Track const& track, Clip const& clip)
{
    Json json = {
        {"ref", clipRef(project, track, clip)}, {"id", clip.id.text()},
        {"start", rounded(clip.timelineStart)}, {"end", rounded(clip.end())},
        {"duration", rounded(clip.length())},
    };
    if (clip.isText()) {
        if (clip.text)
            json["text"] = textJSON(**clip.text);
        return json;
    }
    json["volume"] = rounded(clip.volume);
    if (Json transform = transformJSON(clip.transform); !transform.empty())
        json["transform"] = std::move(transform);
    if (clip.isPlaceholder()) {
        json["placeholder"] = clip.placeholderName.value_or("");
        if (clip.placeholderNote)
            json["note"] = *clip.placeholderNote;
        return json;
    }
    json["in"] = rounded(clip.sourceStart);
    json["out"] = rounded(clip.sourceEnd);
    MediaAsset const* const asset = project.asset(clip.assetID);
    json["asset"] = asset ? asset->displayName : clip.assetID.text();
    return json;
}

Json clipJSON(Project const& project, Id const& clipID)
{
    auto const place = findClip(project, clipID);
    return place ? clipJSON(project, *place->track, *place->clip) : Json();
}

Json styleJSON(CaptionStyle const& style)
{
    Json json = {{"name", style.name},
                 {"id", style.id.text()},
                 {"font", style.fontName},
                 {"size", rounded(style.fontSize)},
                 {"color", formatColor(style.textColor)},
                 {"uppercase", style.uppercase},
                 {"spacing", rounded(style.letterSpacing)},
                 {"maxWidth", rounded(style.maxWidthFraction)},
                 {"effects", style.featureSummary()}};
    if (style.backgroundEnabled)
        json["box"] = {{"color", formatColor(style.backgroundColor)},
                       {"radius", rounded(style.cornerRadius)},
                       {"padding", rounded(style.padding)}};
    if (style.shadowEnabled)
        json["shadow"] = {{"opacity", rounded(style.shadowOpacity)},
                          {"radius", rounded(style.shadowRadius)}};
    if (style.outlineEnabled)
        json["outline"] = {{"color", formatColor(style.strokeColor)},
                           {"width", rounded(style.strokeWidth)}};
    return json;
}

Json trackSummaryJSON(Project const& project, Track const& track)
{
    Json json = {
        {"ref", trackRef(project, track)},
        {"id", track.id.text()},
        {"kind", storedWord(track.kind)},
        {"name", track.name},
        {"magnetic", track.isMagnetic},
        {"locked", track.isLocked},
        {"clips", track.clips->size()},
        {"end", rounded(track.subtitles ? (*track.subtitles)->end() : track.end())},
    };
    if (track.kind != TrackKind::audio)
        json["hidden"] = track.isHidden;
    if (track.kind == TrackKind::video)
        json["opacity"] = rounded(track.opacity);
    if (track.kind == TrackKind::video || track.kind == TrackKind::audio) {
        json["muted"] = track.isMuted;
        json["solo"] = track.isSolo;
        json["volume"] = rounded(track.volume);
    }
    if (track.kind == TrackKind::audio)
        json["ducks"] = track.ducks;
    if (track.kind == TrackKind::subtitles) {
        json.erase("clips");
        json["bars"] = track.subtitles ? (*track.subtitles)->bars.size() : 0;
    }
    return json;
}

Json trackJSON(Project const& project, Track const& track)
{
    Json json = trackSummaryJSON(project, track);
    if (track.kind == TrackKind::subtitles)
        return json;
    Json clips = Json::array();
    for (Clip const& clip : *track.clips)
        clips.push_back(clipJSON(project, track, clip));
    json["clips"] = std::move(clips);
    return json;
}

Json timelineJSON(AppState const& editor)
{
    Project const& project = editor.project();
    Json tracks = Json::array();
    for (Track const& track : project.tracks)
        tracks.push_back(trackJSON(project, track));
    return {{"project", editor.files().projectName()},
            {"canvas", ratioName(project.aspect)},
            {"duration", rounded(project.videoDuration())},
            {"playhead", rounded(editor.selection().playhead())},
            {"tracks", std::move(tracks)}};
}

Json assetJSON(AppState const& editor, MediaAsset const& asset)
{
    Json json = {{"name", asset.displayName},
                 {"id", asset.id.text()},
                 {"kind", storedWord(asset.kind)},
                 {"duration", rounded(asset.duration)},
                 {"path", validUtf8(asset.url.path)}};
    if (LoadedAsset const* const loaded = editor.media().store().find(asset.id)) {
        if (loaded->hasVideo) {
            json["width"] = std::lround(loaded->displaySize().width);
            json["height"] = std::lround(loaded->displaySize().height);
            json["hdr"] = loaded->isHDR;
        }
        json["sound"] = loaded->hasAudio;
        if (loaded->frameRate > 0)
            json["fps"] = rounded(loaded->frameRate);
    }
    if (auto const problem = editor.media().problem(asset.id))
        json["missing"] = validUtf8(*problem);
    return json;
}

Json mediaInfoJSON(MediaInfo const& info)
{
    Json json = {{"kind", storedWord(info.kind)}, {"duration", rounded(info.duration)}};
    if (info.hasVideo) {
        json["width"] = info.displayWidth();
        json["height"] = info.displayHeight();
        json["rotation"] = 90 * info.orientation.quarterTurns;
        json["hdr"] = info.isHDR;
        json["videoCodec"] = info.videoCodec;
        if (info.frameRate > 0)
            json["fps"] = rounded(info.frameRate);
    }
    json["sound"] = info.hasAudio;
    if (info.hasAudio) {
        json["channels"] = info.channels;
        json["sampleRate"] = info.sampleRate;
        json["audioCodec"] = info.audioCodec;
    }
    return json;
}

Json missingMediaJSON(RenderedProject const& rendered)
{
    Json missing = Json::array();
    Project const& project = rendered.project;
    for (Track const& track : project.tracks) {
        for (Clip const& clip : *track.clips) {
            auto const problem = rendered.mediaProblems.find(clip.assetID);
            if (problem != rendered.mediaProblems.end())
                missing.push_back({{"ref", clipRef(project, track, clip)},
                                   {"id", clip.id.text()},
                                   {"why", validUtf8(problem->second)}});
        }
    }
    return missing;
}

Json missingMediaJSON(AppState const& editor)
{
    return missingMediaJSON(RenderedProject{editor.project(), editor.media().problems()});
}

} // namespace framewright
