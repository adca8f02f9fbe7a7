#include "composition/media_time.h"

#include <algorithm>
#include <cmath>

namespace framewright {

MediaTime MediaTime::fromSeconds(double seconds)
{
    // Longer than any film, and well below where the conversion to an integer overflows.
    constexpr double longest = 1e15;
    if (!(seconds > 0)) // Also true for NaN.
        return {};
    return {std::llround(std::min(seconds * timescale, longest))};
}

} // namespace framewright
