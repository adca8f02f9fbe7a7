#pragma once

#include "model/outcome.h"

#include <stdexcept>
#include <utility>

namespace framewright {

/// Why a command failed: `what()` is the whole sentence its caller reads.
class ToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What an edit gave. Throws the sentence of a refused one as ToolError.
template <class T>
T accepted(Outcome<T> outcome)
{
    if (!outcome)
        throw ToolError(outcome.refusal());
    return std::move(*outcome);
}

} // namespace framewright
