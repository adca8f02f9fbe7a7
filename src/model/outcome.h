#pragma once

#include <cassert>
#include <string>
#include <utility>
#include <variant>

namespace framewright {

/// Why an edit was refused: the whole sentence the user reads. Nothing was changed.
struct Refusal {
    std::string sentence;

    bool operator==(Refusal const&) const = default;
};

/// What an edit gives that has nothing to tell but that it was made.
struct Done {};

/// What an edit gave, or the sentence that says why it was refused.
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

    /// The sentence. Only of a refused edit.
    std::string const& refusal() const
    {
        assert(!*this);
        return std::get<Refusal>(m_result).sentence;
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
