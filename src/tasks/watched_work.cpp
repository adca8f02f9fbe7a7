#include "tasks/watched_work.h"

#include <algorithm>
#include <memory>
#include <thread>

namespace framewright {

namespace {

/// Adds up the time without progress.
class Patience {
public:
    explicit Patience(StallLimit const& limit) : m_limit(limit), m_last(limit.now()) {}

    bool isOver(std::uint64_t beats)
    {
        constexpr std::chrono::steady_clock::duration longest = std::chrono::seconds(1);
        auto const now = m_limit.now();
        m_waited += std::clamp(now - m_last, longest * 0, longest);
        m_last = now;
        if (beats != m_beats)
            m_waited = {};
        m_beats = beats;
        return m_waited >= m_limit.patience;
    }

private:
    StallLimit const& m_limit;
    std::chrono::steady_clock::time_point m_last;
    std::chrono::steady_clock::duration m_waited{};
    std::uint64_t m_beats = 0;
};

/// Joins its thread when destroyed, after asking it to stop, unless the thread was abandoned.
class Joined {
public:
    Joined(std::thread thread, std::function<void()> askToStop)
        : m_thread(std::move(thread)), m_askToStop(std::move(askToStop))
    {
    }
    ~Joined()
    {
        if (!m_thread.joinable())
            return;
        m_askToStop();
        m_thread.join();
    }
    Joined(Joined const&) = delete;
    Joined& operator=(Joined const&) = delete;

    void join() { m_thread.join(); }
    void abandon()
    {
        m_askToStop();
        m_thread.detach();
    }

private:
    std::thread m_thread;
    std::function<void()> m_askToStop;
};

} // namespace

void WatchedWork::enter(Thread thread, char const* stage)
{
    m_stages[std::size_t(thread)] = stage;
    beat();
}

void WatchedWork::report(double fraction, std::string_view stage)
{
    std::unique_lock lock(m_mutex);
    m_report.emplace(fraction, stage);
    m_changed.notify_all();
    m_changed.wait(lock, [&] { return !m_report || m_stop.stop_requested(); });
}

void WatchedWork::requestStop()
{
    m_stop.request_stop();
    std::lock_guard const lock(m_mutex); // Otherwise a thread about to wait would miss it.
    m_changed.notify_all();
}

/// The writing thread's stage comes first, since a stalled writer makes the drawing thread wait.
std::string WatchedWork::stage() const
{
    char const* const writing = m_stages[std::size_t(Thread::writing)];
    char const* const drawing = m_stages[std::size_t(Thread::drawing)];
    return writing ? writing : drawing ? drawing : "starting";
}

void runWatched(std::function<void(WatchedWork&)> work,
                std::function<void(double, std::string_view)> const& progress, std::stop_token stop,
                StallLimit const& limit)
{
    auto const watched = std::make_shared<WatchedWork>();
    auto const askToStop = [watched] { watched->requestStop(); };
    std::thread thread([watched, work = std::move(work)]() mutable {
        std::exception_ptr failure;
        try {
            work(*watched);
        } catch (...) {
            failure = std::current_exception();
        }
        work = nullptr; // Destroys what it owns before the end is reported.
        std::lock_guard const lock(watched->m_mutex);
        watched->m_failure = failure;
        watched->m_isDone = true;
        watched->m_changed.notify_all();
    });
    Joined joined(std::move(thread), askToStop);
    std::stop_callback const whenStopped(stop, askToStop);

    Patience patience(limit);
    std::unique_lock lock(watched->m_mutex);
    while (!watched->m_isDone) {
        watched->m_changed.wait_for(lock, limit.lookEvery,
                                    [&] { return watched->m_isDone || watched->m_report; });
        if (auto const report = watched->m_report) {
            lock.unlock();
            if (progress && !stop.stop_requested())
                progress(report->first, report->second);
            watched->beat();
            lock.lock();
            watched->m_report.reset();
            watched->m_changed.notify_all();
        } else if (!watched->m_isDone && patience.isOver(watched->m_beats)) {
            lock.unlock();
            joined.abandon();
            throw Stalled(watched->stage());
        }
    }
    lock.unlock();
    joined.join();
    if (watched->m_failure)
        std::rethrow_exception(watched->m_failure);
}

} // namespace framewright
