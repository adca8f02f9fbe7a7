#pragma once

#include "composition/asset_store.h"
#include "editor/asset_opening.h"
#include "editor/project_file.h"
#include "editor/recovery.h"
#include "editor/undo_history.h"
#include "media/media_info.h"
#include "model/clip_moving.h"
#include "model/clip_placing.h"
#include "model/clip_replacing.h"
#include "model/clip_sound.h"
#include "model/clip_trimming.h"
#include "model/outcome.h"
#include "model/project.h"
#include "model/text_editing.h"
#include "model/track_editing.h"
#include "platform/user_defaults.h"
#include "sync/file_watcher.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
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
///
/// It may be destroyed while it saves or opens media in the background: those tasks then end
/// without it. Tasks that a caller awaits must not outlive it.
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
    /// Whether it is kept in a workspace, and saved there after each change. Another project is
    /// saved when the user says so; until then a recovery copy holds its changes.
    bool isWorkspaceProject() const;
    bool isDirty() const { return m_isDirty; }
    double currentTime() const { return m_currentTime; }
    std::optional<Id> const& selectedClip() const { return m_selectedClip; }
    /// The selected caption bar; selecting a clip deselects it, and the other way round.
    std::optional<Id> const& selectedCaption() const { return m_selectedCaption; }
    std::optional<Id> const& activeTrack() const { return m_activeTrack; }
    /// The last thing that went wrong behind the user's back, such as a save; empty when all is
    /// well.
    std::string const& errorMessage() const { return m_errorMessage; }
    /// Keys in the project's file that this version does not know and that a save drops.
    std::vector<std::string> const& unknownKeys() const { return m_unknownKeys; }

    UserDefaults& defaults() { return m_defaults; }

    /// Makes a folder the current workspace, and the first of the recent ones.
    void setWorkspace(std::filesystem::path const& folder);

    // Media ------------------------------------------------------------------------------------

    /// The opened files, as far as they have been. See `assetsLoaded`.
    AssetStore const& assets() const { return m_assets; }

    /// Ends when every file of the project has been looked into, or found missing.
    QCoro::Task<void> assetsLoaded();

    /// What becomes of files that were not found, or could not be opened, the last time.
    enum class Missing {
        inPlace,  ///< They are looked for where they should be.
        searched, ///< They are looked for wherever they may be, and opened again. Takes longer.
    };

    /// Ends when `assets` and `assetProblem` tell of the project's files as they stand now: those
    /// that came, went or were replaced since they were opened have been opened again. Costs a look
    /// at each file's size and time, on a worker. What it finds is no step of the user's.
    QCoro::Task<void> refreshAssets(Missing missing = Missing::inPlace);

    /// Why an asset's file could not be opened; nothing when it could.
    std::optional<std::string> assetProblem(Id const& id) const;

    /// Files that were looked into and can become part of the project.
    struct Imported {
        MediaAsset asset;
        LoadedAsset loaded;
        FileIdentity seen; ///< The file as it stood then.
        bool isNew = true; ///< Not yet among the project's assets.
    };

    /// Looks into a file. The project is not changed until the result is added by an edit. A file
    /// that the project has already keeps its asset. Throws MediaError.
    QCoro::Task<Imported> inspect(std::filesystem::path file);

    /// The same for a file that the project has, as it was opened last. Nothing when it was not.
    std::optional<Imported> knownMedia(Id const& id) const;

    /// Registers files without placing them, as one step. Gives the assets in the files' order.
    std::vector<MediaAsset> importFiles(std::vector<Imported> const& files);

    /// The project with a file's asset in it, for an edit that places it in the same step.
    Project withAsset(Imported const& file);

    /// Copies the files that lie neither in the project's folder nor in one of `folders` into the
    /// project, and has it play the copies from now on, as one step. Gives the copies. Refused for
    /// a project outside any workspace; throws ProjectFileError, and then nothing has changed.
    QCoro::Task<Outcome<std::vector<std::filesystem::path>>>
    consolidateMedia(std::vector<std::filesystem::path> folders);

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
    void selectCaption(Id const& bar);

    // Clips. Each is one step under the name of its menu command; a refused one changes nothing.

    /// Places a new clip; `project` is the open one, or that with a file's asset added.
    Outcome<Placed> addClip(Project project, Clip clip, Id const& trackID, double time);
    Outcome<Placed> addPlaceholder(NewPlaceholder const& placeholder);
    Outcome<SplitClip> splitClip(std::optional<Id> const& clipID,
                                 std::optional<Id> const& fallbackTrack, double time);
    Outcome<Trimmed> trimClip(Id const& clipID, Trim const& trim);
    Outcome<Placed> moveClip(Id const& clipID, double time, std::optional<Id> const& toTrack);
    /// Slides which part of its file a clip plays.
    Outcome<Project> editRange(Id const& clipID, double sourceStart);
    Outcome<Removed> removeClips(std::span<Id const> clipIDs);
    Outcome<PlacedClips> duplicateClips(std::span<Id const> clipIDs);
    Outcome<Nudged> nudgeClips(std::span<Id const> clipIDs, double seconds);
    Outcome<DetachedAudio> detachAudio(Id const& clipID);

    enum class Fill { leaveRest, withPlaceholder };
    /// `project` is the open one, or that with a file's asset added.
    Outcome<Replaced> replaceClip(Project project, Id const& clipID, Replacement const& with,
                                  Fill fill);

    /// What a command changes about a clip; what is not given stays. One step for all of it.
    struct ClipChanges {
        std::optional<float> volume;
        std::optional<ClipTransform> transform;
        std::optional<std::string> placeholderName;
    };
    Outcome<Project> changeClip(Id const& clipID, ClipChanges const& changes);

    /// Puts a text over the picture; its ids are chosen here.
    Outcome<Placed> addText(NewText text);
    Outcome<Project> changeText(Id const& clipID, TextChanges const& changes);

    void copyClips(std::span<Id const> clipIDs);
    Outcome<PlacedClips> paste();

    // The same for what is selected, as the menu and the keyboard have it. Refused when nothing is.

    /// Cuts the selected clip, else the one of the active track, where the playhead is.
    Outcome<SplitClip> splitAtPlayhead();
    Outcome<Removed> deleteSelection();
    Outcome<PlacedClips> duplicateSelection();
    Outcome<CopiedClip> copySelection();
    Outcome<Nudged> nudgeSelection(double seconds);
    Outcome<Project> setSelectedTransform(ClipTransform const& transform);
    Outcome<Project> resetSelectedTransform();
    Outcome<Project> renamePlaceholder(Id const& clipID, std::string const& name);
    Outcome<Replaced> replacePlaceholder(Imported const& file, Id const& clipID, Fill fill);

    // Tracks

    Outcome<Id> addTrack(NewTrack track);
    Outcome<Project> removeTrack(Id const& trackID);
    Outcome<Project> moveTrack(Id const& trackID, int offset);
    Outcome<Project> changeTrack(Id const& trackID, TrackChanges const& changes);
    void changeAspect(AspectPreset aspect);

    // Files ------------------------------------------------------------------------------------

    /// Starts a project kept at `file`, writes it, and opens it. Throws ProjectFileError.
    QCoro::Task<void> startProject(std::filesystem::path file, Project project);

    /// Opens a project. What was open is saved first. Throws ProjectFileError, and then what was
    /// open stays open.
    QCoro::Task<void> openProject(std::filesystem::path file);

    /// Opens the project that was open when the editor last ran. Blocks; for the start, before
    /// there is anybody to wait. When it can't be opened, none is, and `errorMessage` says why.
    void reopenLastProject();

    /// Saves a workspace project now, when there is something to save. False when it failed, and
    /// for a project outside any workspace with changes; see `errorMessage`.
    QCoro::Task<bool> saveNow();

    /// Saves the project to its own file, also one outside any workspace. False when it failed.
    QCoro::Task<bool> saveProject();

    /// The same for a workspace project, blocking: for the last moment before the process ends.
    bool saveBeforeQuitting();

    enum class Changes { keep, discard };
    /// Closes the project. Refused when it has changes that are not saved and not to be discarded.
    QCoro::Task<Outcome<Done>> closeProject(Changes changes);

    /// Whether the open project may be left: what can be saved is saved. Refused with a sentence.
    QCoro::Task<Outcome<Done>> confirmDiscardingChanges(Changes changes);

    /// The project moved with its folder. Its file is watched and saved there from now on.
    void followTo(std::filesystem::path file);

    // Recovery ---------------------------------------------------------------------------------

    Recovery const& recovery() const { return m_recovery; }

    /// Opens the copy that waits. It is saved to its own place only when the user says so, and
    /// stays as the recovery copy until then. Throws ProjectFileError; refused when none waits.
    QCoro::Task<Outcome<Done>> restoreRecovery();

    /// Deletes the copy that waits. Refused when none waits.
    Outcome<Done> discardRecovery();

