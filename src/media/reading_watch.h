#pragma once

#include <exception>
#include <functional>
#include <utility>

namespace framewright {

/// Called over and over while a file is read: for each packet, and for each piece that comes
/// from the disk. What it throws, other than a MediaError, ends the reading and goes on to
/// who asked for it; the reader is of no use after that.
using ReadingActivity = std::function<void()>;

/// Carries what an activity throws past the media library, which no exception may go through.
class ReadingWatch {
public:
    explicit ReadingWatch(ReadingActivity activity) : m_activity(std::move(activity)) {}

    /// False when the reading is to end.
    bool getsOn() noexcept
    {
        try {
            if (m_activity)
                m_activity();
        } catch (...) {
            m_end = std::current_exception();
        }
        return !m_end;
    }

    void throwIfEnded() const
    {
        if (m_end)
            std::rethrow_exception(m_end);
    }

private:
    ReadingActivity m_activity;
    std::exception_ptr m_end;
};

} // namespace framewright
