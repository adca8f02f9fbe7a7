#include "model/clip_settings.h"

#include "model/clip_lookup.h"
#include "model/edit_limits.h"

#include <cmath>

namespace framewright {

namespace {

struct CropSide {
    Setting setting;
    double ClipTransform::*side;
};

constexpr CropSide cropSides[] = {
    {Setting::cropLeft, &ClipTransform::cropLeft},
    {Setting::cropRight, &ClipTransform::cropRight},
    {Setting::cropTop, &ClipTransform::cropTop},
    {Setting::cropBottom, &ClipTransform::cropBottom},
};

std::optional<Refusal> transformRefusal(ClipTransform const& transform)
{
    if (!(transform.scale > 0 && transform.scale <= largestScale))
        return outOfRange(Setting::scale);
    if (!(std::abs(transform.offsetX) <= largestOffset))
        return outOfRange(Setting::offsetX);
    if (!(std::abs(transform.offsetY) <= largestOffset))
        return outOfRange(Setting::offsetY);
    for (CropSide const& crop : cropSides) {
        double const part = transform.*crop.side;
        if (!(part >= 0 && part <= deepestCrop))
            return outOfRange(crop.setting);
    }
    return std::nullopt;
}

} // namespace

Outcome<Project> updateClip(Project project, Id const& clipID,
                            std::function<void(Clip&)> const& change)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return spot.refusal();
    Clip const before = spot->clip();
    Clip& clip = spot->edit();
    change(clip);
    clip.id = before.id;
    clip.assetID = before.assetID;
    clip.timelineStart = before.timelineStart;
    clip.sourceStart = before.sourceStart;
    clip.sourceEnd = before.sourceEnd;
    return project;
}

Outcome<Project> setClipVolume(Project project, Id const& clipID, float volume)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return spot.refusal();
    if (spot->clip().isText())
        return Refusal{Reason::textHasOwnSettings, Subject::clip(clipID)};
    if (!(volume >= 0 && volume <= highestVolume))
        return outOfRange(Setting::volume);
    spot->edit().volume = volume;
    return project;
}

Outcome<Project> setClipTransform(Project project, Id const& clipID, ClipTransform const& transform)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return spot.refusal();
    if (spot->track->kind != TrackKind::video)
        return Refusal{Reason::onlyVideoIsPlaced, Subject::clip(clipID)};
    if (auto refusal = transformRefusal(transform))
        return *refusal;
    spot->edit().transform = transform;
    return project;
}

Outcome<Project> resetClipTransform(Project project, Id const& clipID)
{
    return setClipTransform(std::move(project), clipID, ClipTransform());
}

Outcome<Project> renamePlaceholder(Project project, Id const& clipID, std::string const& name)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return spot.refusal();
    if (!spot->clip().isPlaceholder())
        return Refusal{Reason::onlyPlaceholdersAreRenamed, Subject::clip(clipID)};
    if (name.empty())
        return Refusal{Reason::placeholderNameEmpty};
    spot->edit().placeholderName = name;
    return project;
}

Outcome<Project> setPlaceholderNote(Project project, Id const& clipID,
                                    std::optional<std::string> const& note)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return spot.refusal();
    if (!spot->clip().isPlaceholder())
        return Refusal{Reason::onlyPlaceholdersHaveNotes, Subject::clip(clipID)};
    spot->edit().placeholderNote = note;
    return project;
}

} // namespace framewright
