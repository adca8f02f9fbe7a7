#include "tasks/work_ahead.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <vector>

namespace framewright {

namespace {

constexpr int lastNumber = 100, damaged = 13;

/// Counts up from its start; fails at 13.
class Counting {
public:
    std::optional<int> operator()(int const* start)
    {
        if (start)
            m_next = *start;
        ++made;
        if (m_next == damaged)
            throw std::runtime_error("unlucky");
        return m_next <= lastNumber ? std::optional(m_next++) : std::nullopt;
    }

    std::atomic<int> made = 0;

private:
    int m_next = 0;
};

} // namespace

TEST(WorkAhead, DeliversValuesErrorsAndTheEndInOrder)
{
    Counting counting;
    WorkAhead<int, int> work(3, std::ref(counting));
    EXPECT_FALSE(work.next()) << "before the first start";
    work.restart(98);
    for (int const number : {98, 99, 100})
        EXPECT_EQ(work.next(), number);
    EXPECT_FALSE(work.next());
    EXPECT_FALSE(work.next());

    work.restart(11);
    EXPECT_EQ(work.next(), 11);
    EXPECT_EQ(work.next(), 12);
    EXPECT_THROW(work.next(), std::runtime_error);
    EXPECT_FALSE(work.next());
    work.restart(14);
    EXPECT_EQ(work.next(), 14);
}

TEST(WorkAhead, DeliversAllOfANewSequenceAndNothingOfTheOldOne)
{
    Counting counting;
    WorkAhead<int, int> work(4, std::ref(counting));
    for (int round = 0; round < 20'000; ++round) {
        int const from = 20 + round % 50;
        work.restart(from);
        for (int n = 0; n < round % 4; ++n)
            ASSERT_EQ(work.next(), from + n) << "round " << round;
    }
}

TEST(WorkAhead, NeverHoldsMoreThanItsCapacity)
{
    constexpr int capacity = 3;
    Counting counting;
    WorkAhead<int, int> work(capacity, std::ref(counting));
    work.restart(20);
    for (int taken = 1; taken <= 60; ++taken) {
        work.next();
        EXPECT_LE(counting.made, taken + capacity + 1);
    }
}

TEST(WorkAhead, StopEndsWaiting)
{
    std::latch isMaking{1}, mayEnd{1};
    WorkAhead<int, int> work(1, [&](int const*) -> std::optional<int> {
        isMaking.count_down();
        mayEnd.wait();
        return 1;
    });
    work.restart(0);
    isMaking.wait();
    std::jthread const stopping([&] { work.stop(); });
    EXPECT_FALSE(work.next());
    mayEnd.count_down();
}

} // namespace framewright
