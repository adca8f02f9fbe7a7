#pragma once

#include <optional>
#include <string>

namespace framewright {

/// Works out how long something will still take, in figures that people can watch: they count
/// down, and go up only when it has clearly become slower.
class RemainingTime {
public:
    /// The seconds left when `fraction` of the work took `elapsed` seconds. Nothing while too
    /// little is done to tell.
    std::optional<double> after(double fraction, double elapsed);

private:
    std::optional<double> m_end; ///< The expected length of the whole, as it was told last.
};

/// "12 s left", "3 min left".
std::string timeLeft(double seconds);

} // namespace framewright
