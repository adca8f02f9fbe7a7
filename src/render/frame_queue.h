#pragma once

#include "media/frame.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>

namespace framewright {

/// Hands pictures from the thread that draws them to the one that encodes them. It holds a few, so
/// neither waits for the other's odd slow picture, and memory stays bounded.
class FrameQueue {
public:
    explicit FrameQueue(std::size_t capacity) : m_capacity(capacity) {}

    /// Waits for room. False when the queue was abandoned: nobody wants pictures any more.
    bool push(Frame frame)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_frames.size() < m_capacity || m_isAbandoned; });
        if (m_isAbandoned)
            return false;
        m_frames.push_back(std::move(frame));
        m_changed.notify_all();
        return true;
    }

    /// Waits for a picture. Nothing when there will be no more.
    std::optional<Frame> pop()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return !m_frames.empty() || m_isComplete || m_isAbandoned; });
        if (m_frames.empty() || m_isAbandoned)
            return std::nullopt;
        std::optional<Frame> frame(std::move(m_frames.front()));
        m_frames.pop_front();
        m_changed.notify_all();
        return frame;
    }

    /// There will be no more pictures; those in the queue still count.
    void complete() { set(m_isComplete); }

    /// Either side gives up.
    void abandon() { set(m_isAbandoned); }

private:
    void set(bool& state)
    {
        std::lock_guard lock(m_mutex);
        state = true;
        m_changed.notify_all();
    }

    std::size_t const m_capacity;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Frame> m_frames;
    bool m_isComplete = false;
    bool m_isAbandoned = false;
};

} // namespace framewright
