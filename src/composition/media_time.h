#pragma once

#include <compare>
#include <cstdint>

namespace framewright {

/// A time as the rendering engine counts it: in 600ths of a second, never negative. A multiple of
/// the usual frame rates, so that frame times are exact.
struct MediaTime {
    static constexpr std::int64_t timescale = 600;

    std::int64_t value = 0;

    /// Rounds to the nearest 600th; negative times become 0.
    static MediaTime fromSeconds(double seconds);

    double seconds() const { return double(value) / timescale; }

    auto operator<=>(MediaTime const&) const = default;
};

/// Half-open: [start, end).
struct MediaTimeRange {
    MediaTime start;
    MediaTime end;

    bool contains(MediaTime time) const { return start <= time && time < end; }

    bool operator==(MediaTimeRange const&) const = default;
};

} // namespace framewright
