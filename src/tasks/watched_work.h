#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>

namespace framewright {

/// Work has stalled: `stage` is what it was doing.
class Stalled : public std::runtime_error {
public:
    explicit Stalled(std::string const& where)
        : std::runtime_error(where + " has stalled."), stage(where)
    {
    }

    std::string const stage;
};

/// When work counts as stalled.
struct StallLimit {
    /// How long work may make no progress. A step of the clock counts as one second at most, so the
    /// time a machine was suspended does not.
    std::chrono::milliseconds patience = std::chrono::seconds(30);
    std::chrono::milliseconds lookEvery = std::chrono::milliseconds(250);
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
};

/// What watched work reports about itself, from any of its threads.
class WatchedWork {
public:
    enum class Thread { drawing, writing };

    /// What a thread begins to do; null while it only waits for the other one. The string must stay
    /// valid.
    void enter(Thread thread, char const* stage);

    /// Progress was made.
    void beat() { m_beats.fetch_add(1, std::memory_order_relaxed); }

    /// Passes progress to the callback on the thread that started the work, and waits for it.
    void report(double fraction, std::string_view stage);

    /// Once requested, the work has to end itself soon.
    std::stop_token stop() const { return m_stop.get_token(); }

private:
    friend void runWatched(std::function<void(WatchedWork&)> work,
                           std::function<void(double, std::string_view)> const& progress,
                           std::stop_token stop, StallLimit const& limit);

    void requestStop();
    std::string stage() const;

    std::stop_source m_stop;
    std::atomic<std::uint64_t> m_beats = 0;
    std::array<std::atomic<char const*>, 2> m_stages = {};

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<std::pair<double, std::string>> m_report;
    bool m_isDone = false;
    std::exception_ptr m_failure;
};

/// Runs work on a thread of its own and returns when it is done; throws what it throws.
///
/// Throws Stalled when no progress is made for the limit's time. A thread that hangs can't be
/// ended: it is asked to stop and abandoned, so the work must own all it uses.
void runWatched(std::function<void(WatchedWork&)> work,
                std::function<void(double, std::string_view)> const& progress, std::stop_token stop,
                StallLimit const& limit);

} // namespace framewright
