#pragma once

#include "sync/content_mark.h"
#include "sync/file_form.h"
#include "sync/file_watcher.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QTimer>

#include <any>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

struct SyncTiming {
    /// From a change to its save. Another change restarts it.
    std::chrono::milliseconds delay;
    /// From the first of several changes to the save.
    std::chrono::milliseconds longestDelay;
    /// From a failed save to the next attempt. Nothing: the next change makes that attempt.
    std::optional<std::chrono::milliseconds> retryDelay = std::nullopt;
};

/// How long to delay a save when the first unsaved change was made `waited` ago.
std::chrono::milliseconds saveDelay(SyncTiming const& timing, std::chrono::milliseconds waited);

class SyncJob;
struct SyncResult;
struct TheirVersion;

/// The part of SyncedFile (sync/synced_file.h) that is the same for all types: when to read and
/// write, what was saved, and what to report. Main thread only.
class FileSync : public QObject {
    Q_OBJECT

public:
    enum class Saving {
        automatic, ///< Soon after each change. The file is watched.
        onRequest, ///< Only by `startSaving`; after a change the value is only kept elsewhere.
    };

    ~FileSync() override;

    // State ------------------------------------------------------------------------------------

    std::optional<std::filesystem::path> const& file() const { return m_file; }
    /// Whether memory holds something the file does not.
    bool isDirty() const { return m_revisionInFile != m_revision; }
    /// What keeps the value from being read or saved; empty when all is well.
    std::string const& problem() const { return m_problem; }
    /// What was corrected while reading, and the keys that the next save drops.
    std::vector<std::string> const& notes() const { return m_notes; }
    std::vector<std::string> const& unknownKeys() const { return m_unknownKeys; }
    /// False when other programs' changes are noticed only at the next save.
    bool isWatching() const { return m_watcher && m_watcher->isWatching(); }

    // Where ------------------------------------------------------------------------------------

    /// Binds to a file whose content replaces the value; where there is no file, the value is
    /// saved. Blocks while it reads. Flush what is pending for another file first. Returns whether
    /// the file was read.
    bool open(std::filesystem::path const& file, Saving saving);
    /// Follows the file to its new name, as after its folder was renamed.
    void followTo(std::filesystem::path const& file);
    void detach();

    void setSaving(Saving saving);

    /// Watches the file also where it is saved on request only.
    void watchFile();

    // Work -------------------------------------------------------------------------------------

    /// The owner has changed the value.
    void valueChanged();
    /// Saves now when something is unsaved, also with Saving::onRequest.
    void startSaving();
    void startReading();
    /// Ends when no reading or writing is under way or about to begin.
    QCoro::Task<void> settled();
    /// Returns whether everything is saved; if not, see `problem`.
    QCoro::Task<bool> saveNow();

    /// Blocking, for starting and quitting: false when the file is missing or can't be read.
    bool readBlocking();
    /// Blocking: saves what is unsaved, or with Saving::onRequest keeps it elsewhere. False when
    /// the file does not hold the value afterwards.
    bool flush();

signals:
    /// The file holds the value as it was when the save began.
    void saved();
    /// A read or write ended, successfully or not.
    void cycleEnded();
    void dirtyChanged(bool isDirty);
    void problemChanged();
    /// The file was removed. It is written again with the next save.
    void vanished();

protected:
    FileSync(FileForm<std::any> form, FileOwner<std::any> owner, SyncTiming const& timing,
             QObject* parent);

    void bind(std::filesystem::path const& file, Decoded<std::any> read, ContentMark mark,
              Saving saving);

private:
    /// Each includes those before it.
    enum class Wish { nothing, look, save, saveAnyway };
    enum class Ended { well, missing, inTrouble, toBeRepeated };

    void leaveFile();
    void watch();
    void schedule();
    void wish(Wish wish);
    void startNext();
    QCoro::Task<void> runOnWorker(std::shared_ptr<SyncJob> job);
    void runBlocking(Wish wish);
    void finishJob();

    bool isWorkLeft() const;
    std::shared_ptr<SyncJob> nextJob();
    Ended takeResult(SyncJob& job);
    void takeSaved(SyncJob& job);
    bool takeTheirs(std::vector<TheirVersion> const& all);
    void reportResult(SyncJob& job);
    void reportChanges(std::string problem);

    std::shared_ptr<FileForm<std::any> const> m_form;
    FileOwner<std::any> m_owner;
    SyncTiming m_timing;

    std::optional<std::filesystem::path> m_file;
    Saving m_saving = Saving::automatic;
    std::unique_ptr<FileWatcher> m_watcher;
    std::uint64_t m_bindings = 0; ///< Counts changes of the file, which callbacks may cause.

    std::any m_base;                    ///< The value as last read or written.
    std::optional<ContentMark> m_known; ///< The content as last read or written.

    std::uint64_t m_revision = 0; ///< Counts changes of the value.
    std::optional<std::uint64_t> m_revisionInFile;
    std::uint64_t m_revisionKept = 0; ///< By `alsoKeep`.

    QTimer m_timer;
    std::chrono::steady_clock::time_point m_waitingSince;
    Wish m_wish = Wish::nothing;
    std::shared_ptr<SyncJob> m_job; ///< Under way; there is one at a time.
    Ended m_lastEnd = Ended::well;
    int m_tries = 0; ///< Attempts of one save that found other programs' versions.

    bool m_wasDirty = false; ///< As last reported.
    std::string m_problem;
    std::vector<std::string> m_notes;
    std::vector<std::string> m_unknownKeys;
};

} // namespace framewright
