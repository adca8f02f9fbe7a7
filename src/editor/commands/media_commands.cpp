#include "editor/commands/media_commands.h"

#include "editor/commands/internal/carry_out.h"
#include "media/media_error.h"
#include "model/file_url.h"
#include "tasks/on_worker.h"
#include "workspace/workspace.h"

#include <algorithm>

namespace framewright {

namespace {

using Path = std::filesystem::path;

/// A name in `folder` that no file has yet: "a.mp4", "a 2.mp4".
Path unusedFile(Path const& folder, Path const& name)
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
            Path const target = unusedFile(folder, source.filename());
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

/// The assets whose files are in none of the folders, and can be copied.
std::vector<MediaAsset> assetsOutside(AppState const& state, std::vector<Path> const& folders)
{
    std::vector<MediaAsset> outside;
    for (auto const& [id, asset] : *state.project().assets) {
        bool const isElsewhere = std::ranges::none_of(folders, [&](Path const& folder) {
            return Workspace::isInside(asset.url.path, folder);
        });
        if (isElsewhere && !state.media().problem(id))
            outside.push_back(asset);
    }
    return outside;
}

} // namespace

QCoro::Task<Outcome<ProbedFile>> probeSource(Editing editing, MediaSource source)
{
    MediaPool& media = editing.state.media();
    if (auto const* const file = std::get_if<Path>(&source))
        co_return co_await media.probe(*file);
    Id const asset = std::get<Id>(source);
    co_await media.refresh();
    if (auto const problem = media.problem(asset))
        throw MediaError(MediaError::Cause::missing, *problem);
    auto const known = media.known(asset);
    if (!known)
        co_return Refusal{Reason::assetGone};
    co_return *known;
}

QCoro::Task<Outcome<std::vector<MediaAsset>>> importMedia(Editing editing, std::vector<Path> files)
{
    MediaPool& media = editing.state.media();
    auto const file = editing.state.files().file();
    std::vector<ProbedFile> probed;
    for (Path const& each : files)
        probed.push_back(co_await media.probe(each));
    if (!editing.state.isOpen() || editing.state.files().file() != file)
        co_return Refusal{Reason::noProject};

    Project project = editing.project();
    std::vector<MediaAsset> assets;
    for (ProbedFile const& each : probed) {
        auto const twin = std::ranges::find_if(
            *project.assets, [&](auto const& entry) { return entry.second.url == each.asset.url; });
        if (twin != project.assets->end()) {
            assets.push_back(twin->second);
            continue;
        }
        project = each.addedTo(std::move(project));
        media.remember(each);
        assets.push_back(each.asset);
    }
    (void)carryOut(editing, Outcome<Project>(std::move(project)), "Import Media");
    co_return assets;
}

QCoro::Task<Outcome<std::vector<Path>>> consolidateMedia(Editing editing, std::vector<Path> folders)
{
    AppState& state = editing.state;
    if (!state.files().isInWorkspace())
        co_return Refusal{Reason::noMediaFolder};
    Path const projectFolder = state.files().file()->parent_path();
    folders.push_back(projectFolder);

    auto const copy = [outside = assetsOutside(state, folders),
                       folder = Workspace::mediaFolder(projectFolder)] {
        return copyAll(outside, folder);
    };
    std::vector<Copied> const copies = co_await onWorker(copy);

    std::vector<Path> files;
    Project project = state.project();
    for (Copied const& each : copies) {
        files.push_back(each.file);
        if (!project.asset(each.asset))
            continue; // Undone while its file was copied.
        MediaAsset& asset = project.assets.edit()[each.asset];
        asset.url.path = each.file.string();
        asset.playbackURL = asset.url;
    }
    if (!(project == state.project())) {
        state.commit(std::move(project), "Consolidate Media", editing.author);
        state.files().forgetAssetRefs();
        state.media().load();
    }
    co_return files;
}

} // namespace framewright
