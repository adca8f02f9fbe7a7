#include "platform/clock.h"

#include <array>
#include <ctime>

namespace framewright {

std::string iso8601(std::chrono::system_clock::time_point time)
{
    auto const whole = std::chrono::floor<std::chrono::seconds>(time);
    std::time_t const seconds = std::chrono::system_clock::to_time_t(whole);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 40> text;
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

} // namespace framewright
