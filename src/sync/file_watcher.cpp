#include "sync/file_watcher.h"

#include <QFile>

#include <chrono>
#include <utility>

#include <sys/stat.h>

namespace framewright {

namespace {

using Path = std::filesystem::path;

constexpr auto quietTime = std::chrono::milliseconds(100);

QString qtPath(Path const& path)
{
    return QFile::decodeName(path.c_str());
}

bool isThere(Path const& path)
{
    std::error_code error;
    return std::filesystem::exists(path, error);
}

Path nearestAbove(Path place)
{
    do
        place = place.parent_path();
    while (!isThere(place) && place.has_relative_path());
    return place;
}

} // namespace

FileWatcher::FileWatcher(Path const& file, QObject* parent)
    : QObject(parent), m_file(std::filesystem::absolute(file))
{
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(quietTime);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FileWatcher::folderChanged);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FileWatcher::fileChanged);
    connect(&m_quiet, &QTimer::timeout, this, &FileWatcher::settle);
    watch();
    m_seen = stampOf(m_file);
    m_wasThere = m_seen.has_value();
}

std::optional<FileWatcher::Stamp> FileWatcher::stampOf(Path const& file)
{
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return Stamp{status.st_ino, static_cast<std::uint64_t>(status.st_size), status.st_ctim.tv_sec,
                 status.st_ctim.tv_nsec};
}

/// Watches the file and folder that now have our names. The system watches the file that had the
/// name when the watch was added, and follows it when renamed; so we add it again after each
/// change.
void FileWatcher::watch()
{
    if (QStringList const paths = m_watcher.files() + m_watcher.directories(); !paths.isEmpty())
        m_watcher.removePaths(paths);
    m_isWatching = true;
    // The folder above reports that the folder itself was removed or created.
    Path const folder = m_file.parent_path();
    for (Path const& place : {nearestAbove(folder), folder, m_file}) {
        if (isThere(place) && !m_watcher.addPath(qtPath(place)) && isThere(place))
            m_isWatching = false;
    }
}

void FileWatcher::folderChanged()
{
    watch();
    if (stampOf(m_file) != m_seen)
        m_quiet.start();
}

void FileWatcher::fileChanged()
{
    watch();
    m_quiet.start();
}

void FileWatcher::settle()
{
    m_seen = stampOf(m_file);
    bool const wasThere = std::exchange(m_wasThere, m_seen.has_value());
    if (m_wasThere)
        emit changed();
    else if (wasThere)
        emit vanished();
}

} // namespace framewright
