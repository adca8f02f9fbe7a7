#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <functional>

namespace framewright {

/// Runs the event loop until `isSo` holds. False if that takes more than 20 seconds.
inline bool processEventsUntil(std::function<bool()> const& isSo)
{
    QTimer patience;
    patience.setSingleShot(true);
    patience.start(std::chrono::seconds(20));
    while (!isSo() && patience.isActive())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return isSo();
}

} // namespace framewright
