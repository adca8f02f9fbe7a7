#pragma once

#include "cli/reference_context.h"
#include "cli/tool.h"
#include "editor/app_state.h"
#include "editor/export_session.h"
#include "stills/still_frames.h"
#include "styles/style_store.h"
#include "text/font_registry.h"

#include <functional>
#include <vector>

namespace framewright {

/// What the commands work with. All of it outlives them.
struct EditorTools {
    AppState& editor;
    ExportSession& exports;
    StillFrames& stills;
    StyleStores& styles;
    FontRegistry const& fonts;
    std::function<void()> quit; ///< Ends the editor soon after it returns.
};

/// The names that commands use for things, understood against the open project.
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
std::vector<Tool> lookTools(EditorTools tools);
std::vector<Tool> pictureTools(EditorTools tools);
std::vector<Tool> viewTools(EditorTools tools);

/// Throws ToolError when no project is open.
void requireProject(AppState const& editor);

} // namespace framewright