signals:
    void workspaceChanged();
    void projectChanged();
    void compositionOutdated();
    void dirtyChanged(bool isDirty);
    void errorMessageChanged();
    void saved();
    void assetsWereLoaded();

private:
    template <class Edit>
    Outcome<Edit> carryOut(Outcome<Edit> edit, std::string const& actionName,
                           std::optional<double> seekTo = std::nullopt);
    void setProject(Project project, std::optional<double> seekTo, Rebuild rebuild);
    void reconcileSelection();
    Track const* trackOfCaption(Id const& bar) const;
    void setDirty(bool isDirty);
    void setErrorMessage(std::string message);

    void adopt(ReadProject read, std::optional<std::filesystem::path> const& file);
    void close();
    void watchProject();
    QCoro::Task<void> loadAssets();
    MediaPlaces mediaPlaces() const;
    void takeOpened(std::vector<OpenedAsset> const& opened);
    void know(Imported const& file);
    void forgetAssets();
    void correctEverywhere(std::function<void(Project&)> const& correct);
    void moveAssets(std::map<Id, std::filesystem::path> const& found);

    void scheduleSave();
    QCoro::Task<void> saveOrAutosave();
    QCoro::Task<bool> saveToFile();
    QCoro::Task<void> autosave();
    QCoro::Task<void> saveEnded();
    void takeSaveResult(SaveResult const& result, std::uint64_t revision);
    QCoro::Task<void> reloadProjectFromDisk();
    void takeOutsideEdit(ReadProject read);

    UserDefaults& m_defaults;

    bool m_isOpen = false;
    Project m_project;
    std::optional<std::filesystem::path> m_projectFile;
    std::optional<ContentMark> m_diskMark; ///< Of the file as we last read or wrote it.
    std::vector<std::string> m_unknownKeys;
    AssetRefs m_assetRefs; ///< As the file had them when it was opened.
    UndoHistory m_history;

    bool m_isDirty = false;
    std::uint64_t m_revision = 0; ///< Counts changes, so that a save knows what it has saved.
    double m_currentTime = 0;
    std::optional<Id> m_selectedClip;
    std::optional<Id> m_selectedCaption;
    std::optional<Id> m_activeTrack;
    std::vector<CopiedClip> m_copied;
    std::string m_errorMessage;

    AssetStore m_assets;
    std::map<Id, std::string> m_assetProblems;
    SeenFiles m_seenFiles;
    std::uint64_t m_loadingRound = 0;
    bool m_isLoadingAssets = false;

    std::unique_ptr<FileWatcher> m_watcher;
    Recovery m_recovery;
    QTimer m_saveTimer;
    std::chrono::steady_clock::time_point m_unsavedSince;
    bool m_isSaving = false;
    /// Counts saves begun, so that a reading knows whether one came between.
    std::uint64_t m_saveCount = 0;
};

} // namespace framewright
