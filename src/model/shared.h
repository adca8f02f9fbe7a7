#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

namespace framewright {

/// A value that copies share until one of them changes it (copy on write).
///
/// The problem: an edit works on a copy of the project and the undo history keeps the old one, so a
/// project is copied and compared all the time, while an edit changes one track of it. With plain
/// members a nudge would copy ten thousand clips, and finding out that nothing changed would
/// compare them all.
///
/// The method: copies share one counted holder. Copying increments the counter and comparing two
/// copies of one value compares two pointers; `edit` first gives a copy that is shared a new
/// holder. So an undo step holds what its edit changed, and nothing else.
///
/// Not a std::shared_ptr: changing in place is safe only if all other copies are gone and done with
/// the value, and `use_count() == 1` doesn't promise that. It is a relaxed load, so another
/// thread's last reads may still be under way. Our counter is decremented with release and read
/// with acquire.
///
/// Different copies may be used on different threads; one copy is used on one thread at a time.
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

    /// The value, writable. References taken from other copies still see the old value.
    T& edit()
    {
        if (!isOnlyCopy())
            *this = Shared(m_holder->value);
        return m_holder->value;
    }

    /// Whether no other copy shares the value, so that `edit` copies nothing.
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
