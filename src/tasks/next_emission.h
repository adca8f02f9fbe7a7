#pragma once

#include <QObject>

#include <coroutine>

namespace framewright {

/// `co_await NextEmission(object, &Object::signal)` resumes after the signal's next emission, from
/// the event loop, exactly once however often it is emitted until then. If the object is destroyed
/// first, it never resumes.
///
/// QCoro's own awaiter stays connected until the event loop runs: a signal emitted twice before
/// that resumes a coroutine that has already ended.
template <class Object, class Signal>
class NextEmission {
public:
    NextEmission(Object* object, Signal signal) : m_object(object), m_signal(signal) {}

    bool await_ready() const { return false; }
    void await_suspend(std::coroutine_handle<> waiting) const
    {
        QObject::connect(
            m_object, m_signal, m_object, [waiting] { waiting.resume(); },
            Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
    }
    void await_resume() const {}

private:
    Object* m_object;
    Signal m_signal;
};

} // namespace framewright
