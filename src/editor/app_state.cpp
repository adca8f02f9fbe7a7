#include "editor/app_state.h"

#include "workspace/workspace.h"

namespace framewright {

AppState::AppState(UserDefaults& defaults, QObject* parent)
    : QObject(parent),
      m_defaults(defaults),
      m_selection(m_document),
      m_media(m_document),
      m_files(m_document, m_media, defaults)
{
}

void AppState::commit(Project project, std::string const& step, Author author)
{
    m_document.commit(std::move(project), step, author);
}

void AppState::setWorkspace(std::filesystem::path const& folder)
{
    Workspace::setUrl(folder, m_defaults);
    Workspace::remember(folder, m_defaults);
    emit workspaceChanged();
}

} // namespace framewright
