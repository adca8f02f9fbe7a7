#include "editor/project_file.h"

#include "tasks/on_worker.h"
#include "model/file_url.h"
#include "platform/atomic_file.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <charconv>

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

/// Those of the contents that are whole: a file that is written in place passes through halves.
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

/// What a reference's bookmark holds before it is encoded: the size of the file.
constexpr std::string_view sizeLabel = "size=";

} // namespace

std::optional<std::uintmax_t> knownSize(AssetRef const& ref)
{
    if (!ref.bookmark)
        return std::nullopt;
    std::string const text =
        QByteArray::fromBase64(QByteArray::fromStdString(*ref.bookmark)).toStdString();
    std::uintmax_t size = 0;
    if (!text.starts_with(sizeLabel))
        return std::nullopt;
    char const* const first = text.data() + sizeLabel.size();
    auto const [end, error] = std::from_chars(first, text.data() + text.size(), size);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(size)
                                                                    : std::nullopt;
}

AssetRefs currentAssetRefs(Project const& project, std::filesystem::path const& folder,
                           AssetRefs const& known)
{
    AssetRefs refs;
    for (AssetRef& ref : ProjectDocument(project, folder).assetRefs) {
        std::error_code failed;
        auto const size = std::filesystem::file_size(project.asset(ref.id)->url.path, failed);
        auto const before = known.find(ref.id);
        if (failed && before != known.end()) {
            ref = before->second;
        } else if (!failed) {
            std::string const text = std::string(sizeLabel) + std::to_string(size);
            ref.bookmark = QByteArray::fromStdString(text).toBase64().toStdString();
        }
        refs.emplace(ref.id, std::move(ref));
    }
    return refs;
}

ContentMark contentMark(std::string_view bytes)
{
    auto const hash =
        QCryptographicHash::hash(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())),
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
        // A file that vanished is written anew: nobody's words are lost by that.
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
