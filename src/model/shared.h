#pragma once

#include <memory>
#include <utility>

namespace framewright {

/// A value that its copies share until one of them is changed.
///
/// It behaves as the value itself: copies are equal and independent. What it saves is the work:
/// copying costs a counter, and comparing two copies of one value costs a pointer. Undo steps
/// therefore hold only what an edit changed. Different copies may be used on different threads.
template <class T>
class Shared {
public:
    Shared() : m_value(std::make_shared<T>()) {}
    Shared(T value) : m_value(std::make_shared<T>(std::move(value))) {}

    T const& operator*() const { return *m_value; }
    T const* operator->() const { return m_value.get(); }

    /// The value for changing. References taken before from any copy keep the old value.
    T& edit()
    {
        if (!isOnlyCopy())
            m_value = std::make_shared<T>(*m_value);
        return const_cast<T&>(*m_value);
    }

    /// Whether no other copy shares the value, so that `edit` copies nothing.
    bool isOnlyCopy() const { return m_value.use_count() == 1; }

    /// Whether both are copies of one value that neither has changed since.
    bool isSameAs(Shared const& other) const { return m_value == other.m_value; }

    friend bool operator==(Shared const& a, Shared const& b)
    {
        return a.m_value == b.m_value || *a.m_value == *b.m_value;
    }

private:
    std::shared_ptr<T const> m_value; ///< Never null, but in a moved-from Shared.
};

} // namespace framewright
