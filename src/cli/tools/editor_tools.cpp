#include "cli/tools/editor_tools.h"

#include <iterator>

namespace framewright {

Project const& EditorReferences::project() const
{
    requireProject(m_editor);
    return m_editor.project();
}

double EditorReferences::playhead() const
{
    return m_editor.selection().playhead();
}

double EditorReferences::timelineEnd() const
{
    return m_editor.project().videoDuration();
}

std::vector<std::string> const& EditorReferences::installedFonts() const
{
    return m_fonts.installedNames();
}

std::vector<Tool> allTools(EditorTools tools)
{
    std::vector<Tool> all;
    for (auto* const family :
         {readingTools, projectTools, projectFolderTools, mediaTools, trackTools, clipTools,
          clipChangingTools, textTools, styleTools, frameTools, viewTools}) {
        std::vector<Tool> more = family(tools);
        std::ranges::move(more, std::back_inserter(all));
    }
    return all;
}

void requireProject(AppState const& editor)
{
    if (!editor.isOpen())
        throw RefusedEdit({Reason::noProject});
}

} // namespace framewright
