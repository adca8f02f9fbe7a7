#include "editor/project_file.h"

#include "model/file_url.h"
#include "platform/atomic_file.h"

#include <QCryptographicHash>

namespace framewright {

namespace {

/// What the user knows a project's file by: "Hook v2's project.json" in a workspace.
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

} // namespace

ContentMark contentMark(std::string_view bytes)
{
    auto const hash = QCryptographicHash::hash(
        QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())),
        QCryptographicHash::Blake2b_256);
    return hash.toStdString();
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
        return {decodeProjectDocument(bytes), contentMark(bytes)};
    } catch (DocumentError const& error) {
        throw ProjectFileError(nameOf(file) + " is not a valid project: " + error.what());
    }
}

SaveResult saveProject(std::filesystem::path const& file, Project const& project,
                       std::optional<ContentMark> const& expected)
{
    try {
        std::string const bytes = ProjectDocument(project, file.parent_path()).data();
        ContentMark const mark = contentMark(bytes);
        std::optional<std::string> const onDisk = contentOf(file);
        if (onDisk && *onDisk == bytes)
            return {mark, false};
        // A file that vanished is written anew: nobody's words are lost by that.
        if (onDisk && (!expected || contentMark(*onDisk) != *expected))
            return {std::nullopt, true};
        writeFileAtomically(file, bytes);
        return {mark, false};
    } catch (std::exception const& error) {
        throw ProjectFileError("Could not save " + nameOf(file) + ": " + error.what());
    }
}

} // namespace framewright
