#include "tasks/watched_work.h"

#include <gtest/gtest.h>

#include <latch>
#include <memory>
#include <thread>
#include <vector>

namespace framewright {

namespace {

/// A clock that advances by a step each time it is read, once the work has begun.
struct Clock {
    std::chrono::seconds step{1};
    int mostReadings = 1000; ///< Then it stops.
    std::atomic<WatchedWork*> begun = nullptr;
    std::atomic<int> readings = 0;
    int beatEvery = 0; ///< The work makes progress every so many readings; never if 0.

    std::chrono::steady_clock::time_point read()
    {
        WatchedWork* const work = begun;
        if (work && readings < mostReadings) {
            ++readings;
            readings.notify_all();
            if (beatEvery > 0 && readings % beatEvery == 0)
                work->beat();
        }
        return std::chrono::steady_clock::time_point() + readings.load() * step;
    }
};

StallLimit limitBy(std::shared_ptr<Clock> const& clock)
{
    return {std::chrono::seconds(30), std::chrono::milliseconds(0),
            [clock] { return clock->read(); }};
}

using enum WatchedWork::Thread;

} // namespace

TEST(WatchedWork, ReportsTheStageThatHangs)
{
    struct Case {
        char const* drawing;
        char const* writing;
        char const* stage;
    };
    for (Case const& c :
         {Case{"drawing", nullptr, "drawing"}, Case{nullptr, "encoding", "encoding"},
          Case{"drawing", "encoding", "encoding"}, Case{nullptr, nullptr, "starting"}}) {
        struct Shared {
            std::latch mayEnd{1};
            std::latch hasEnded{1};
            bool wasAskedToStop = false;
        };
        auto const shared = std::make_shared<Shared>();
        auto const clock = std::make_shared<Clock>();
        auto const hang = [shared, clock, c](WatchedWork& watched) {
            watched.enter(drawing, c.drawing);
            watched.enter(writing, c.writing);
            clock->begun = &watched;
            shared->mayEnd.wait();
            shared->wasAskedToStop = watched.stop().stop_requested();
            shared->hasEnded.count_down();
        };
        try {
            runWatched(hang, {}, {}, limitBy(clock));
            ADD_FAILURE() << "not abandoned";
        } catch (Stalled const& stalled) {
            EXPECT_EQ(stalled.stage, c.stage);
        }
        shared->mayEnd.count_down();
        shared->hasEnded.wait();
        EXPECT_TRUE(shared->wasAskedToStop);
    }
}

TEST(WatchedWork, IsNotAbandonedWhileItMakesProgress)
{
    // An occasional beat is enough, and a clock that leaps, as after the machine was suspended,
    // counts for little.
    struct Case {
        std::chrono::seconds step;
        int readings;
        int beatEvery;
    };
    for (Case const& c :
         {Case{std::chrono::seconds(1), 200, 25}, Case{std::chrono::seconds(10'000), 25, 0}}) {
        auto const clock = std::make_shared<Clock>();
        clock->step = c.step;
        clock->mostReadings = c.readings;
        clock->beatEvery = c.beatEvery;
        bool isDone = false;
        auto const work = [&](WatchedWork& watched) {
            clock->begun = &watched;
            for (int seen = clock->readings; seen < c.readings; seen = clock->readings)
                clock->readings.wait(seen);
            clock->begun = nullptr;
            isDone = true;
        };
        EXPECT_NO_THROW(runWatched(work, {}, {}, limitBy(clock)));
        EXPECT_TRUE(isDone);
    }
}

TEST(WatchedWork, ReportsProgressAndErrorsOnTheCallersThread)
{
    std::vector<double> reported;
    std::stop_source stop;
    auto const caller = std::this_thread::get_id();
    auto const progress = [&](double fraction, std::string_view stage) {
        EXPECT_TRUE(std::this_thread::get_id() == caller);
        EXPECT_EQ(stage, "working");
        reported.push_back(fraction);
        if (fraction >= 0.5)
            stop.request_stop();
    };
    auto const work = [](WatchedWork& watched) {
        for (int n = 0; n <= 8 && !watched.stop().stop_requested(); ++n)
            watched.report(n / 8.0, "working");
        throw std::runtime_error("stopped in the middle");
    };
    EXPECT_THROW(runWatched(work, progress, stop.get_token(), {}), std::runtime_error);
    EXPECT_EQ(reported, (std::vector{0.0, 0.125, 0.25, 0.375, 0.5}));
}

} // namespace framewright
