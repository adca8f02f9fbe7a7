#include "editor/files/project_files.h"

#include "model/file_url.h"
#include "workspace/workspace.h"

namespace framewright {

namespace {

using namespace std::chrono_literals;

/// Edits in quick succession postpone the save, but by no more than 1.25 s after the first:
/// acknowledged work must not stay at risk while somebody keeps editing.
constexpr SyncTiming saveTiming{1000ms, 1250ms};

} // namespace

ProjectFiles::ProjectFiles(Document& document, MediaPool& media, UserDefaults& defaults,
                           QObject* parent)
    : QObject(parent),
      m_document(document),
      m_media(media),
      m_defaults(defaults),
      m_recovery(defaults),
      m_sync(projectFileForm(),
             {.value = [this] { return stored(); },
              .take = [this](Decoded<StoredProject> const& theirs,
                             StoredProject const*) { return takeOutsideEdit(theirs); },
              .describe = [this](FileTrouble const& trouble) { return sentenceOf(trouble); }},
             saveTiming)
{
    connect(&document, &Document::changed, this, &ProjectFiles::follow);
    connect(&m_sync, &FileSync::problemChanged, this, &ProjectFiles::problemChanged);
    connect(&m_sync, &FileSync::saved, this, [this] {
        setOpeningProblem({});
        emit saved();
    });
}

ProjectFiles::~ProjectFiles() = default;

void ProjectFiles::follow(ProjectChange const& change)
{
    using Kind = ProjectChange::Kind;
    if (change.kind != Kind::opened && change.kind != Kind::closed)
        m_sync.valueChanged();
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

std::string const& ProjectFiles::problem() const
{
    return m_sync.problem().empty() ? m_openingProblem : m_sync.problem();
}

void ProjectFiles::setOpeningProblem(std::string problem)
{
    if (problem == m_openingProblem)
        return;
    m_openingProblem = std::move(problem);
    emit problemChanged();
}

} // namespace framewright
