#include "editor/files/project_file.h"

#include "model/file_url.h"
#include "platform/atomic_file.h"
#include "tasks/on_worker.h"

namespace framewright {

namespace {

/// What sentences call a project's file: "Hook v2's project.json" in a workspace.
std::string nameOf(std::filesystem::path const& file)
{
    std::string const name = validUtf8(file.filename().string());
    if (name != "project.json")
        return name;
    return validUtf8(file.parent_path().filename().string()) + "'s project.json";
}

/// The content on disk; nothing when there is no file.
std::optional<std::string> contentOf(std::filesystem::path const& file)
{
    try {
        return readFile(file);
    } catch (FileError const& error) {
        if (error.cause == FileError::Cause::missing)
            return std::nullopt;
        throw;
    }
}

/// The contents that decode: a file written in place passes through halves.
std::vector<ReadProject> projectsIn(std::vector<std::string> const& contents)
{
    std::vector<ReadProject> projects;
    for (std::string const& bytes : contents) {
        try {
            projects.push_back({decodeProjectDocument(bytes), contentMark(bytes)});
        } catch (DocumentError const&) {
        }
    }
    return projects;
}

} // namespace

ReadProject readProject(std::filesystem::path const& file)
{
    std::string bytes;
    try {
        bytes = readFile(file);
    } catch (FileError const& error) {
        throw ProjectFileError(error.what());
    }
    try {
        return {decodeProjectDocument(bytes), contentMark(bytes)};
    } catch (DocumentError const& error) {
        throw ProjectFileError(nameOf(file) + " is not a valid project: " + error.what());
    }
}

QCoro::Task<ReadProject> readOnWorker(std::filesystem::path file)
{
    auto const read = [file] { return readProject(file); };
    co_return co_await onWorker(read);
}

SaveResult saveProject(std::filesystem::path const& file, Project const& project,
                       std::optional<ContentMark> const& expected, AssetRefs const& known)
{
    try {
        ProjectDocument document(project);
        document.assetRefs.clear();
        for (auto& [id, ref] : currentAssetRefs(project, file.parent_path(), known))
            document.assetRefs.push_back(ref);
        std::string const bytes = document.data();
        ContentMark const mark = contentMark(bytes);
        std::optional<std::string> const onDisk = contentOf(file);
        if (onDisk && *onDisk == bytes)
            return {mark, false, {}};
        // A file that vanished is written again: that loses nobody's work.
        if (onDisk && (!expected || contentMark(*onDisk) != *expected))
            return {std::nullopt, true, {}};
        if (!onDisk) {
            writeFileAtomically(file, bytes);
            return {mark, false, {}};
        }
        FileReplacement const replacement = replaceFileAtomically(file, bytes, *onDisk);
        if (!replacement.isDone)
            return {std::nullopt, true, projectsIn(replacement.found)};
        return {mark, false, {}};
    } catch (std::exception const& error) {
        throw ProjectFileError("Could not save " + nameOf(file) + ": " + error.what());
    }
}

} // namespace framewright
