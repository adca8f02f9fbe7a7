#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace framewright {

/// Watches one file for changes, however they are written: in place, by renaming another file
/// over it, by deleting and making it anew.
///
/// A burst of changes is told once, when the file has been quiet for a tenth of a second. Changes
/// of our own are told as well: only who reads the file knows what is new in it. Other files of
/// the folder do not matter. The folder may be removed, renamed and made again; then the file in
/// the new one is watched. Lives on the main thread.
class FolderWatcher : public QObject {
    Q_OBJECT

public:
    /// Watches `fileName` in `folder` from now on; neither need be there yet.
    FolderWatcher(std::filesystem::path folder, std::string fileName, QObject* parent = nullptr);

    std::filesystem::path file() const { return m_folder / m_fileName; }

    /// Whether the system lets us watch. When its watches are used up this is false, no changes
    /// are told, and it is up to the owner to say so.
    bool isWatching() const { return m_isWatching; }

signals:
    /// The file has changed or come into being; it is there.
    void changed();

    /// The file is gone, alone or with its folder. `changed` follows when it comes back.
    void vanished();

private:
    /// What tells one state of the file from another as far as its folder shows it.
    struct Stamp {
        std::uint64_t inode = 0;
        std::uint64_t size = 0;
        std::int64_t changedSeconds = 0;
        std::int64_t changedNanoseconds = 0;

        bool operator==(Stamp const&) const = default;
    };
    /// The stamp of the file there is; nothing when there is none.
    static std::optional<Stamp> stampOf(std::filesystem::path const& file);

    void watch();
    void folderChanged();
    void fileChanged();
    void settle();

    std::filesystem::path m_folder;
    std::string m_fileName;
    QFileSystemWatcher m_watcher;
    QTimer m_quiet;
    std::optional<Stamp> m_seen; ///< Of the file when it was last looked at.
    bool m_wasThere = false;     ///< As the owner was last told.
    bool m_isWatching = false;
};

} // namespace framewright
