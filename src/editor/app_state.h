#pragma once

#include "editor/project_file.h"
#include "editor/undo_history.h"
#include "model/outcome.h"
#include "model/project.h"
#include "platform/user_defaults.h"
#include "render/asset_store.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace framewright {

/// Whether a change alters what is seen or heard, so that what plays must be built anew.
enum class Rebuild { yes, no };

/// The editor's state: the one open project, and everything that may happen to it.
///
/// It is the only writer of the project. Every change passes through `commit`, which makes it one
/// undo step, marks the project dirty, and has it saved a second later. A refused edit returns its
/// sentence and changes nothing. Main thread only.
class AppState : public QObject {
    Q_OBJECT

public:
    explicit AppState(UserDefaults& defaults, QObject* parent = nullptr);
    ~AppState() override;

    // What is open -----------------------------------------------------------------------------

    bool isOpen() const { return m_isOpen; }
    Project const& project() const { return m_project; }
    /// Where it is kept; nothing for a project that was never saved.
    std::optional<std::filesystem::path> const& projectFile() const { return m_projectFile; }
    std::string projectName() const;
    bool isDirty() const { return m_isDirty; }
    double currentTime() const { return m_currentTime; }
    std::optional<Id> const& selectedClip() const { return m_selectedClip; }
    std::optional<Id> const& activeTrack() const { return m_activeTrack; }
    /// The last thing that went wrong behind the user's back, such as a save; empty when all is well.
    std::string const& errorMessage() const { return m_errorMessage; }
    /// Keys in the project's file that this version does not know and that a save drops.
    std::vector<std::string> const& unknownKeys() const { return m_unknownKeys; }

    UserDefaults& defaults() { return m_defaults; }

    // Media ------------------------------------------------------------------------------------

    /// The opened files, as far as they have been. See `assetsLoaded`.
    AssetStore const& assets() const { return m_assets; }

    /// Ends when every file of the project has been looked into, or found missing.
    QCoro::Task<void> assetsLoaded();

    /// Why an asset's file could not be opened; nothing when it could.
    std::optional<std::string> assetProblem(Id const& id) const;

    /// Files that were looked into and can become part of the project.
    struct Imported {
        MediaAsset asset;
        LoadedAsset loaded;
        bool isNew = true; ///< Not yet among the project's assets.
    };

    /// Looks into a file. The project is not changed until the result is added by an edit. A file
    /// that the project has already keeps its asset. Throws MediaError.
    QCoro::Task<Imported> inspect(std::filesystem::path file);

    /// Registers files without placing them, as one step. Gives the assets in the files' order.
    std::vector<MediaAsset> importFiles(std::vector<Imported> const& files);

    // Editing ----------------------------------------------------------------------------------

    /// The one way to change the open project.
    void commit(Project project, std::string const& actionName,
                std::optional<double> seekTo = std::nullopt, Rebuild rebuild = Rebuild::yes);

    /// What was undone or redone; nothing when there is nothing to.
    std::optional<std::string> undo();
    std::optional<std::string> redo();
    UndoHistory const& history() const { return m_history; }

    void seek(double time);
    void select(std::optional<Id> clip);

    // Files ------------------------------------------------------------------------------------

    /// Starts a project kept at `file`, writes it, and opens it. Throws ProjectFileError.
    QCoro::Task<void> startProject(std::filesystem::path file, Project project);

    /// Opens a project. What was open is saved first. Throws ProjectFileError, and then what was
    /// open stays open.
    QCoro::Task<void> openProject(std::filesystem::path file);

    /// Saves now, when there is something to save. False when it failed; see `errorMessage`.
    QCoro::Task<bool> saveNow();

    /// The same, blocking: for the last moment before the process ends.
    bool saveBeforeQuitting();

signals:
    void projectChanged();
    void compositionOutdated();
    void dirtyChanged(bool isDirty);
    void errorMessageChanged();
    void saved();

private:
    void setProject(Project project, std::optional<double> seekTo, Rebuild rebuild);
    void reconcileSelection();
    void setDirty(bool isDirty);
    void setErrorMessage(std::string message);

    void adopt(ReadProject read, std::filesystem::path const& file);
    void loadAssets();
    void addLoaded(MediaAsset const& asset, LoadedAsset loaded);

    void scheduleSave();
    QCoro::Task<bool> saveWorkspaceProject();
    void takeSaveResult(SaveResult const& result, std::uint64_t revision);
    void takeOutsideEdit();

    UserDefaults& m_defaults;

    bool m_isOpen = false;
    Project m_project;
    std::optional<std::filesystem::path> m_projectFile;
    std::optional<ContentMark> m_diskMark; ///< Of the file as we last read or wrote it.
    std::vector<std::string> m_unknownKeys;
    UndoHistory m_history;

    bool m_isDirty = false;
    std::uint64_t m_revision = 0; ///< Counts changes, so that a save knows what it has saved.
    double m_currentTime = 0;
    std::optional<Id> m_selectedClip;
    std::optional<Id> m_activeTrack;
    std::string m_errorMessage;

    AssetStore m_assets;
    std::map<Id, std::string> m_assetProblems;
    std::uint64_t m_loadingRound = 0;
    bool m_isLoadingAssets = false;

    QTimer m_saveTimer;
    std::chrono::steady_clock::time_point m_dirtySince;
    bool m_isSaving = false;
};

} // namespace framewright
