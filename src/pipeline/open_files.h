#pragma once

#include "media/photo.h"
#include "media/video_reader.h"
#include "pipeline/file_identity.h"

#include <filesystem>
#include <list>
#include <memory>

namespace framewright {

/// Decoders that are kept open. One thread at a time.
class OpenReaders {
public:
    /// `threads`: of each decoder; 0 lets it choose. `activity`: of all readers.
    explicit OpenReaders(std::size_t capacity, int threads = 0, ReadingActivity activity = {});

    /// The reader of a file. Those of different lanes are independent, so that each may go forward
    /// in its own place. When there are too many, the one not used for longest is closed.
    std::shared_ptr<VideoReader> reader(std::filesystem::path const& file, int lane);

    void close(std::filesystem::path const& file, int lane);
    void closeAll() { m_open.clear(); }

private:
    struct Open {
        FileIdentity identity;
        int lane;
        std::shared_ptr<VideoReader> reader;
    };

    std::size_t m_capacity;
    int m_threads;
    ReadingActivity m_activity;
    std::list<Open> m_open; ///< The one used last in front.
};

/// Photos that have been read. One thread at a time.
class ReadPhotos {
public:
    explicit ReadPhotos(std::size_t capacity) : m_capacity(capacity) {}

    /// The photo, upright, no side longer than `maxSide`. The same one shares its pixels.
    Frame photo(std::filesystem::path const& file, int maxSide);

    void forgetAll() { m_read.clear(); }

private:
    struct Read {
        FileIdentity identity;
        int maxSide;
        Frame frame;
    };

    std::size_t m_capacity;
    std::list<Read> m_read; ///< The one used last in front.
};

} // namespace framewright
