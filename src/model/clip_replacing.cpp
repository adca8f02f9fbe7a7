#include "model/clip_replacing.h"

#include "model/clip_lookup.h"
#include "model/edit_limits.h"
#include "model/internal/track_rules.h"
#include "model/time_rules.h"

#include <algorithm>

namespace framewright {

namespace {

std::optional<Refusal> replacementRefusal(MediaAsset const& asset, TrackKind kind)
{
    if (kind == TrackKind::audio && asset.kind == MediaKind::image)
        return Refusal{Reason::photoForAudioClip, Subject::asset(asset)};
    if (kind == TrackKind::video && asset.kind == MediaKind::audio)
        return Refusal{Reason::audioForVideoClip, Subject::asset(asset)};
    return std::nullopt;
}

/// A clip of the whole file with the id, level and placement of `slot`.
Clip wholeFile(MediaAsset const& asset, Clip const& slot)
{
    Clip clip;
    clip.id = slot.id;
    clip.assetID = asset.id;
    clip.sourceEnd = asset.kind == MediaKind::image ? longestPhotoLength : asset.duration;
    clip.volume = slot.volume;
    clip.transform = slot.transform;
    return clip;
}

/// The other clip, which replaces `slot`.
Outcome<ClipSpot> sourceClip(Project& project, Id const& id, Clip const& slot)
{
    if (id == slot.id)
        return Refusal{Reason::replacesItself, Subject::clip(id)};
    auto const spot = editableClip(project, id);
    if (spot && !spot->clip().hasMedia())
        return Refusal{Reason::noFileToBring, Subject::clip(id)};
    return spot;
}

Clip fillerFor(Project const& project, Clip const& slot, double from, Id const& id)
{
    Clip filler;
    filler.id = id;
    filler.assetID = Clip::placeholderAssetID;
    filler.timelineStart = from;
    filler.sourceEnd = slot.end() - from;
    filler.placeholderName = clipName(project, slot);
    filler.placeholderNote = slot.placeholderNote;
    return filler;
}

void takeOut(ClipSpot const& other, ClipSpot& slot)
{
    std::vector<Clip>& clips = other.track->clips.edit();
    clips.erase(clips.begin() + std::ptrdiff_t(other.index));
    if (other.track == slot.track && other.index < slot.index)
        --slot.index;
}

Outcome<Replaced> replace(Project project, Id const& clipID, Replacement const& with,
                          std::optional<Id> const& fillerID)
{
    auto found = editableClip(project, clipID);
    if (!found)
        return found.refusal();
    ClipSpot spot = *found;
    Clip const slot = spot.clip();
    if (slot.isText())
        return Refusal{Reason::textCarriesNoFile, Subject::clip(clipID)};

    std::optional<ClipSpot> other;
    if (with.from == Replacement::From::timeline) {
        auto const source = sourceClip(project, with.id, slot);
        if (!source)
            return source.refusal();
        other = *source;
    }
    MediaAsset const* const asset = project.asset(other ? other->clip().assetID : with.id);
    if (!asset)
        return Refusal{Reason::assetGone};
    if (auto refusal = replacementRefusal(*asset, spot.track->kind))
        return *refusal;

    Clip clip = other ? other->clip() : wholeFile(*asset, slot);
    double const length = std::min(clip.length(), slot.length());
    clip.timelineStart = slot.timelineStart;
    clip.sourceEnd = clip.sourceStart + length;
    if (auto refusal = rangeRefusal(project, clip, clip.sourceEnd))
        return *refusal;
    Replaced result{{}, clip.id, length, slot.length(), std::nullopt};

    std::optional<Clip> filler;
    if (fillerID && !isTooShort(slot.end() - clip.end())) {
        filler = fillerFor(project, slot, clip.end(), *fillerID);
        result.fillerID = fillerID;
    }
    if (other)
        takeOut(*other, spot);
    std::vector<Clip>& clips = editableClips(*spot.track, filler ? 1 : 0);
    clips[spot.index] = std::move(clip);
    if (filler)
        clips.insert(clips.begin() + std::ptrdiff_t(spot.index) + 1, std::move(*filler));
    normalize(*spot.track);
    if (other)
        normalize(*other->track);
    result.project = std::move(project);
    return result;
}

} // namespace

bool Replaced::isShorter() const
{
    return length < slotLength - timeTolerance;
}

Outcome<Replaced> replaceClip(Project project, Id const& clipID, Replacement const& with)
{
    return replace(std::move(project), clipID, with, std::nullopt);
}

Outcome<Replaced> replaceClipReturningFiller(Project project, Id const& clipID,
                                             Replacement const& with, Id const& fillerID)
{
    return replace(std::move(project), clipID, with, fillerID);
}

} // namespace framewright
