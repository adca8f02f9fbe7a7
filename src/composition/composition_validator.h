#pragma once

#include "composition/composition.h"

#include <optional>
#include <string>

namespace framewright {

/// Looks whether a composition can be played: that its instructions follow each other over the
/// whole piece, and that every layer's track exists and has a picture throughout.
class CompositionValidator {
public:
    /// What is wrong first, as a sentence; nothing when all is well.
    static std::optional<std::string> problem(BuiltComposition const& composition);
};

} // namespace framewright
