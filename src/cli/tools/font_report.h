#pragma once

#include "model/project.h"
#include "text/font_registry.h"

#include <nlohmann/json.hpp>

namespace framewright {

/// The fonts that others stand in for, each with what stands in: those that should have come with
/// the application, with what is wrong with them, and those that texts and captions of the project
/// name, with where. Empty when every font is there.
nlohmann::json fontReportJSON(Project const& project, FontRegistry const& fonts);

} // namespace framewright
