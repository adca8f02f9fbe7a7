#pragma once

#include "model/outcome.h"
#include "model/project.h"
#include "model/random_dice.h"

namespace framewright {

/// An editing operation with arguments that the dice choose.
///
/// Throws std::logic_error when the result says other than what the project shows.
struct Operation {
    char const* name;
    Outcome<Project> (*apply)(Project const&, Dice&);
};

/// One of all operations, so that the project neither runs empty nor grows without end.
Operation const& chosenOperation(Project const& project, Dice& dice);

} // namespace framewright
