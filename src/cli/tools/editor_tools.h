#pragma once

#include "cli/reference_context.h"
#include "cli/tool.h"
#include "editor/commands/editing.h"
#include "editor/export_session.h"
#include "stills/still_frames.h"
#include "styles/style_store.h"
#include "text/font_registry.h"

#include <functional>
#include <vector>

namespace framewright {

/// What tools work with. All of it outlives them.
struct EditorTools {
    Editing editing; ///< Its author is the command line.
    ExportSession& exports;
    StillFrames& stills;
    StyleStores& styles;
    FontRegistry const& fonts;
    std::function<void()> quit; ///< Ends the editor soon after it returns.
};

/// Resolves the names that commands use for things in the open project.
class EditorReferences : public ReferenceContext {
public:
    EditorReferences(AppState const& editor, FontRegistry const& fonts)
        : m_editor(editor), m_fonts(fonts)
    {
    }

    Project const& project() const override;
    double playhead() const override;
    double timelineEnd() const override;
    std::vector<std::string> const& installedFonts() const override;

private:
    AppState const& m_editor;
    FontRegistry const& m_fonts;
};

/// Every command, in the order of the help.
std::vector<Tool> allTools(EditorTools tools);

// Its families.
std::vector<Tool> readingTools(EditorTools tools);
std::vector<Tool> projectTools(EditorTools tools);
std::vector<Tool> projectFolderTools(EditorTools tools);
std::vector<Tool> mediaTools(EditorTools tools);
std::vector<Tool> trackTools(EditorTools tools);
std::vector<Tool> clipTools(EditorTools tools);
std::vector<Tool> clipChangingTools(EditorTools tools);
std::vector<Tool> textTools(EditorTools tools);
std::vector<Tool> styleTools(EditorTools tools);
std::vector<Tool> frameTools(EditorTools tools);
std::vector<Tool> viewTools(EditorTools tools);

/// Throws ToolError when no project is open.
void requireProject(AppState const& editor);

} // namespace framewright
