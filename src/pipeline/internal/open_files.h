#pragma once

#include "media/photo.h"
#include "media/video_reader.h"
#include "pipeline/file_identity.h"

#include <filesystem>
#include <list>
#include <memory>
#include <optional>

namespace framewright {

/// An open decoder, and the file as it was when it was opened.
struct OpenReader {
    FileIdentity identity;
    std::shared_ptr<VideoReader> reader;
};

/// Decoders that are kept open. One thread at a time.
class OpenReaders {
public:
    /// `threads`: of each decoder; 0 lets it choose. `activity`: of all readers.
    explicit OpenReaders(std::size_t capacity, int threads = 0, ReadingActivity activity = {});

    /// The reader of a file. Those of different lanes are independent, so that each may read
    /// forward in its own place. Above the capacity the least recently used one is closed.
    /// `opened` becomes true when there was none.
    std::shared_ptr<VideoReader> reader(std::filesystem::path const& file, int lane, bool& opened);

    /// Keeps a decoder that was opened elsewhere, instead of the file's own.
    void adopt(OpenReader reader, int lane);

    /// Takes the reader of an unchanged file out; nothing when there is none.
    std::optional<OpenReader> take(std::filesystem::path const& file, int lane);

    void close(std::filesystem::path const& file, int lane);
    void closeAll() { m_open.clear(); }

private:
    struct Open {
        OpenReader open;
        int lane;
    };

    std::size_t m_capacity;
    int m_threads;
    ReadingActivity m_activity;
    std::list<Open> m_open; ///< The most recently used one first.
};

/// Photos that have been read. One thread at a time.
class OpenPhotos {
public:
    explicit OpenPhotos(std::size_t capacity) : m_capacity(capacity) {}

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
