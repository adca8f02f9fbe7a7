#pragma once

#include <algorithm>

namespace framewright {

/// A range of time, half-open: [start, end). Seconds. `end` is infinite where nothing bounds it.
///
/// Comparisons are exact; callers apply timeTolerance where they need it.
struct TimeRange {
    double start = 0;
    double end = 0; ///< Not before `start`.

    double length() const { return end - start; }
    bool contains(double time) const { return start <= time && time < end; }

    /// Whether they share any time. Ranges that only touch do not.
    bool overlaps(TimeRange const& other) const { return intersection(other).length() > 0; }

    /// What both cover; an empty range when that is nothing.
    TimeRange intersection(TimeRange const& other) const
    {
        double const from = std::max(start, other.start);
        return {from, std::max(from, std::min(end, other.end))};
    }

    bool operator==(TimeRange const&) const = default;
};

} // namespace framewright
