#include "workspace/folder_watcher.h"

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

FolderWatcher::FolderWatcher(Path folder, std::string fileName, QObject* parent)
    : QObject(parent),
      m_folder(std::filesystem::absolute(folder / "").parent_path()),
      m_fileName(std::move(fileName))
{
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(quietTime);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FolderWatcher::folderChanged);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FolderWatcher::fileChanged);
    connect(&m_quiet, &QTimer::timeout, this, &FolderWatcher::settle);
    watch();
    m_seen = stampOf(file());
    m_wasThere = m_seen.has_value();
}

std::optional<FolderWatcher::Stamp> FolderWatcher::stampOf(Path const& file)
{
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return Stamp{status.st_ino, static_cast<std::uint64_t>(status.st_size), status.st_ctim.tv_sec,
                 status.st_ctim.tv_nsec};
}

/// Watches what now stands under our names. The system watches what stood there when it was
/// asked, under whatever name it goes on; so it is asked anew after every change.
void FolderWatcher::watch()
{
    if (QStringList const paths = m_watcher.files() + m_watcher.directories(); !paths.isEmpty())
        m_watcher.removePaths(paths);
    m_isWatching = true;
    // The folder above tells of the folder's own going and coming.
    for (Path const& place : {nearestAbove(m_folder), m_folder, file()}) {
        if (isThere(place) && !m_watcher.addPath(qtPath(place)) && isThere(place))
            m_isWatching = false;
    }
}

void FolderWatcher::folderChanged()
{
    watch();
    if (stampOf(file()) != m_seen)
        m_quiet.start();
}

void FolderWatcher::fileChanged()
{
    watch();
    m_quiet.start();
}

void FolderWatcher::settle()
{
    m_seen = stampOf(file());
    bool const wasThere = std::exchange(m_wasThere, m_seen.has_value());
    if (m_wasThere)
        emit changed();
    else if (wasThere)
        emit vanished();
}

} // namespace framewright
