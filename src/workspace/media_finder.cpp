#include "workspace/media_finder.h"

#include <algorithm>
#include <system_error>

namespace framewright {

namespace {

using Path = std::filesystem::path;

constexpr int deepestLevel = 16;
constexpr std::size_t mostEntries = 100'000;

bool isFile(Path const& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

Path pathOf(std::string const& stored)
{
    auto const url = FileURL::parse(stored);
    return url ? url->path : stored;
}

} // namespace

MediaFinder::MediaFinder(Path projectFolder, std::vector<Path> mediaFolders)
    : m_projectFolder(std::move(projectFolder)), m_mediaFolders(std::move(mediaFolders))
{
}

std::optional<Path> MediaFinder::find(MediaWanted const& wanted)
{
    Path const stored = pathOf(wanted.path);
    Path const besideProject = (m_projectFolder / stored).lexically_normal();
    if (!stored.empty() && isFile(besideProject))
        return besideProject;
    if (isFile(wanted.url.path))
        return wanted.url.path;
    Path const name = stored.empty() ? Path(wanted.url.path).filename() : stored.filename();
    return name.empty() ? std::nullopt : findByName(name.string(), wanted.size);
}

std::optional<Path> MediaFinder::findByName(std::string const& name,
                                            std::optional<std::uintmax_t> size)
{
    if (!m_filesByName)
        walkMediaFolders();
    std::optional<Path> found;
    auto const [first, last] = m_filesByName->equal_range(name);
    for (auto entry = first; entry != last; ++entry) {
        std::error_code error;
        if (size && std::filesystem::file_size(entry->second, error) != *size)
            continue;
        // One media folder may be inside another, which lists the same file twice.
        if (found && !std::filesystem::equivalent(*found, entry->second, error))
            return std::nullopt;
        found = entry->second;
    }
    return found;
}

void MediaFinder::walkMediaFolders()
{
    using Walk = std::filesystem::recursive_directory_iterator;
    m_filesByName.emplace();
    std::size_t entries = 0;
    for (Path const& folder : m_mediaFolders) {
        std::error_code error;
        for (Walk entry(folder, std::filesystem::directory_options::skip_permission_denied, error),
             end;
             !error && entry != end && entries < mostEntries; entry.increment(error), ++entries) {
            Path const& path = entry->path();
            bool const isHidden = path.filename().string().starts_with('.');
            if (isHidden || entry.depth() + 1 >= deepestLevel)
                entry.disable_recursion_pending();
            if (!isHidden && isFile(path))
                m_filesByName->emplace(path.filename().string(), path);
        }
    }
}

} // namespace framewright
