#include "export/internal/remaining_time.h"

#include <gtest/gtest.h>

namespace framewright {

TEST(RemainingTime, CountsDownUnlessWorkBecomesClearlySlower)
{
    RemainingTime remaining;
    EXPECT_EQ(remaining.after(0, 5), std::nullopt);
    EXPECT_EQ(remaining.after(0.01, 5), std::nullopt);
    EXPECT_EQ(remaining.after(0.5, 0.5), std::nullopt) << "the start is not like the rest";

    // Shots that cost a quarter less and a quarter more than the average.
    double last = 1000;
    double elapsed = 2.25;
    for (int percent = 3; percent <= 100; ++percent) {
        elapsed += percent % 4 < 2 ? 1.25 : 0.75;
        auto const left = remaining.after(percent / 100.0, elapsed);
        ASSERT_TRUE(left);
        EXPECT_LE(*left, last) << percent;
        EXPECT_NEAR(*left, 100 - percent, 12) << percent;
        last = *left;
    }

    RemainingTime slowing;
    EXPECT_DOUBLE_EQ(slowing.after(0.5, 10).value(), 10);
    EXPECT_DOUBLE_EQ(slowing.after(0.6, 30).value(), 20) << "honest";
    EXPECT_DOUBLE_EQ(slowing.after(1, 31).value(), 0);
}

TEST(RemainingTime, IsToldInWords)
{
    EXPECT_EQ(timeLeft(0.2), "1 s left");
    EXPECT_EQ(timeLeft(89), "89 s left");
    EXPECT_EQ(timeLeft(100), "2 min left");
    EXPECT_EQ(timeLeft(3600), "60 min left");
}

} // namespace framewright
