#include "cli/progress.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>

namespace framewright {

namespace {

constexpr std::chrono::milliseconds betweenReports{100};

}

struct Progress::State {
    Receiver receiver;
    Clock clock;
    std::mutex mutex{}; ///< Held while receiving, so that reports arrive in their order.
    std::string stage{};
    std::optional<std::chrono::steady_clock::time_point> last{};
};

Progress::Progress(Receiver receiver, Clock clock)
    : m_state(new State{.receiver = std::move(receiver), .clock = std::move(clock)})
{
}

void Progress::report(double fraction, std::string_view stage) const
{
    if (!m_state)
        return;
    State& state = *m_state;
    std::lock_guard const lock(state.mutex);
    auto const now = state.clock();
    if (state.last && state.stage == stage && now - *state.last < betweenReports)
        return;
    state.last = now;
    state.stage = stage;
    state.receiver(std::clamp(fraction, 0.0, 1.0), state.stage);
}

} // namespace framewright
