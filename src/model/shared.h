#pragma once

#include <atomic>
#include <cstddef>
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
    Shared() : m_holder(new Holder) {}
    Shared(T value) : m_holder(new Holder{{1}, std::move(value)}) {}

    Shared(Shared const& other) : m_holder(other.m_holder)
    {
        if (m_holder)
            m_holder->copies.fetch_add(1, std::memory_order_relaxed);
    }
    Shared(Shared&& other) noexcept : m_holder(std::exchange(other.m_holder, nullptr)) {}
    Shared& operator=(Shared other) noexcept
    {
        std::swap(m_holder, other.m_holder);
        return *this;
    }
    ~Shared()
    {
        if (m_holder && m_holder->copies.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete m_holder;
    }

    T const& operator*() const { return m_holder->value; }
    T const* operator->() const { return &m_holder->value; }

    /// The value for changing. References taken before from any copy keep the old value.
    T& edit()
    {
        if (!isOnlyCopy())
            *this = Shared(m_holder->value);
        return m_holder->value;
    }

    /// Whether no other copy shares the value, so that `edit` copies nothing.
    ///
    /// A copy that another thread has dropped was done with the value before: std::shared_ptr's
    /// count does not promise that, which is why this counts by itself.
    bool isOnlyCopy() const { return m_holder->copies.load(std::memory_order_acquire) == 1; }

    /// Whether both are copies of one value that neither has changed since.
    bool isSameAs(Shared const& other) const { return m_holder == other.m_holder; }

    friend bool operator==(Shared const& a, Shared const& b)
    {
        return a.m_holder == b.m_holder || *a == *b;
    }

private:
    struct Holder {
        std::atomic<std::size_t> copies = 1;
        T value{};
    };

    Holder* m_holder; ///< Null only in a moved-from Shared.
};

} // namespace framewright
