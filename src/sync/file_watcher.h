#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace framewright {

/// Watches one file for changes, however it is written: in place, by renaming another file over it,
/// by deleting it and creating it again.
///
/// Bursts are coalesced: a change is reported once the file has been quiet for a tenth of a second.
/// Our own writes are reported too: only the reader can recognise them, by content. Other files
/// of the folder are ignored. The folder may be removed, renamed and created again; then the file
/// in the new one is watched. Lives on the main thread.
class FileWatcher : public QObject {
    Q_OBJECT

public:
    /// Neither the file nor its folder need exist yet.
    explicit FileWatcher(std::filesystem::path const& file, QObject* parent = nullptr);

    std::filesystem::path const& file() const { return m_file; }

    /// False when the system has no watches left. Then no changes are reported, and the owner has
    /// to warn the user.
    bool isWatching() const { return m_isWatching; }

signals:
    /// The file has changed or appeared.
    void changed();

    /// The file is gone, alone or with its folder. `changed` follows when it comes back.
    void vanished();

private:
    /// Distinguishes two states of the file without reading it.
    struct Stamp {
        std::uint64_t inode = 0;
        std::uint64_t size = 0;
        std::int64_t changedSeconds = 0;
        std::int64_t changedNanoseconds = 0;

        bool operator==(Stamp const&) const = default;
    };
    /// Nothing when there is no such file.
    static std::optional<Stamp> stampOf(std::filesystem::path const& file);

    void watch();
    void folderChanged();
    void fileChanged();
    void settle();

    std::filesystem::path m_file; ///< Absolute.
    QFileSystemWatcher m_watcher;
    QTimer m_quiet;
    std::optional<Stamp> m_seen; ///< When the file was last checked.
    bool m_wasThere = false;     ///< As last reported.
    bool m_isWatching = false;
};

} // namespace framewright
