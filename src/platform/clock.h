#pragma once

#include <chrono>
#include <string>

namespace framewright {

/// A time as ISO 8601 in UTC, to the second: "2026-11-22T09:30:00Z".
std::string iso8601(std::chrono::system_clock::time_point time);

} // namespace framewright
