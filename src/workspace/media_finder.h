#pragma once

#include "model/file_url.h"
#include "model/project_document.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// A media file that a project refers to, by everything known about its location.
struct MediaWanted {
    std::string path; ///< As in AssetRef: relative to the project's folder, absolute, or a URL.
    FileURL url;      ///< Where the project last played it.
    std::optional<std::uintmax_t> size; ///< Bytes, where they are known.
};

/// Finds media again after files or folders moved.
///
/// Looks first at the path beside the project, so that a workspace that was copied as a whole uses
/// its own files, not the originals; then at the URL; then for a file of the same
/// name in the media folders, and of the same size where that is known. When several fit it finds
/// none: a wrong file is worse than a missing one.
///
/// The media folders are walked once, when first needed: hidden folders and links to folders are
/// skipped, at most 16 levels and 100,000 entries. Blocks while it walks; one thread.
class MediaFinder {
public:
    MediaFinder(std::filesystem::path projectFolder,
                std::vector<std::filesystem::path> mediaFolders);

    /// The file, absolute; nothing when it is not found.
    std::optional<std::filesystem::path> find(MediaWanted const& wanted);

private:
    std::optional<std::filesystem::path> findByName(std::string const& name,
                                                    std::optional<std::uintmax_t> size);
    void walkMediaFolders();

    std::filesystem::path m_projectFolder;
    std::vector<std::filesystem::path> m_mediaFolders;
    std::optional<std::multimap<std::string, std::filesystem::path>> m_filesByName;
};

} // namespace framewright
