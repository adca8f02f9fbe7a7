#include "model/clip_settings.h"

#include "model/clip_lookup.h"
#include "model/edit_limits.h"

#include <cmath>

namespace framewright {

namespace {

/// The edges of a crop, by the names its refusals use.
struct CropSide {
    char const* name;
    double ClipTransform::*side;
};

constexpr CropSide cropSides[] = {
    {"cropLeft", &ClipTransform::cropLeft},
    {"cropRight", &ClipTransform::cropRight},
    {"cropTop", &ClipTransform::cropTop},
    {"cropBottom", &ClipTransform::cropBottom},
};

std::optional<Refusal> transformRefusal(ClipTransform const& transform)
{
    if (!(transform.scale > 0 && transform.scale <= largestScale))
        return Refusal{"scale must be above 0 and at most 100."};
    if (!(std::abs(transform.offsetX) <= largestOffset))
        return Refusal{"offsetX is -100 to 100."};
    if (!(std::abs(transform.offsetY) <= largestOffset))
        return Refusal{"offsetY is -100 to 100."};
    for (CropSide const& crop : cropSides) {
        double const part = transform.*crop.side;
        if (!(part >= 0 && part <= deepestCrop))
            return Refusal{std::string(crop.name) + " is 0 to 0.45."};
    }
    return std::nullopt;
}

} // namespace

Outcome<Project> updateClip(Project project, Id const& clipID,
                            std::function<void(Clip&)> const& change)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return Refusal{spot.refusal()};
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
        return Refusal{spot.refusal()};
    if (spot->clip().isText())
        return Refusal{"A text has no level."};
    if (!(volume >= 0 && volume <= highestVolume))
        return Refusal{"volume is 0 to 1.5."};
    spot->edit().volume = volume;
    return project;
}

Outcome<Project> setClipTransform(Project project, Id const& clipID, ClipTransform const& transform)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return Refusal{spot.refusal()};
    if (spot->track->kind != TrackKind::video)
        return Refusal{"Scale, offset and crop apply to clips on video tracks."};
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
        return Refusal{spot.refusal()};
    if (!spot->clip().isPlaceholder())
        return Refusal{"Only placeholders can be renamed."};
    if (name.empty())
        return Refusal{"A placeholder needs a name."};
    spot->edit().placeholderName = name;
    return project;
}

Outcome<Project> setPlaceholderNote(Project project, Id const& clipID,
                                    std::optional<std::string> const& note)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return Refusal{spot.refusal()};
    if (!spot->clip().isPlaceholder())
        return Refusal{"Only placeholders have a note."};
    spot->edit().placeholderNote = note;
    return project;
}

} // namespace framewright
