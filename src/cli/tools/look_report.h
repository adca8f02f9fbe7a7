#pragma once

#include "model/project.h"
#include "text/font_registry.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace framewright {

/// The fonts that others stand in for, each with what stands in: those that should have come with
/// the application, with what is wrong with them, and those that texts and captions of the project
/// name, with where. Empty when every font is there.
nlohmann::json fontReportJSON(Project const& project, FontRegistry const& fonts);

/// What in the looks of texts and captions is not drawn as it stands, letters that no font has
/// included, and where: "t1:2, s1: fontSize of Classic is 8 to 240; 900 was taken as 240."
std::vector<std::string> oddLooks(Project const& project, FontRegistry const& fonts);

} // namespace framewright
