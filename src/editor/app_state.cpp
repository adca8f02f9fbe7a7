#include "editor/app_state.h"

#include "model/file_url.h"
#include "workspace/workspace.h"

#include <algorithm>

namespace framewright {

AppState::AppState(UserDefaults& defaults, QObject* parent)
    : QObject(parent), m_defaults(defaults), m_recovery(defaults)
{
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_saveTimer, &QTimer::timeout, this, [this] { saveOrAutosave(); });
}

AppState::~AppState() = default;

std::string AppState::projectName() const
{
    if (!m_projectFile)
        return "Untitled";
    std::filesystem::path const& file = *m_projectFile;
    return validUtf8(file.filename() == "project.json" ? file.parent_path().filename().string()
                                                       : file.stem().string());
}

bool AppState::isWorkspaceProject() const
{
    return m_projectFile && Workspace::isProjectDocument(*m_projectFile);
}

void AppState::setWorkspace(std::filesystem::path const& folder)
{
    Workspace::setUrl(folder, m_defaults);
    Workspace::remember(folder, m_defaults);
    emit workspaceChanged();
}

void AppState::commit(Project project, std::string const& actionName, std::optional<double> seekTo,
                      Rebuild rebuild)
{
    m_history.record(m_project, project, actionName);
    setProject(std::move(project), seekTo, rebuild);
}

std::optional<std::string> AppState::undo()
{
    auto step = m_history.undo(m_project);
    if (!step)
        return std::nullopt;
    setProject(std::move(step->project), std::nullopt, Rebuild::yes);
    return std::move(step->actionName);
}

std::optional<std::string> AppState::redo()
{
    auto step = m_history.redo(m_project);
    if (!step)
        return std::nullopt;
    setProject(std::move(step->project), std::nullopt, Rebuild::yes);
    return std::move(step->actionName);
}

void AppState::setProject(Project project, std::optional<double> seekTo, Rebuild rebuild)
{
    m_project = std::move(project);
    ++m_revision;
    setDirty(true);
    if (seekTo)
        seek(*seekTo);
    if (rebuild == Rebuild::yes)
        emit compositionOutdated();
    reconcileSelection();
    emit projectChanged();
    scheduleSave();
}

void AppState::reconcileSelection()
{
    if (m_selectedClip && !findClip(m_project, *m_selectedClip))
        m_selectedClip.reset();
    if (m_selectedCaption && !trackOfCaption(*m_selectedCaption))
        m_selectedCaption.reset();
    if (m_activeTrack && !m_project.track(*m_activeTrack))
        m_activeTrack.reset();
    if (!m_activeTrack && !m_project.tracks.empty())
        m_activeTrack = m_project.tracks.front().id;
}

void AppState::seek(double time)
{
    m_currentTime = std::max(0.0, time);
}

void AppState::select(std::optional<Id> clip)
{
    m_selectedClip = clip;
    m_selectedCaption.reset();
    if (!clip)
        return;
    if (auto const place = findClip(m_project, *clip))
        m_activeTrack = place->track->id;
    else
        m_selectedClip.reset();
}

void AppState::selectCaption(Id const& bar)
{
    select(std::nullopt);
    if (Track const* const track = trackOfCaption(bar)) {
        m_selectedCaption = bar;
        m_activeTrack = track->id;
    }
}

Track const* AppState::trackOfCaption(Id const& bar) const
{
    for (Track const& track : m_project.tracks) {
        if (!track.subtitles)
            continue;
        auto const& bars = (*track.subtitles)->bars;
        if (std::ranges::find(bars, bar, &CaptionBar::id) != bars.end())
            return &track;
    }
    return nullptr;
}

void AppState::setDirty(bool isDirty)
{
    if (isDirty && !m_isDirty)
        m_unsavedSince = std::chrono::steady_clock::now();
    if (isDirty == m_isDirty)
        return;
    m_isDirty = isDirty;
    emit dirtyChanged(isDirty);
}

void AppState::setErrorMessage(std::string message)
{
    if (message == m_errorMessage)
        return;
    m_errorMessage = std::move(message);
    emit errorMessageChanged();
}

} // namespace framewright
