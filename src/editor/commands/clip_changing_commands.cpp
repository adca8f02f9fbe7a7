#include "editor/commands/clip_changing_commands.h"

#include "editor/commands/internal/audio_rule.h"
#include "editor/commands/internal/carry_out.h"
#include "model/clip_lookup.h"
#include "model/clip_settings.h"
#include "model/edit_limits.h"

#include <cmath>

namespace framewright {

namespace {

std::string stepName(ClipChanges const& changes)
{
    if (changes.volume.has_value() + !changes.transform.empty() +
            changes.placeholderName.has_value() >
        1)
        return "Adjust Clip";
    if (changes.volume)
        return "Change Level";
    return changes.placeholderName ? "Rename Placeholder" : "Transform Clip";
}

/// Applies the next change to the result of the previous one, unless that was refused.
template <class Change>
void andThen(Outcome<Project>& project, Change const& change)
{
    if (project)
        project = change(std::move(*project));
}

} // namespace

Outcome<Project> changeClip(Editing editing, Id const& clipID, ClipChanges const& changes)
{
    Project before = editing.project();
    auto const spot = editableClip(before, clipID);
    if (!spot)
        return spot.refusal();
    if (spot->clip().isText())
        return Refusal{Reason::textHasOwnSettings, Subject::clip(clipID)};
    ClipTransform transform = spot->clip().transform;
    for (auto const& [field, value] : changes.transform)
        transform.*field = value;

    Outcome<Project> project = std::move(before);
    if (changes.volume)
        andThen(project,
                [&](Project p) { return setClipVolume(std::move(p), clipID, *changes.volume); });
    if (!changes.transform.empty())
        andThen(project,
                [&](Project p) { return setClipTransform(std::move(p), clipID, transform); });
    if (changes.placeholderName)
        andThen(project, [&](Project p) {
            return renamePlaceholder(std::move(p), clipID, *changes.placeholderName);
        });
    return carryOut(editing, std::move(project), stepName(changes));
}

Outcome<Trimmed> trimClip(Editing editing, Id const& clipID, Trim const& trim)
{
    return carryOut(editing, trimClip(editing.project(), clipID, trim), "Trim Clip");
}

Outcome<Placed> moveClip(Editing editing, Id const& clipID, double time,
                         std::optional<Id> const& toTrack)
{
    return carryOut(editing, moveClip(editing.project(), clipID, time, toTrack), "Move Clip");
}

Outcome<Nudged> nudgeClips(Editing editing, std::span<Id const> clipIDs, double seconds)
{
    bool const isFrame = std::abs(seconds) < 0.5;
    std::string const step = std::string("Nudge ") + (seconds < 0 ? "Left" : "Right") +
                             (isFrame ? " 1 Frame" : " 1 Second");
    return carryOut(editing, nudgeClips(editing.project(), clipIDs, seconds), step);
}

Outcome<Project> slipClip(Editing editing, Id const& clipID, std::variant<SlipTo, SlipBy> slip)
{
    double sourceStart = 0;
    if (auto const* const to = std::get_if<SlipTo>(&slip))
        sourceStart = to->sourceStart;
    else if (auto const place = findClip(editing.project(), clipID))
        sourceStart = place->clip->sourceStart + std::get<SlipBy>(slip).seconds;
    return carryOut(editing, slipClip(editing.project(), clipID, sourceStart), "Slip Clip");
}

Outcome<DetachedAudio> detachAudio(Editing editing, Id const& clipID)
{
    return carryOut(editing, detachAudio(editing.project(), clipID, Id::random(), Id::random()),
                    "Detach Audio");
}

QCoro::Task<Outcome<Replaced>> replaceClip(Editing editing, Id clipID,
                                           std::variant<MediaSource, OtherClip> with, Fill fill)
{
    Project project = editing.project();
    auto spot = editableClip(project, clipID);
    if (!spot)
        co_return spot.refusal();
    if (spot->clip().isText())
        co_return Refusal{Reason::textCarriesNoFile, Subject::clip(clipID)};

    Replacement source;
    if (auto const* const media = std::get_if<MediaSource>(&with)) {
        auto const file = co_await probeSource(editing, *media);
        if (!file)
            co_return file.refusal();
        if (!editing.state.isOpen())
            co_return Refusal{Reason::noProject};
        project = file->addedTo(editing.project());
        spot = editableClip(project, clipID);
        if (!spot)
            co_return spot.refusal();
        source = {Replacement::From::file, file->asset.id};
        if (auto const refusal = audioRefusal(*file, *spot->track))
            co_return *refusal;
        editing.state.media().remember(*file);
    } else {
        source = {Replacement::From::timeline, std::get<OtherClip>(with).clipID};
    }
    std::string const step = spot->clip().isPlaceholder() ? "Replace Placeholder" : "Replace Clip";
    co_return carryOut(editing,
                       fill == Fill::withPlaceholder
                           ? replaceClipReturningFiller(project, clipID, source, Id::random())
                           : replaceClip(project, clipID, source),
                       step);
}

} // namespace framewright
