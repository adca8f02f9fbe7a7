#include "model/clip_trimming.h"

#include "model/clip_lookup.h"
#include "model/edit_limits.h"
#include "model/internal/track_rules.h"
#include "model/time_rules.h"

#include <algorithm>

namespace framewright {

namespace {

/// The clip to cut: the preferred one when it is under the time, else the fallback track's there.
std::optional<ClipSpot> clipToSplit(Project& project, std::optional<Id> const& preferring,
                                    std::optional<Id> const& fallbackTrack, double time)
{
    auto const spotWhere = [](Track& track, auto isWanted) -> std::optional<ClipSpot> {
        auto const found = std::ranges::find_if(*track.clips, isWanted);
        if (found == track.clips->end())
            return std::nullopt;
        return ClipSpot{&track, std::size_t(found - track.clips->begin())};
    };
    if (preferring) {
        for (Track& track : project.tracks) {
            auto const spot = spotWhere(track, [&](Clip const& clip) {
                return clip.id == *preferring && clip.covers(time);
            });
            if (spot)
                return spot;
        }
    }
    Track* const fallback = fallbackTrack ? project.track(*fallbackTrack) : nullptr;
    if (!fallback)
        return std::nullopt;
    return spotWhere(*fallback, [&](Clip const& clip) { return clip.covers(time); });
}

/// Why this clip can't be cut at this time.
Refusal refusedSplit(Project const& project, Id const& clipID, double time)
{
    auto const place = findClip(project, clipID);
    if (!place)
        return {Reason::clipGone, Subject::clip(clipID)};
    if (place->track->isLocked)
        return lockedRefusal(*place->track);
    return {Reason::splitOutsideClip, Subject::clip(clipID), place->clip->range(), time};
}

/// The clip with its new edges.
Clip trimmed(Clip clip, Trim const& trim)
{
    double const oldStart = clip.timelineStart;
    double const oldIn = clip.sourceStart;
    clip.timelineStart = trim.start.value_or(oldStart);
    clip.sourceStart = trim.in.value_or(oldIn + (clip.timelineStart - oldStart));
    if (trim.out)
        clip.sourceEnd = *trim.out;
    else if (trim.end)
        clip.sourceEnd = clip.sourceStart + (*trim.end - clip.timelineStart);
    return clip;
}

/// A clip without a file has no source start to reach: extending its head shifts the range instead.
void shiftToSourceStart(Clip& clip)
{
    if (clip.sourceStart < 0) {
        clip.sourceEnd -= clip.sourceStart;
        clip.sourceStart = 0;
    }
}

/// Cuts what exceeds the file within the tolerance, which repeated edits would otherwise add up.
void snapToFile(Clip& clip, double runs)
{
    if (clip.sourceStart < 0 && clip.sourceStart >= -timeTolerance)
        clip.sourceStart = 0;
    if (clip.sourceEnd > runs && clip.sourceEnd <= runs + timeTolerance)
        clip.sourceEnd = runs;
}

std::optional<Refusal> placeRefusal(Track const& track, std::size_t index, Clip const& clip)
{
    Clip const& before = (*track.clips)[index];
    double const later =
        track.isMagnetic ? clip.length() - before.length() : clip.end() - before.end();
    double const end = track.isMagnetic ? track.end() + later : clip.end();
    if (later > 0 && !(end <= latestTime))
        return pastTimelineEnd();
    if (track.isMagnetic)
        return std::nullopt;
    TimeRange const free = freeRange(track, index);
    if (clip.timelineStart < free.start - timeTolerance || clip.end() > free.end + timeTolerance)
        return Refusal{Reason::overlapsNeighbor, Subject::clip(clip.id), free};
    return std::nullopt;
}

} // namespace

bool canSplit(Clip const& clip, double time)
{
    double const offset = time - clip.timelineStart;
    return !isTooShort(offset) && !isTooShort(clip.length() - offset);
}

Outcome<SplitClip> split(Project project, std::optional<Id> const& preferring,
                         std::optional<Id> const& fallbackTrack, double time, Id const& newID)
{
    auto const spot = clipToSplit(project, preferring, fallbackTrack, time);
    if (!spot)
        return preferring ? refusedSplit(project, *preferring, time)
                          : Refusal{Reason::nothingToSplit};
    if (spot->track->isLocked || !canSplit(spot->clip(), time))
        return refusedSplit(project, spot->clip().id, time);

    std::vector<Clip>& clips = editableClips(*spot->track, 1);
    Clip& first = clips[spot->index];
    Clip second = first;
    double const offset = time - first.timelineStart;
    first.sourceEnd = first.sourceStart + offset;
    second.id = newID;
    second.sourceStart += offset;
    second.timelineStart += offset;
    Id const firstID = first.id;
    clips.insert(clips.begin() + std::ptrdiff_t(spot->index) + 1, std::move(second));
    return SplitClip{std::move(project), firstID, newID};
}

Outcome<Trimmed> trimClip(Project project, Id const& clipID, Trim const& trim)
{
    if (!trim.start && !trim.end && !trim.in && !trim.out)
        return Refusal{Reason::noEdgeGiven};
    if (trim.end && trim.out)
        return Refusal{Reason::endGivenTwice};
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return spot.refusal();
    Clip const& before = spot->clip();
    Track& track = *spot->track;

    Clip after = trimmed(before, trim);
    if (!(after.timelineStart >= -timeTolerance))
        return Refusal{Reason::startsBeforeZero, Subject::clip(clipID)};
    after.timelineStart = std::max(0.0, after.timelineStart);
    double const headTrimmedBy = after.sourceStart - before.sourceStart;
    auto const runs = sourceLength(project, before);
    if (!trim.in && !runs)
        shiftToSourceStart(after);
    if (runs)
        snapToFile(after, std::max(*runs, before.sourceEnd));
    if (auto refusal = rangeRefusal(project, after, before.sourceEnd))
        return *refusal;
    if (auto refusal = placeRefusal(track, spot->index, after))
        return *refusal;
    double const longest = std::max(longestTextLength, before.length());
    if (after.isText() && after.length() > longest + timeTolerance)
        return Refusal{.reason = Reason::textTooLong,
                       .subject = Subject::clip(clipID),
                       .value = longestTextLength};

    spot->edit() = after;
    normalize(track);
    Clip const& placed = track.isMagnetic ? spot->clip() : after;
    Trimmed result{{}, placed.timelineStart, placed.end(), std::nullopt};
    if (track.isMagnetic && trim.start)
        result.headTrimmedBy = headTrimmedBy;
    result.project = std::move(project);
    return result;
}

Outcome<Project> slipClip(Project project, Id const& clipID, double sourceStart)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return spot.refusal();
    Clip const& clip = spot->clip();
    if (!clip.hasMedia())
        return Refusal{Reason::onlyMediaSlips, Subject::clip(clipID)};
    auto const runs = sourceLength(project, clip);
    if (!runs)
        return Refusal{Reason::photoNeedsNoSlip, Subject::clip(clipID)};

    double const last = std::max(*runs, clip.sourceEnd);
    double const latestIn = last - clip.length();
    if (!(sourceStart >= -timeTolerance && sourceStart <= latestIn + timeTolerance))
        return Refusal{Reason::slipsPastSource, Subject::clip(clipID), TimeRange{0, latestIn},
                       last};
    Clip& edited = spot->edit();
    double const length = edited.length();
    edited.sourceStart = std::clamp(sourceStart, 0.0, std::max(0.0, latestIn));
    edited.sourceEnd = edited.sourceStart + length;
    return project;
}

} // namespace framewright
