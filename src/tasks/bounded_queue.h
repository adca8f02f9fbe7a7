#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace framewright {

/// Hands values from the thread that makes them to the one that uses them.
///
/// It holds at most `capacity` of them, so memory stays bounded while neither side waits for the
/// other's occasional slow step.
template <class Value>
class BoundedQueue {
public:
    explicit BoundedQueue(std::size_t capacity) : m_capacity(capacity) {}

    /// Waits for room. False when the queue was abandoned: the value is discarded.
    bool push(Value value)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_values.size() < m_capacity || m_isAbandoned; });
        if (m_isAbandoned)
            return false;
        m_values.push_back(std::move(value));
        m_changed.notify_all();
        return true;
    }

    /// Waits for a value. Nothing when the queue was abandoned.
    std::optional<Value> pop()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return !m_values.empty() || m_isAbandoned; });
        if (m_isAbandoned)
            return std::nullopt;
        std::optional<Value> value(std::move(m_values.front()));
        m_values.pop_front();
        m_changed.notify_all();
        return value;
    }

    /// Discards the values in the queue.
    void clear()
    {
        std::lock_guard lock(m_mutex);
        m_values.clear();
        m_changed.notify_all();
    }

    /// Called when either side gives up: both stop waiting, and the values are discarded.
    void abandon()
    {
        std::lock_guard lock(m_mutex);
        m_isAbandoned = true;
        m_values.clear();
        m_changed.notify_all();
    }

private:
    std::size_t const m_capacity;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Value> m_values;
    bool m_isAbandoned = false;
};

} // namespace framewright
