#include "model/edit_limits.h"

#include "model/time_rules.h"

#include <algorithm>

namespace framewright {

namespace {

std::optional<Refusal> mediaRefusal(MediaAsset const* asset, TrackKind kind)
{
    if (kind == TrackKind::text)
        return Refusal{"Text clips live on text tracks and media clips on video or audio tracks."};
    if (!asset)
        return Refusal{"The clip's media file is not part of the project."};
    if (kind == TrackKind::audio && asset->kind == MediaKind::image)
        return Refusal{"A photo cannot go on an audio track."};
    if (kind == TrackKind::video && asset->kind == MediaKind::audio)
        return Refusal{asset->displayName + " is audio; it cannot go on a video track."};
    return std::nullopt;
}

} // namespace

Refusal lockedRefusal(Track const& track)
{
    return {track.name +
            " is locked. Unlock it from its header, panel or context menu to edit it."};
}

Refusal noRoomRefusal(Track const& track, double time)
{
    return {"No room on " + track.name + " near " + secondsText(time) + "."};
}

std::optional<double> sourceLength(Project const& project, Clip const& clip)
{
    if (!clip.hasMedia())
        return std::nullopt;
    MediaAsset const* const asset = project.asset(clip.assetID);
    if (!asset)
        return 0.0;
    if (asset->kind == MediaKind::image)
        return std::nullopt;
    return asset->duration;
}

std::optional<Refusal> kindRefusal(Project const& project, Clip const& clip, Track const& track)
{
    if (clip.isPlaceholder()) {
        if (track.kind == TrackKind::video || track.kind == TrackKind::audio)
            return std::nullopt;
        return Refusal{"Placeholders go on video or audio tracks."};
    }
    if (track.kind == TrackKind::subtitles)
        return Refusal{track.name + " holds subtitle bars, not clips."};
    if (!clip.isText())
        return mediaRefusal(project.asset(clip.assetID), track.kind);
    if (track.kind == TrackKind::text)
        return std::nullopt;
    return Refusal{"Text clips live on text tracks and media clips on video or audio tracks."};
}

std::optional<Refusal> rangeRefusal(Project const& project, Clip const& clip, double playedBefore)
{
    if (isTooShort(clip.length()))
        return Refusal{"The clip would be shorter than " + secondsText(minimumClipLength) + "."};

    auto const runs = sourceLength(project, clip);
    if (runs) {
        double const last = std::max(*runs, playedBefore);
        if (clip.sourceStart < -timeTolerance || clip.sourceEnd > last + timeTolerance)
            return Refusal{"The source only runs " + stretchText(0, last) + "."};
        return std::nullopt;
    }
    if (clip.sourceStart < -timeTolerance)
        return Refusal{"in must be 0 or later."};
    if (clip.hasMedia() && clip.length() > longestPhotoLength + timeTolerance)
        return Refusal{"A photo can be stretched to " + secondsText(longestPhotoLength) +
                       " at most."};
    if (!(clip.sourceEnd <= latestTime))
        return Refusal{"The timeline only goes to " + secondsText(latestTime) + "."};
    return std::nullopt;
}

std::string clipName(Project const& project, Clip const& clip)
{
    if (clip.isPlaceholder())
        return clip.placeholderName.value_or("Placeholder");
    if (clip.isText())
        return clip.text ? (*clip.text)->text : "Text";
    MediaAsset const* const asset = project.asset(clip.assetID);
    return asset ? asset->displayName : "Clip";
}

} // namespace framewright
