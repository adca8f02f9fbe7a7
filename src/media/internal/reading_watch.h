#pragma once

#include "media/reading_activity.h"

#include <exception>
#include <utility>

namespace framewright {

/// Runs a ReadingActivity from within call-backs of the media library.
///
/// The library is C, so no exception may pass through it. One that the activity throws is kept
/// here, the call-back reports failure, and it is rethrown once the library has returned.
class ReadingWatch {
public:
    explicit ReadingWatch(ReadingActivity activity) : m_activity(std::move(activity)) {}

    /// False once the activity has thrown.
    bool mayContinue() noexcept
    {
        try {
            if (m_activity)
                m_activity();
        } catch (...) {
            m_exception = std::current_exception();
        }
        return !m_exception;
    }

    void rethrow() const
    {
        if (m_exception)
            std::rethrow_exception(m_exception);
    }

private:
    ReadingActivity m_activity;
    std::exception_ptr m_exception;
};

} // namespace framewright
