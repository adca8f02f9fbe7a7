#pragma once

#include "editor/document/document.h"
#include "editor/files/project_file.h"
#include "editor/files/recovery.h"
#include "editor/media_pool/media_pool.h"
#include "model/outcome.h"
#include "platform/user_defaults.h"
#include "sync/synced_file.h"

#include <QCoro/QCoroTask>
#include <QObject>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// The file that the open project is kept in: opened, saved after each change, kept in step with
/// what other programs write, and backed by a recovery copy.
///
/// A project of a workspace is saved automatically one second after a change, at the latest 1.25 s
/// after the first of several. Any other project is saved on request; until then its changes are
/// in a recovery copy. Main thread only. May be destroyed while it reads or writes.
class ProjectFiles : public QObject {
    Q_OBJECT

public:
    ProjectFiles(Document& document, MediaPool& media, UserDefaults& defaults,
                 QObject* parent = nullptr);
    ~ProjectFiles() override;

    /// Where the project is kept; nothing for one that was never saved.
    std::optional<std::filesystem::path> const& file() const { return m_file; }
    /// "Hook v2", after the project's folder in a workspace, else after its file.
    std::string projectName() const;
    bool isInWorkspace() const;
    /// Whether the project differs from what was last read or written.
    bool isDirty() const { return m_sync.isDirty(); }
    /// What keeps the project from being opened, watched, read or saved, as one sentence; empty
    /// while all is well.
    std::string const& problem() const;
    /// Keys of the project's file that this version does not know and that a save drops.
    std::vector<std::string> const& unknownKeys() const { return m_sync.unknownKeys(); }
    Recovery const& recovery() const { return m_recovery; }

    /// Writes a new project to `file`, where there is none yet, and opens it. Throws
    /// ProjectFileError.
    QCoro::Task<void> create(std::filesystem::path file, Project project);

    /// Opens a project in place of the open one, discarding unsaved changes: see `prepareToLeave`.
    /// Throws ProjectFileError; then the open project stays open.
    QCoro::Task<void> open(std::filesystem::path file);

    /// Opens the project that was open when the editor last ran. Blocks: for the start, before
    /// there is anybody to wait. When it can't be opened, none is, and `problem` says why.
    void reopenLast();

    /// Writes the project to its own file, also one outside any workspace. Ends when every change
    /// made before the call is on disk. Throws ProjectFileError.
    QCoro::Task<void> save();

    /// The same for a project of a workspace, blocking, right before the process ends; others get a
    /// recovery copy. Throws ProjectFileError when the project's own file does
    /// not hold all changes afterwards.
    void saveBeforeQuitting();

    enum class Unsaved { keep, discard };

    /// Saves what can be saved before the open project is left. Refused when changes remain that
    /// must not be discarded.
    QCoro::Task<Outcome<Done>> prepareToLeave(Unsaved unsaved);

    /// The same, and closes the project.
    QCoro::Task<Outcome<Done>> close(Unsaved unsaved);

    /// Drops changes that are not saved, with their recovery copy. Only right before the editor
    /// ends: the project stays open, but is no longer kept.
    void abandonChanges() { leave(); }

    /// The project moved with its folder, or gets its first file: that one is written and watched
    /// from now on.
    void followTo(std::filesystem::path file);

    /// The files of assets were replaced, so the references stored for them are out of date.
    void forgetAssetRefs();

    /// Opens the waiting recovery copy. Saving writes it to its project's file; until then it stays
    /// the recovery copy. Throws ProjectFileError; refused when none is
    /// waiting.
    QCoro::Task<Outcome<Done>> restoreRecovery();

    /// Deletes the copy that is waiting. Refused when none is.
    Outcome<Done> discardRecovery();

signals:
    /// The file holds the project as it was when the save began.
    void saved();
    void problemChanged();

private:
    void follow(ProjectChange const& change);
    void adopt(ReadProject read, std::optional<std::filesystem::path> const& file,
               FileSync::Saving saving);
    void closeNow();
    void leave();
    void checkWatching();
    QCoro::Task<void> loadMedia();
    void setOpeningProblem(std::string problem);

    StoredProject stored() const;
    Taken takeOutsideEdit(Decoded<StoredProject> const& theirs);
    std::string sentenceOf(FileTrouble const& trouble) const;

    Document& m_document;
    MediaPool& m_media;
    UserDefaults& m_defaults;
    Recovery m_recovery;
    std::optional<std::filesystem::path> m_file;
    std::string m_openingProblem; ///< Until another project is opened or saved.
    SyncedFile<StoredProject> m_sync;
};

} // namespace framewright
