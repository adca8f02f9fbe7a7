#include "model/internal/track_rules.h"

#include "model/time_rules.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace framewright {

namespace {

constexpr double unbounded = std::numeric_limits<double>::infinity();

/// The ranges of a free track that no clip covers, in order, passed to `use` one by one.
template <class Use>
void forEachGap(std::vector<Clip> const& sorted, std::optional<Id> const& excluding, double limit,
                Use use)
{
    double cursor = 0;
    for (Clip const& clip : sorted) {
        if (excluding && clip.id == *excluding)
            continue;
        if (cursor < clip.timelineStart)
            use(TimeRange{cursor, clip.timelineStart});
        cursor = std::max(cursor, clip.end());
    }
    use(TimeRange{cursor, limit});
}

bool isPacked(std::vector<Clip> const& clips)
{
    double cursor = 0;
    for (Clip const& clip : clips) {
        if (clip.timelineStart != cursor)
            return false;
        cursor += clip.length();
    }
    return true;
}

/// Moves a group to start at `time`, keeping its spacing but pushing overlapping clips apart.
/// Returns its length.
double spread(std::vector<Clip>& group, double time)
{
    double const shift = time - group.front().timelineStart;
    double cursor = time;
    for (Clip& clip : group) {
        clip.timelineStart = std::max(clip.timelineStart + shift, cursor);
        cursor = clip.end();
    }
    return cursor - time;
}

/// The index of a moved clip on a magnetic track among the others, once they have closed up.
std::size_t indexAmongOthers(std::vector<Clip> const& clips, std::size_t moving, double time)
{
    double cursor = 0;
    std::size_t index = 0;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        if (i == moving)
            continue;
        if (cursor + clips[i].length() / 2 > time)
            break;
        cursor += clips[i].length();
        ++index;
    }
    return index;
}

/// Not std::rotate, which would swap every element in between.
void moveElement(std::vector<Clip>& clips, std::size_t from, std::size_t to)
{
    Clip moving = std::move(clips[from]);
    auto const at = [&](std::size_t index) { return clips.begin() + std::ptrdiff_t(index); };
    if (from < to)
        std::move(at(from + 1), at(to + 1), at(from));
    else
        std::move_backward(at(to), at(from), at(from + 1));
    clips[to] = std::move(moving);
}

std::size_t placeInOrder(std::vector<Clip> const& clips, double time)
{
    return std::size_t(std::ranges::upper_bound(clips, time, {}, &Clip::timelineStart) -
                       clips.begin());
}

void insertAll(Track& track, std::vector<Clip> group, std::size_t index)
{
    std::vector<Clip>& clips = editableClips(track, group.size());
    clips.insert(clips.begin() + std::ptrdiff_t(index), std::make_move_iterator(group.begin()),
                 std::make_move_iterator(group.end()));
}

} // namespace

std::optional<double> freeStart(Track const& track, double length, double near,
                                std::optional<Id> const& excluding, std::optional<double> limit)
{
    if (!std::ranges::is_sorted(*track.clips, {}, &Clip::timelineStart)) {
        Track sorted = track;
        normalize(sorted);
        return freeStart(sorted, length, near, excluding, limit);
    }
    std::optional<double> best;
    double distance = unbounded;
    forEachGap(*track.clips, excluding, limit.value_or(unbounded), [&](TimeRange const& gap) {
        if (!(gap.length() >= length - timeTolerance))
            return;
        double const start = std::min(std::max(gap.start, near), gap.end - length);
        if (std::abs(start - near) < distance) {
            best = start;
            distance = std::abs(start - near);
        }
    });
    if (best && limit && *best + length > *limit + timeTolerance)
        return std::nullopt;
    return best;
}

TimeRange freeRange(Track const& track, std::size_t index)
{
    std::vector<Clip> const& clips = *track.clips;
    Clip const& own = clips[index];
    TimeRange range{0, unbounded};
    for (std::size_t i = 0; i < clips.size(); ++i) {
        if (i == index)
            continue;
        bool const isBefore = clips[i].timelineStart < own.timelineStart ||
                              (clips[i].timelineStart == own.timelineStart && i < index);
        if (isBefore)
            range.start = std::max(range.start, clips[i].end());
        else
            range.end = std::min(range.end, clips[i].timelineStart);
    }
    // Clips of a hand-written document that already overlap may stay where they are.
    if (own.timelineStart < range.start - timeTolerance)
        range.start = std::max(0.0, own.timelineStart);
    if (own.end() > range.end + timeTolerance)
        range.end = own.end();
    return range;
}

std::size_t insertionIndex(Track const& track, double time)
{
    auto const next =
        std::ranges::find_if(*track.clips, [&](Clip const& clip) { return clip.middle() > time; });
    return std::size_t(next - track.clips->begin());
}

void normalize(Track& track)
{
    if (!track.isMagnetic) {
        if (!std::ranges::is_sorted(*track.clips, {}, &Clip::timelineStart))
            std::ranges::stable_sort(track.clips.edit(), {}, &Clip::timelineStart);
        return;
    }
    if (isPacked(*track.clips))
        return;
    double cursor = 0;
    for (Clip& clip : track.clips.edit()) {
        clip.timelineStart = cursor;
        cursor += clip.length();
    }
}

std::vector<Clip>& editableClips(Track& track, std::size_t more)
{
    if (more > 0 && !track.clips.isOnlyCopy()) {
        std::vector<Clip> copy;
        copy.reserve(track.clips->size() + more);
        copy.insert(copy.end(), track.clips->begin(), track.clips->end());
        track.clips = Shared(std::move(copy));
    }
    return track.clips.edit();
}

std::optional<double> insertGroup(Track& track, std::vector<Clip> group, double time)
{
    if (track.isMagnetic)
        return insertGroupAt(track, std::move(group), insertionIndex(track, time));

    normalize(track);
    double const length = spread(group, 0);
    auto const start = freeStart(track, length, time, std::nullopt, latestTime);
    if (!(time <= latestTime) || !start)
        return std::nullopt;
    double const landed = std::max(0.0, *start);
    spread(group, landed);
    insertAll(track, std::move(group), placeInOrder(*track.clips, landed));
    return landed;
}

std::optional<double> insertGroupAt(Track& track, std::vector<Clip> group, std::size_t index)
{
    double length = 0;
    for (Clip const& clip : group)
        length += clip.length();
    if (track.end() + length > latestTime)
        return std::nullopt;
    insertAll(track, std::move(group), index);
    normalize(track);
    return (*track.clips)[index].timelineStart;
}

std::optional<double> moveWithin(Track& track, std::size_t index, double time)
{
    if (track.isMagnetic) {
        std::size_t const target = indexAmongOthers(*track.clips, index, time);
        if (target != index)
            moveElement(track.clips.edit(), index, target);
        normalize(track);
        return (*track.clips)[target].timelineStart;
    }
    Clip const& own = (*track.clips)[index];
    auto const start = freeStart(track, own.length(), time, own.id, latestTime);
    if (!(time <= latestTime) || !start)
        return std::nullopt;
    double const landed = std::max(0.0, *start);
    std::vector<Clip>& clips = track.clips.edit();
    clips[index].timelineStart = landed;
    auto const isBefore = [&](Clip const& clip) { return clip.timelineStart < landed; };
    moveElement(clips, index, std::size_t(std::ranges::count_if(clips, isBefore)));
    normalize(track);
    return landed;
}

} // namespace framewright
