#pragma once

#include "editor/media_pool/asset_refs.h"
#include "model/project_document.h"
#include "sync/content_mark.h"

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

/// A project as it is on disk.
struct ReadProject {
    DecodedDocument decoded;
    ContentMark mark; ///< Of the bytes that were read.
};

/// Reads a project. Throws ProjectFileError with the file's name in the sentence.
ReadProject readProject(std::filesystem::path const& file);

/// The same on a worker thread.
QCoro::Task<ReadProject> readOnWorker(std::filesystem::path file);

/// The result of a save.
struct SaveResult {
    /// Of the content on disk now; nothing when it was not written.
    std::optional<ContentMark> written;
    /// Whether someone else had changed the file since we last read or wrote it; theirs is still
    /// there then.
    bool wasChangedByOthers = false;
    /// What others wrote while we tried to save, oldest first. The last may be gone already.
    std::vector<ReadProject> found;
};

/// Writes a project atomically, unless the file no longer has the content `expected` (nothing:
/// there was no file). Blocks until it is on disk. Throws ProjectFileError.
SaveResult saveProject(std::filesystem::path const& file, Project const& project,
                       std::optional<ContentMark> const& expected, AssetRefs const& known = {});

} // namespace framewright
