#pragma once

#include "model/outcome.h"

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

namespace framewright {

/// Why a command failed: `what()` is the whole sentence its caller reads.
class ToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A refused edit on its way to the registry, which knows the words for it.
class RefusedEdit : public std::exception {
public:
    explicit RefusedEdit(Refusal why, std::string what = {})
        : refusal(std::move(why)), failure(std::move(what))
    {
    }

    char const* what() const noexcept override { return "The edit was refused."; }

    Refusal const refusal;
    std::string const
        failure; ///< What was not done, a sentence to precede the reason; mostly none.
};

/// What an edit made. Throws RefusedEdit when it was refused.
template <class T>
T accepted(Outcome<T> outcome, std::string const& failure = {})
{
    if (!outcome)
        throw RefusedEdit(outcome.refusal(), failure);
    return std::move(*outcome);
}

} // namespace framewright
