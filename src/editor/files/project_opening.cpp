// Opening, closing and recovering the project of a ProjectFiles.

#include "editor/files/project_files.h"

#include "model/file_url.h"
#include "tasks/on_worker.h"
#include "workspace/workspace.h"

#include <QPointer>

namespace framewright {

namespace {

/// The last open project.
constexpr char const* openKey = "project.open";
/// How many starts in a row crashed while opening it.
constexpr char const* attemptsKey = "project.openAttempts";
/// A project that crashes the editor this often is no longer reopened at the start.
constexpr int mostAttempts = 3;
/// How often a project that is edited meanwhile is saved before it is left.
constexpr int mostSaves = 20;

/// As a URL: settings are text, and a path may be any bytes.
void rememberOpen(std::filesystem::path const& file, UserDefaults& defaults)
{
    defaults.setString(openKey, FileURL{file.string()}.text());
}

/// Projects of a workspace are saved automatically, others on request.
FileSync::Saving usualSaving(std::filesystem::path const& file)
{
    return Workspace::isProjectDocument(file) ? FileSync::Saving::automatic
                                              : FileSync::Saving::onRequest;
}

} // namespace

QCoro::Task<void> ProjectFiles::create(std::filesystem::path file, Project project)
{
    auto const create = [file, project] { return createProject(file, project); };
    ReadProject read = co_await onWorker(create);
    leave();
    adopt(std::move(read), file, usualSaving(file));
}

QCoro::Task<void> ProjectFiles::open(std::filesystem::path file)
{
    ReadProject read = co_await readOnWorker(file);
    leave();
    adopt(std::move(read), file, usualSaving(file));
}

void ProjectFiles::reopenLast()
{
    auto const text = m_defaults.string(openKey);
    auto const url = text ? FileURL::parse(*text) : std::nullopt;
    if (!url)
        return;
    double const attempts = m_defaults.number(attemptsKey).value_or(0);
    if (attempts >= mostAttempts) {
        m_defaults.remove(attemptsKey);
        setOpeningProblem("Framewright ended several times while opening " + validUtf8(url->path) +
                          "; it was not opened again.");
        return;
    }
    m_defaults.setNumber(attemptsKey, attempts + 1);
    try {
        adopt(readProject(url->path), url->path, usualSaving(url->path));
    } catch (ProjectFileError const& error) {
        setOpeningProblem(error.what());
        m_defaults.remove(attemptsKey);
    }
}

void ProjectFiles::adopt(ReadProject read, std::optional<std::filesystem::path> const& file,
                         FileSync::Saving saving)
{
    m_file = file;
    m_media.setPlaces(
        {file ? file->parent_path() : std::filesystem::path(), read.decoded.value.refs});
    m_document.open(read.project());
    setOpeningProblem({});
    m_recovery.rememberOrigin(file);
    if (file) {
        m_sync.bind(*file, std::move(read.decoded), std::move(read.mark), saving);
        rememberOpen(*file, m_defaults);
        checkWatching();
    } else {
        m_sync.detach();
    }
    loadMedia();
}

QCoro::Task<void> ProjectFiles::loadMedia()
{
    // Kept until the media are open, since opening them may crash the editor, too.
    QPointer<ProjectFiles> const self(this);
    co_await m_media.load();
    if (self)
        m_defaults.remove(attemptsKey);
}

void ProjectFiles::checkWatching()
{
    if (!isInWorkspace())
        return;
    // Also while a restored copy waits to be saved: what others write meanwhile is taken in.
    m_sync.watchFile();
    if (!m_sync.isWatching())
        setOpeningProblem("The project's folder can't be watched; changes by other programs are "
                          "only seen when the project is saved or opened.");
}

void ProjectFiles::followTo(std::filesystem::path file)
{
    // Media inside the project's folder moved with it.
    std::map<Id, std::filesystem::path> moved;
    if (m_file) {
        for (auto const& [id, asset] : *m_document.project().assets) {
            std::filesystem::path const inside =
                std::filesystem::path(asset.url.path).lexically_relative(m_file->parent_path());
            if (!inside.empty() && *inside.begin() != "..")
                moved[id] = file.parent_path() / inside;
        }
    }
    m_file = std::move(file);
    m_media.setPlaces({m_file->parent_path(), m_media.places().refs});
    rememberOpen(*m_file, m_defaults);
    m_recovery.rememberOrigin(m_file);
    m_sync.followTo(*m_file);
    checkWatching();
    if (moved.empty())
        return;
    m_media.relocate(moved);
    loadMedia();
}

void ProjectFiles::forgetAssetRefs()
{
    m_media.setPlaces({m_media.places().projectFolder, {}});
}

QCoro::Task<Outcome<Done>> ProjectFiles::prepareToLeave(Unsaved unsaved)
{
    if (!m_document.isOpen())
        co_return Done();
    // Other commands may edit while it is saved.
    for (int n = 0; n < mostSaves && isInWorkspace() && isDirty(); ++n) {
        try {
            co_await save();
        } catch (ProjectFileError const&) {
            break; // `problem` reports it.
        }
    }
    if (!isDirty())
        co_return Done();
    // Its recovery copy stays until the project is really left.
    if (unsaved == Unsaved::discard)
        co_return Done();
    co_return isInWorkspace() ? Refusal{Reason::saveFailed, Subject::named(problem())}
                              : Refusal{Reason::unsavedChanges, Subject::named(projectName())};
}

QCoro::Task<Outcome<Done>> ProjectFiles::close(Unsaved unsaved)
{
    auto const ready = co_await prepareToLeave(unsaved);
    if (ready)
        closeNow();
    co_return ready;
}

/// The open project is saved, or its changes are not wanted: no copy of them may come back.
void ProjectFiles::leave()
{
    m_sync.detach();
    m_recovery.clear();
}

void ProjectFiles::closeNow()
{
    leave();
    m_file.reset();
    m_media.setPlaces({});
    m_document.close();
    setOpeningProblem({});
    m_defaults.remove(openKey);
    m_recovery.rememberOrigin(std::nullopt);
}

QCoro::Task<Outcome<Done>> ProjectFiles::restoreRecovery()
{
    if (!m_recovery.waiting())
        co_return Refusal{Reason::noRecoveryCopy};
    Recovery::Waiting const waiting = *m_recovery.waiting();
    ReadProject read = co_await readOnWorker(waiting.file);

    // Reads the project's own file, so that saving replaces it unless it has changed since.
    read.mark.clear(); // Matches no content.
    if (waiting.origin) {
        try {
            ReadProject const there = co_await readOnWorker(*waiting.origin);
            read.mark = there.mark;
        } catch (ProjectFileError const&) {
            // Missing or invalid: the copy is all that is left.
        }
    }
    leave();
    m_recovery.adoptWaiting();
    adopt(std::move(read), waiting.origin, FileSync::Saving::onRequest);
    m_sync.valueChanged();
    co_return Done();
}

Outcome<Done> ProjectFiles::discardRecovery()
{
    if (!m_recovery.waiting())
        return Refusal{Reason::noRecoveryCopy};
    m_recovery.discardWaiting();
    m_recovery.rememberOrigin(m_file);
    return Done();
}

} // namespace framewright
