#pragma once

#include "model/refusal.h"

#include <cassert>
#include <utility>
#include <variant>

namespace framewright {

/// The result of an edit that returns nothing else.
struct Done {};

/// What an edit made, or why it was refused.
template <class T>
class [[nodiscard]] Outcome {
public:
    Outcome(T value) : m_result(std::move(value)) {}
    Outcome(Refusal refusal) : m_result(std::move(refusal)) {}

    explicit operator bool() const { return std::holds_alternative<T>(m_result); }

    T& operator*() { return value(); }
    T const& operator*() const { return value(); }
    T* operator->() { return &value(); }
    T const* operator->() const { return &value(); }

    /// Only for a refused edit. An edit built on another passes its refusal on, whatever type the
    /// other returns: `if (!clip) return clip.refusal();`
    Refusal const& refusal() const
    {
        assert(!*this);
        return std::get<Refusal>(m_result);
    }

private:
    T& value()
    {
        assert(*this);
        return std::get<T>(m_result);
    }
    T const& value() const
    {
        assert(*this);
        return std::get<T>(m_result);
    }

    std::variant<T, Refusal> m_result;
};

} // namespace framewright
