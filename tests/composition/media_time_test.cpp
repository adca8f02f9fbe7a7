#include "composition/media_time.h"

#include <gtest/gtest.h>

#include <limits>

namespace framewright {

TEST(MediaTime, RoundsTo600thsAndIsNeverNegative)
{
    // clang-format off
    struct Case { double seconds; std::int64_t value; };
    for (Case const& c : {
             Case{0, 0}, Case{1, 600}, Case{1.0 / 30, 20}, Case{0.1 + 0.2, 180},
             Case{0.9 / 600, 1}, Case{0.4 / 600, 0}, Case{0.5 / 600, 1}, Case{-1, 0},
             Case{-0.0001, 0}, Case{std::numeric_limits<double>::quiet_NaN(), 0},
             Case{1e300, 1'000'000'000'000'000},
         })
        // clang-format on
        EXPECT_EQ(MediaTime::fromSeconds(c.seconds).value, c.value) << c.seconds;
    EXPECT_DOUBLE_EQ(MediaTime::fromSeconds(2.5).seconds(), 2.5);
}

} // namespace framewright
