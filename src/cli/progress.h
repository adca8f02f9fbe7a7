#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace framewright {

/// Tells whoever waits for a long command how far it is.
///
/// Reports may come as often as work is done: about ten a second are passed on, and every first one
/// of a new stage. Copies report to the same place, from any thread.
class Progress {
public:
    using Receiver = std::function<void(double fraction, std::string const& stage)>;
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// Reports to nobody.
    Progress() = default;

    /// `receiver` is called on the reporting thread, one call at a time.
    explicit Progress(Receiver receiver, Clock clock = std::chrono::steady_clock::now);

    /// `fraction` from 0 to 1; `stage` says what is being done ("Encoding").
    void report(double fraction, std::string_view stage) const;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace framewright
