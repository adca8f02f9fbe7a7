#pragma once

#include "editor/media_pool/asset_refs.h"
#include "model/project_document.h"
#include "sync/content_mark.h"
#include "sync/file_form.h"

#include <QCoro/QCoroTask>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace framewright {

/// A project's file could not be read or written. `what()` is the whole sentence.
class ProjectFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A project's file as sentences name it: "Hook v2's project.json" in a workspace.
std::string projectFileName(std::filesystem::path const& file);

/// A project with everything else that is stored in its files.
struct StoredProject {
    Project project;
    AssetRefs refs;                     ///< As last read or written.
    std::filesystem::path recoveryFile; ///< Where the copy goes while the file does not hold it.
};

/// How a project is stored in its file, and as a recovery copy while the file does not hold it.
FileForm<StoredProject> projectFileForm();

/// A project as it is on disk.
struct ReadProject {
    Decoded<StoredProject> decoded;
    ContentMark mark; ///< Of the bytes that were read.

    Project const& project() const { return decoded.value.project; }
};

/// Reads a project. Blocks. Throws ProjectFileError.
ReadProject readProject(std::filesystem::path const& file);

/// The same on a worker.
QCoro::Task<ReadProject> readOnWorker(std::filesystem::path file);

/// Writes a new project to `file`, and reads it again. Blocks. Throws ProjectFileError, also when
/// there is a file already.
ReadProject createProject(std::filesystem::path const& file, Project const& project);

} // namespace framewright
