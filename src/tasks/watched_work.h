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

/// Long work doesn't get on any more: `stage` is what it hangs in.
class Stalled : public std::runtime_error {
public:
    explicit Stalled(std::string const& where)
        : std::runtime_error(where + " doesn't get on."), stage(where)
    {
    }

    std::string const stage;
};

/// When work counts as hanging.
struct StallLimit {
    /// How long nothing may happen. A step of the clock counts for a second at the most: a machine
    /// that slept has not been waiting.
    std::chrono::milliseconds patience = std::chrono::seconds(30);
    std::chrono::milliseconds lookEvery = std::chrono::milliseconds(250);
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
};

/// What work that is watched tells of itself. Any of its threads may.
class WatchedWork {
public:
    enum class Thread { drawing, writing };

    /// A thread begins something; null while it only waits for the other one. `stage` stays valid.
    void enter(Thread thread, char const* stage);

    /// Something got on.
    void beat() { m_beats.fetch_add(1, std::memory_order_relaxed); }

    /// Has the progress told on the thread that started the work, and waits for that.
    void report(double fraction, std::string_view stage);

    /// Requested when the work is to end; then it ends itself soon.
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
/// Throws Stalled when nothing gets on for the limit's time. What hangs cannot be ended: it is told
/// to stop and left alone, so the work owns all it uses.
void runWatched(std::function<void(WatchedWork&)> work,
                std::function<void(double, std::string_view)> const& progress, std::stop_token stop,
                StallLimit const& limit);

} // namespace framewright
