#include "editor/files/project_file.h"

#include "editor/files/recovery.h"
#include "model/file_url.h"
#include "platform/atomic_file.h"
#include "tasks/on_worker.h"

namespace framewright {

namespace {

/// The stored bytes, with references as the files are now.
std::string encoded(Project const& project, AssetRefs const& known,
                    std::filesystem::path const& file)
{
    ProjectDocument document(project);
    document.assetRefs.clear();
    for (auto& [id, ref] : currentAssetRefs(project, file.parent_path(), known))
        document.assetRefs.push_back(ref);
    return document.data();
}

Decoded<StoredProject> decoded(std::string_view bytes)
{
    DecodedDocument read = decodeProjectDocument(bytes);
    Decoded<StoredProject> result;
    result.value.project = std::move(read.document.project);
    for (AssetRef& ref : read.document.assetRefs)
        result.value.refs.emplace(ref.id, std::move(ref));
    result.unknownKeys = std::move(read.unknownKeys);
    return result;
}

/// A copy is kept exactly while the file does not hold the project.
void keepCopy(StoredProject const& stored, InFile inFile)
{
    if (inFile == InFile::no)
        return Recovery::write(stored.recoveryFile, stored.project);
    std::error_code ignored;
    std::filesystem::remove(stored.recoveryFile, ignored);
}

} // namespace

std::string projectFileName(std::filesystem::path const& file)
{
    std::string const name = validUtf8(file.filename().string());
    if (name != "project.json")
        return name;
    return validUtf8(file.parent_path().filename().string()) + "'s project.json";
}

FileForm<StoredProject> projectFileForm()
{
    return {
        .encode = [](StoredProject const& stored,
                     auto const& file) { return encoded(stored.project, stored.refs, file); },
        .decode = decoded,
        .alsoKeep = keepCopy,
    };
}

ReadProject readProject(std::filesystem::path const& file)
{
    std::string bytes;
    try {
        bytes = readFile(file);
    } catch (FileError const& error) {
        throw ProjectFileError(error.what());
    }
    try {
        return {decoded(bytes), contentMark(bytes)};
    } catch (DocumentError const& error) {
        throw ProjectFileError(projectFileName(file) + " is not a valid project: " + error.what());
    }
}

QCoro::Task<ReadProject> readOnWorker(std::filesystem::path file)
{
    auto const read = [file] { return readProject(file); };
    co_return co_await onWorker(read);
}

ReadProject createProject(std::filesystem::path const& file, Project const& project)
{
    std::error_code failed;
    if (std::filesystem::exists(file, failed))
        throw ProjectFileError("There is a project at " + validUtf8(file.string()) + " already.");
    try {
        writeFileAtomically(file, encoded(project, {}, file));
    } catch (std::exception const& error) {
        throw ProjectFileError("Could not save " + projectFileName(file) + ": " + error.what());
    }
    return readProject(file);
}

} // namespace framewright
