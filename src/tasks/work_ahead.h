#pragma once

#include "tasks/bounded_queue.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <variant>

namespace framewright {

/// Makes a sequence of values on its own thread, ahead of the thread that takes them.
///
/// At most `capacity` values are waiting, and one more is being made. Values, the end and an error
/// arrive in the order they occurred: whatever was made before an error is delivered before it.
///
/// `restart` starts a new sequence. Every result carries the number of the sequence it belongs to,
/// and the taker discards results of earlier ones, so a value that was being made during a restart
/// never appears in the new sequence. That value is finished first, though: only `make` can
/// interrupt itself.
///
/// One thread takes and restarts; any thread may stop.
template <class Value, class Start>
class WorkAhead {
public:
    /// Makes the next value, on the worker thread; nothing at the end of the sequence. `start` is
    /// non-null for the first value of each sequence. An exception ends the sequence.
    using Make = std::function<std::optional<Value>(Start const* start)>;

    WorkAhead(std::size_t capacity, Make make)
        : m_results(capacity), m_make(std::move(make)), m_thread([this] { work(); })
    {
    }

    /// Waits for the value that is being made.
    ~WorkAhead() { stop(); }

    WorkAhead(WorkAhead const&) = delete;
    WorkAhead& operator=(WorkAhead const&) = delete;

    void restart(Start start)
    {
        m_isAtEnd = false;
        {
            // In this order: results of the new sequence must not be among those cleared, and the
            // worker must not wait for room while the taker waits for the new sequence.
            std::lock_guard const lock(m_mutex);
            ++m_sequence;
            m_results.clear();
            m_start = std::move(start);
        }
        m_changed.notify_all();
    }

    /// Waits for the next value. Nothing at the end, after an error and once stopped. Throws what
    /// `make` threw.
    std::optional<Value> next()
    {
        while (!m_isAtEnd) {
            auto result = m_results.pop();
            if (!result)
                return std::nullopt;
            if (result->sequence != m_sequence)
                continue;
            if (auto* const value = std::get_if<Value>(&result->outcome))
                return std::move(*value);
            m_isAtEnd = true;
            if (auto const error = std::get<std::exception_ptr>(result->outcome))
                std::rethrow_exception(error);
        }
        return std::nullopt;
    }

    /// Ends production for good: nothing more is made or delivered.
    void stop()
    {
        {
            std::lock_guard const lock(m_mutex);
            m_isStopped = true;
        }
        m_changed.notify_all();
        m_results.abandon();
    }

private:
    struct Result {
        std::uint64_t sequence;
        std::variant<std::exception_ptr, Value> outcome; ///< A null exception marks the end.
    };

    void work()
    {
        while (true) {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [&] { return m_start || m_isStopped; });
            if (m_isStopped)
                return;
            Start const start = *std::exchange(m_start, std::nullopt);
            std::uint64_t const sequence = m_sequence;
            lock.unlock();
            Start const* first = &start;
            while (sequence == m_sequence) {
                Result result = made(sequence, std::exchange(first, nullptr));
                bool const isLast = !std::holds_alternative<Value>(result.outcome);
                if (!m_results.push(std::move(result)))
                    return;
                if (isLast)
                    break;
            }
        }
    }

    Result made(std::uint64_t sequence, Start const* start)
    {
        try {
            if (std::optional<Value> value = m_make(start))
                return {sequence, std::move(*value)};
            return {sequence, std::exception_ptr()};
        } catch (...) {
            return {sequence, std::current_exception()};
        }
    }

    BoundedQueue<Result> m_results;
    Make m_make;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<Start> m_start;              ///< Of the sequence that is to begin next.
    std::atomic<std::uint64_t> m_sequence = 0; ///< Changed by the taker only.
    bool m_isStopped = false;
    bool m_isAtEnd = true; ///< The taker's own.
    std::jthread m_thread; ///< Last: it uses the others.
};

} // namespace framewright
