// Gathering the media of an AppState's project in the project's own folder.

#include "editor/app_state.h"
#include "model/file_url.h"
#include "tasks/on_worker.h"
#include "workspace/workspace.h"

#include <algorithm>

namespace framewright {

namespace {

using Path = std::filesystem::path;

/// A name in `folder` that no file has yet: "a.mp4", "a 2.mp4".
Path freeFile(Path const& folder, Path const& name)
{
    Path file = folder / name;
    for (int number = 2; std::filesystem::exists(file); ++number)
        file = folder / Path(name.stem().string() + " " + std::to_string(number) +
                             name.extension().string());
    return file;
}

struct Copied {
    Id asset;
    Path file;
};

/// Copies all of them or, when one fails, none.
std::vector<Copied> copyAll(std::vector<MediaAsset> const& assets, Path const& folder)
{
    std::vector<Copied> copies;
    try {
        std::filesystem::create_directories(folder);
        for (MediaAsset const& asset : assets) {
            Path const source = asset.url.path;
            Path const target = freeFile(folder, source.filename());
            copies.push_back({asset.id, target});
            std::filesystem::copy_file(source, target);
        }
    } catch (std::filesystem::filesystem_error const& error) {
        std::error_code ignored;
        for (Copied const& copy : copies)
            std::filesystem::remove(copy.file, ignored);
        throw ProjectFileError(validUtf8(error.path1().filename().string()) +
                               " could not be copied into the project: " + error.code().message() +
                               ".");
    }
    return copies;
}

} // namespace

QCoro::Task<Outcome<std::vector<Path>>> AppState::consolidateMedia(std::vector<Path> folders)
{
    if (!isWorkspaceProject())
        co_return Refusal{Reason::noMediaFolder};
    Path const projectFolder = m_projectFile->parent_path();
    folders.push_back(projectFolder);
    std::vector<MediaAsset> outside;
    for (auto const& [id, asset] : *m_project.assets) {
        bool const isElsewhere = std::ranges::none_of(folders, [&](Path const& folder) {
            return Workspace::isInside(asset.url.path, folder);
        });
        if (isElsewhere && !assetProblem(id))
            outside.push_back(asset);
    }

    auto const copy = [outside, folder = Workspace::mediaFolder(projectFolder)] {
        return copyAll(outside, folder);
    };
    std::vector<Copied> const copies = co_await onWorker(copy);

    std::vector<Path> files;
    Project project = m_project;
    for (Copied const& each : copies) {
        files.push_back(each.file);
        if (!project.asset(each.asset))
            continue; // Undone while its file was copied.
        MediaAsset& asset = project.assets.edit()[each.asset];
        asset.url.path = each.file.string();
        asset.playbackURL = asset.url;
    }
    if (!(project == m_project)) {
        commit(std::move(project), "Consolidate Media");
        m_assetRefs.clear(); // They tell of the files before.
        loadAssets();
    }
    co_return files;
}

} // namespace framewright
