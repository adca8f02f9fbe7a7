#pragma once

#include "cli/server.h"
#include "sample_project.h"

#include <functional>
#include <string>

namespace framewright {

/// A small editor with tools that try out the command line:
///
///     echo TEXT      prints the text
///     frame          one image; contact_sheet --count N: so many
///     fail           fails with "It failed."
///     big --size N   prints N letters
///     wait           reports progress, then waits until it is cancelled
///     status         prints the process's number
///     crash, quit    end the process
class ToyEditor {
public:
    ToyEditor();

    CLIServer& server() { return m_server; }

    std::function<void()> onWaiting = [] {}; ///< Called when `wait` waits.
    int cancelled = 0;                       ///< How often `wait` was cancelled.

private:
    std::vector<Tool> tools();
    Tool wait();

    SampleContext m_context;
    Toolbox m_toolbox;
    CLIServer m_server;
};

} // namespace framewright
