#pragma once

#include "model/project.h"

#include <cstdint>
#include <string>
#include <vector>

namespace framewright {

/// Projects of varied shape to start random edits from.
std::vector<Project> variedProjects();

/// What a run of random edits did, and what it broke.
struct RandomEdits {
    std::uint32_t seed = 0;
    long operations = 0;
    long refusals = 0;
    std::string problem; ///< Empty when every rule held after every edit.
};

/// Edits a project at random, undoing and redoing between, and checks after every operation that
/// the rules of tracks and clips hold, that a refused edit and an edit's original are unchanged,
/// and that locked tracks are untouched. Stops at the first problem.
///
/// Equal arguments make equal runs.
RandomEdits editAtRandom(Project project, std::uint32_t seed, long operations);

/// The first rule that a project breaks, in words; empty when it keeps them all.
std::string brokenRule(Project const& project);

} // namespace framewright
