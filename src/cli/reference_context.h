#pragma once

#include "model/project.h"

#include <string>
#include <vector>

namespace framewright {

/// What the words of a command are understood against: "v1:2", "end", "playhead".
///
/// The editor implements it. Asked on the main thread, at the moment an option is read.
class ReferenceContext {
public:
    virtual ~ReferenceContext() = default;

    /// The open project. Throws ToolError when there is none.
    virtual Project const& project() const = 0;
    virtual double playhead() const = 0;
    virtual double timelineEnd() const = 0;
    /// The PostScript names of all fonts there are, sorted.
    virtual std::vector<std::string> const& installedFonts() const = 0;
};

} // namespace framewright
