#include "editor/files/project_files.h"

#include "model/file_url.h"
#include "workspace/workspace.h"

namespace framewright {

ProjectFiles::ProjectFiles(Document& document, MediaPool& media, UserDefaults& defaults,
                           QObject* parent)
    : QObject(parent),
      m_document(document),
      m_media(media),
      m_defaults(defaults),
      m_recovery(defaults)
{
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_saveTimer, &QTimer::timeout, this, [this] { saveByItself(); });
    connect(&document, &Document::changed, this, &ProjectFiles::follow);
}

ProjectFiles::~ProjectFiles() = default;

void ProjectFiles::follow(ProjectChange const& change)
{
    using Kind = ProjectChange::Kind;
    if (change.kind == Kind::opened || change.kind == Kind::closed)
        return;
    if (m_savedRevision == m_document.revision() - 1)
        m_unsavedSince = std::chrono::steady_clock::now();
    scheduleSave();
}

std::string ProjectFiles::projectName() const
{
    if (!m_file)
        return "Untitled";
    return validUtf8(m_file->filename() == "project.json"
                         ? m_file->parent_path().filename().string()
                         : m_file->stem().string());
}

bool ProjectFiles::isInWorkspace() const
{
    return m_file && Workspace::isProjectDocument(*m_file);
}

void ProjectFiles::setProblem(std::string problem)
{
    if (problem == m_problem)
        return;
    m_problem = std::move(problem);
    emit problemChanged();
}

} // namespace framewright
