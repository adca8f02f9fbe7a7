#include "pipeline/open_files.h"

#include <algorithm>

namespace framewright {

OpenReaders::OpenReaders(std::size_t capacity, int threads, ReadingActivity activity)
    : m_capacity(capacity), m_threads(threads), m_activity(std::move(activity))
{
}

std::shared_ptr<VideoReader> OpenReaders::reader(std::filesystem::path const& file, int lane)
{
    FileIdentity const identity = FileIdentity::of(file);
    auto const found = std::ranges::find_if(
        m_open, [&](Open const& open) { return open.lane == lane && open.identity == identity; });
    if (found != m_open.end()) {
        m_open.splice(m_open.begin(), m_open, found);
    } else {
        close(file, lane); // It was changed since.
        m_open.push_front(
            {identity, lane, std::make_shared<VideoReader>(file, m_threads, m_activity)});
        if (m_open.size() > m_capacity)
            m_open.pop_back();
    }
    return m_open.front().reader;
}

void OpenReaders::close(std::filesystem::path const& file, int lane)
{
    std::erase_if(
        m_open, [&](Open const& open) { return open.lane == lane && open.identity.file == file; });
}

Frame ReadPhotos::photo(std::filesystem::path const& file, int maxSide)
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
