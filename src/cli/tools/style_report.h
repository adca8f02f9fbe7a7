#pragma once

#include "model/project.h"
#include "text/font_registry.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace framewright {

/// The fonts that are replaced by others, each with its replacement: carried fonts that are missing
/// or damaged, and fonts that texts and captions of the project name, with where. Empty when every
/// font is there.
nlohmann::json fontReportJSON(Project const& project, FontRegistry const& fonts);

/// Invalid values in the styles of texts and captions, and letters that no font has, with where:
/// "t1:2, s1: fontSize of Classic is 8 to 240; 900 was changed to 240."
std::vector<std::string> invalidStyles(Project const& project, FontRegistry const& fonts);

} // namespace framewright
