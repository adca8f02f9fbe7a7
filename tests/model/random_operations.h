#pragma once

#include "model/outcome.h"
#include "model/project.h"
#include "model/random_dice.h"

namespace framewright {

/// An editing operation with arguments that the dice choose.
///
/// Throws std::logic_error when the result contradicts its project.
struct Operation {
    char const* name;
    Outcome<Project> (*apply)(Project const&, Dice&);
};

/// One of all operations, chosen so that the project neither empties nor grows without bound.
Operation const& chosenOperation(Project const& project, Dice& dice);

} // namespace framewright
