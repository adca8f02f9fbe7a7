#include "export/internal/remaining_time.h"

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

constexpr double leastFraction = 0.02;
constexpr double leastElapsed = 1;
/// By how much of what is left, and by how many seconds, it has to be late before more is told:
/// shots differ in cost.
constexpr double clearlySlower = 0.25;
constexpr double clearlyLater = 2;
/// How much of the news is taken in at a time when it goes faster.
constexpr double easing = 0.2;

} // namespace

std::optional<double> RemainingTime::after(double fraction, double elapsed)
{
    if (!(fraction >= leastFraction) || !(elapsed >= leastElapsed))
        return std::nullopt;
    if (fraction >= 1)
        return 0;
    double const end = elapsed / fraction;
    if (!m_end || end - *m_end > std::max(clearlyLater, clearlySlower * (end - elapsed)))
        m_end = end;
    else if (end < *m_end)
        m_end = *m_end + easing * (end - *m_end);
    return std::max(0.0, *m_end - elapsed);
}

std::string timeLeft(double seconds)
{
    constexpr double minute = 60;
    if (seconds < 1.5 * minute)
        return std::to_string(int(std::ceil(seconds))) + " s left";
    return std::to_string(int(std::lround(seconds / minute))) + " min left";
}

} // namespace framewright
