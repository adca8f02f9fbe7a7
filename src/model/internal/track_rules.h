#pragma once

#include "model/time_range.h"
#include "model/track.h"

#include <cstddef>
#include <optional>

namespace framewright {

/// Where a clip of `length` can start on a free track, as near to `near` as there is room.
///
/// Gaps run between the clips, from 0 up to `limit`, or unbounded. A gap too short by no more
/// than timeTolerance still holds it. Of two starts equally near the earlier gap's wins. Nothing
/// when no gap holds it, or when the nearest start would end past the limit.
///
/// The clip `excluding` counts as absent: a clip that moves does not block itself.
std::optional<double> freeStart(Track const& track, double length, double near,
                                std::optional<Id> const& excluding = std::nullopt,
                                std::optional<double> limit = std::nullopt);

/// What the clip at `index` of a free track may span without overlapping its neighbours: from the
/// end of those before it to the start of those after it; unbounded after the last one.
TimeRange freeRange(Track const& track, std::size_t index);

/// Where in the list of a magnetic track a clip placed at `time` goes: before the first clip with a
/// later middle, else at the end.
std::size_t insertionIndex(Track const& track, double time);

/// Puts the clips of an edited track in order: packed edge to edge from 0 on a magnetic track, in
/// the order of the list; sorted by start on a free one. A track in order is not copied.
void normalize(Track& track);

/// The track's clips, writable, with room for `more`, so that adding them needs no second copy.
std::vector<Clip>& editableClips(Track& track, std::size_t more = 0);

/// Puts clips on a track as one group, its first clip as near to `time` as there is room, and
/// returns where that landed. On a free track the group keeps its spacing and takes the nearest gap
/// that holds all of it; on a magnetic one its clips go in side by side.
///
/// The group is in time order and not empty; overlapping clips in it are pushed apart. Nothing, and
/// the track unchanged, when there is no room before latestTime.
std::optional<double> insertGroup(Track& track, std::vector<Clip> group, double time);

/// The same, on a magnetic track, at a place in its list.
std::optional<double> insertGroupAt(Track& track, std::vector<Clip> group, std::size_t index);

/// Moves the clip at `index` of a track to the nearest place for it to start at `time`: on a free
/// track where its length fits, on a magnetic one between others, which close up first. Returns
/// where it landed; nothing, and the track unchanged, when there is no room before latestTime.
std::optional<double> moveWithin(Track& track, std::size_t index, double time);

} // namespace framewright
