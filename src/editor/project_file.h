#pragma once

#include "model/project_document.h"

#include <QCoro/QCoroTask>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// A project's file could not be read or written. `what()` is the whole sentence.
class ProjectFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The content of a file, shortened to what two contents can be told apart by.
using ContentMark = std::string;

ContentMark contentMark(std::string_view bytes);

/// A project as it lies on disk.
struct ReadProject {
    DecodedDocument decoded;
    ContentMark mark; ///< Of the bytes that were read.
};

/// Reads a project. Throws ProjectFileError with the file's name in the sentence.
ReadProject readProject(std::filesystem::path const& file);

/// The same on a worker thread.
QCoro::Task<ReadProject> readOnWorker(std::filesystem::path file);

/// What a save came to.
struct SaveResult {
    /// Of what lies on disk now, when it was written.
    std::optional<ContentMark> written;
    /// Whether someone else had changed the file since we last read or wrote it; then theirs lies
    /// there still.
    bool wasChangedByOthers = false;
    /// What others put there just while we tried to save. Oldest first; the last may lie there no
    /// longer.
    std::vector<ReadProject> found;
};

/// The files of a project as its document last knew them, by asset.
using AssetRefs = std::map<Id, AssetRef>;

/// How large an asset's file was when it was last seen; nothing when that is not known.
std::optional<std::uintmax_t> knownSize(AssetRef const& ref);

/// The files of a project as they are now, seen from its folder. Of a file that is not there,
/// what was known stays.
AssetRefs currentAssetRefs(Project const& project, std::filesystem::path const& folder,
                           AssetRefs const& known);

/// Writes a project atomically, unless the file is no longer the one known by `expected` (nothing:
/// there was none). Blocks until the disk has it. Throws ProjectFileError.
SaveResult saveProject(std::filesystem::path const& file, Project const& project,
                       std::optional<ContentMark> const& expected, AssetRefs const& known = {});

} // namespace framewright
