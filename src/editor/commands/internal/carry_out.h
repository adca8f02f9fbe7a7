#pragma once

#include "editor/commands/editing.h"

#include <string>

namespace framewright {

inline Project const& projectOf(Project const& edit)
{
    return edit;
}

template <class Edit>
Project const& projectOf(Edit const& edit)
{
    return edit.project;
}

/// Commits an edit that was not refused as one step, unless it changed nothing. Refused when no
/// project is open, whatever the edit's outcome.
template <class Edit>
Outcome<Edit> carryOut(Editing editing, Outcome<Edit> edit, std::string const& step)
{
    if (!editing.state.isOpen())
        return Refusal{Reason::noProject};
    if (edit && !(projectOf(*edit) == editing.project()))
        editing.state.commit(projectOf(*edit), step, editing.author);
    return edit;
}

} // namespace framewright
