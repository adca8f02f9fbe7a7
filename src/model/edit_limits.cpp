#include "model/edit_limits.h"

#include "model/time_rules.h"

#include <algorithm>

namespace framewright {

namespace {

std::optional<Refusal> mediaRefusal(Clip const& clip, MediaAsset const* asset, TrackKind kind)
{
    if (kind == TrackKind::text)
        return Refusal{Reason::textAndMediaApart};
    if (!asset)
        return Refusal{Reason::assetGone, Subject::clip(clip.id)};
    if (kind == TrackKind::audio && asset->kind == MediaKind::image)
        return Refusal{Reason::photoOnAudioTrack, Subject::asset(*asset)};
    if (kind == TrackKind::video && asset->kind == MediaKind::audio)
        return Refusal{Reason::audioOnVideoTrack, Subject::asset(*asset)};
    return std::nullopt;
}

} // namespace

Refusal lockedRefusal(Track const& track)
{
    return {Reason::trackLocked, Subject::track(track.id)};
}

Refusal noRoomRefusal(Track const& track, double time)
{
    return {.reason = Reason::noRoom, .subject = Subject::track(track.id), .value = time};
}

Refusal pastTimelineEnd()
{
    return {.reason = Reason::pastTimelineEnd, .value = latestTime};
}

Refusal outOfRange(Setting setting)
{
    return {Reason::outOfRange, Subject::setting(setting)};
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
        return Refusal{Reason::notForPlaceholders, Subject::track(track.id)};
    }
    if (track.kind == TrackKind::subtitles)
        return Refusal{Reason::barsOnly, Subject::track(track.id)};
    if (!clip.isText())
        return mediaRefusal(clip, project.asset(clip.assetID), track.kind);
    if (track.kind == TrackKind::text)
        return std::nullopt;
    return Refusal{Reason::textAndMediaApart};
}

std::optional<Refusal> rangeRefusal(Project const& project, Clip const& clip, double playedBefore)
{
    if (isTooShort(clip.length()))
        return Refusal{Reason::tooShort};

    auto const runs = sourceLength(project, clip);
    if (runs) {
        double const last = std::max(*runs, playedBefore);
        if (clip.sourceStart < -timeTolerance || clip.sourceEnd > last + timeTolerance)
            return Refusal{Reason::pastSourceEnd, {}, TimeRange{0, last}};
        return std::nullopt;
    }
    if (clip.sourceStart < -timeTolerance)
        return outOfRange(Setting::sourceIn);
    if (clip.hasMedia() && clip.length() > longestPhotoLength + timeTolerance)
        return Refusal{.reason = Reason::photoTooLong, .value = longestPhotoLength};
    if (!(clip.sourceEnd <= latestTime))
        return pastTimelineEnd();
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
