#pragma once

#include "media/mastering_display.h"

#include <optional>
#include <string>

struct AVStream;

namespace framewright {

/// From the stream's container; nothing when it is missing or incomplete.
std::optional<MasteringDisplay> masteringDisplayOf(AVStream const& stream);

/// Throws std::bad_alloc.
void setMasteringDisplay(AVStream& stream, MasteringDisplay const& display);

/// The encoder option with which x265 writes it into the bit stream.
std::string masteringParameter(MasteringDisplay const& display);

} // namespace framewright
