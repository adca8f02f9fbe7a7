#pragma once

#include "media/mastering_display.h"

#include <optional>
#include <string>

struct AVStream;

namespace framewright {

/// What a stream's container says of it; nothing when that is missing or incomplete.
std::optional<MasteringDisplay> masteringDisplayOf(AVStream const& stream);

/// Has the container say it. Throws std::bad_alloc.
void setMasteringDisplay(AVStream& stream, MasteringDisplay const& display);

/// As x265 wants to be told of it, for the stream itself.
std::string masteringParameter(MasteringDisplay const& display);

} // namespace framewright
