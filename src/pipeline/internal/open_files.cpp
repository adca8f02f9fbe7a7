#include "pipeline/internal/open_files.h"

#include <algorithm>

namespace framewright {

OpenReaders::OpenReaders(std::size_t capacity, int threads, ReadingActivity activity)
    : m_capacity(capacity), m_threads(threads), m_activity(std::move(activity))
{
}

std::shared_ptr<VideoReader> OpenReaders::reader(std::filesystem::path const& file, int lane,
                                                 bool& opened)
{
    std::optional<OpenReader> found = take(file, lane);
    opened = !found;
    if (!found) {
        FileIdentity identity = FileIdentity::of(file);
        found = OpenReader{std::move(identity),
                           std::make_shared<VideoReader>(file, m_threads, m_activity)};
    }
    adopt(*found, lane);
    return found->reader;
}

void OpenReaders::adopt(OpenReader reader, int lane)
{
    close(reader.identity.file, lane);
    m_open.push_front({std::move(reader), lane});
    if (m_open.size() > m_capacity)
        m_open.pop_back();
}

std::optional<OpenReader> OpenReaders::take(std::filesystem::path const& file, int lane)
{
    auto const found = std::ranges::find_if(m_open, [&](Open const& kept) {
        return kept.lane == lane && kept.open.identity.file == file;
    });
    if (found == m_open.end())
        return std::nullopt;
    OpenReader taken = std::move(found->open);
    m_open.erase(found);
    if (taken.identity != FileIdentity::of(file))
        return std::nullopt;
    return taken;
}

void OpenReaders::close(std::filesystem::path const& file, int lane)
{
    std::erase_if(m_open, [&](Open const& kept) {
        return kept.lane == lane && kept.open.identity.file == file;
    });
}

Frame OpenPhotos::photo(std::filesystem::path const& file, int maxSide)
{
    FileIdentity const identity = FileIdentity::of(file);
    auto const found = std::ranges::find_if(m_read, [&](Read const& read) {
        return read.maxSide == maxSide && read.identity == identity;
    });
    if (found != m_read.end()) {
        m_read.splice(m_read.begin(), m_read, found);
    } else {
        m_read.push_front({identity, maxSide, readPhoto(file, maxSide)});
        if (m_read.size() > m_capacity)
            m_read.pop_back();
    }
    return m_read.front().frame;
}

} // namespace framewright
