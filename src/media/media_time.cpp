#include "media/media_time.h"

#include <algorithm>
#include <cmath>

namespace framewright {

MediaTime MediaTime::fromSeconds(double seconds)
{
    // Far beyond any film, and far from where the conversion to an integer is undefined.
    constexpr double longest = 1e15;
    if (!(seconds > 0)) // Also what is not a number.
        return {};
    return {std::llround(std::min(seconds * timescale, longest))};
}

} // namespace framewright
