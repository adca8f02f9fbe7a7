#include "workspace/workspace.h"

#include "model/file_url.h"
#include "platform/file_error.h"
#include "workspace/project_folders.h"
#include "workspace/workspace_messages.h"

#include <QString>

#include <algorithm>
#include <system_error>

namespace framewright::Workspace {

namespace {

constexpr char pathKey[] = "workspace.path";
constexpr char olderPathKey[] = "library.path";
constexpr char recentKey[] = "workspace.recent";
constexpr char olderRecentKey[] = "library.recent";
constexpr std::size_t mostRecent = 8;

Path wholePath(Path const& path)
{
    std::error_code error;
    Path const whole = std::filesystem::absolute(path, error);
    return (error ? path : whole).lexically_normal();
}

/// `path` as a folder: "/a/b/" and "/a/b" are the same one.
Path withoutLastSlash(Path const& path)
{
    return path.has_filename() || path == path.root_path() ? path : path.parent_path();
}

bool holdsFile(Path const& folder, char const* name)
{
    std::error_code error;
    return std::filesystem::is_regular_file(folder / name, error);
}

/// A path's form in the user defaults, which store text.
std::string pathText(Path const& path)
{
    return isValidUtf8(path.string()) ? path.string() : FileURL{path.string()}.text();
}

std::optional<Path> pathFromText(std::string const& text)
{
    if (auto const url = FileURL::parse(text))
        return url->path;
    return Path(text).is_absolute() ? std::optional<Path>(text) : std::nullopt;
}

std::string lowerCased(std::string_view name)
{
    return QString::fromUtf8(name.data(), qsizetype(name.size())).toLower().toStdString();
}

std::set<std::string> lowerCasedEntries(Path const& folder)
{
    std::set<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        names.insert(lowerCased(entry->path().filename().string()));
    if (error && error != std::errc::no_such_file_or_directory)
        throw WorkspaceError(validUtf8(FileError(FileError::Cause::unreadable, folder, "listed",
                                                 systemErrorText(error.value()))
                                           .what()));
    return names;
}

} // namespace

bool isWorkspace(Path const& folder)
{
    return holdsFile(folder, "workspace.json") || holdsFile(folder, "library.json") ||
           holdsFile(folder, "Framewright.md");
}

bool isProjectDocument(Path const& file)
{
    Path const whole = wholePath(file);
    return whole.filename() == "project.json" &&
           whole.parent_path().parent_path().filename() == "projects";
}

std::optional<Path> findWorkspace(Path const& folder)
{
    for (Path place = withoutLastSlash(wholePath(folder));; place = place.parent_path()) {
        if (isWorkspace(place))
            return place;
        if (!place.has_relative_path())
            return std::nullopt;
    }
}

std::string canonicalPath(Path const& path)
{
    std::error_code error;
    Path const resolved = std::filesystem::weakly_canonical(wholePath(path), error);
    std::string text = withoutLastSlash(error ? wholePath(path) : resolved).string();
    constexpr std::string_view prefix = "/private";
    if (text.starts_with(std::string(prefix) + "/"))
        text.erase(0, prefix.size());
    return text;
}

bool isInside(Path const& file, Path const& folder)
{
    Path const way = Path(canonicalPath(file)).lexically_relative(canonicalPath(folder));
    return !way.empty() && *way.begin() != "..";
}

Outcome<Path> openable(Path const& folder)
{
    std::error_code error;
    if (!std::filesystem::exists(folder, error))
        return Refusal{Reason::folderGone, Subject::named(folder.string())};
    if (!std::filesystem::is_directory(folder, error))
        return Refusal{Reason::notAWorkspace, Subject::named(folder.string())};
    std::filesystem::directory_iterator(folder, error);
    if (error)
        throw WorkspaceError(
            WorkspaceMessage::couldNotBeOpened(folder, systemErrorText(error.value()) + "."));
    if (!isWorkspace(folder))
        return Refusal{Reason::notAWorkspace, Subject::named(folder.string())};
    about(folder); // Throws when its marker doesn't decode.
    return folder;
}

Outcome<Path> create(Path const& parent, std::string_view name)
{
    auto const usable = validProjectName(name);
    if (!usable)
        return usable.refusal();
    Path const folder = parent / *usable;
    std::error_code error;
    bool const isTaken = std::filesystem::exists(std::filesystem::symlink_status(folder, error));
    if (isTaken && !isWorkspace(folder))
        return Refusal{Reason::folderNameTaken, Subject::named(*usable)};
    setUp(folder);
    return folder;
}

std::optional<Path> url(UserDefaults const& defaults)
{
    auto text = defaults.string(pathKey);
    if (!text)
        text = defaults.string(olderPathKey);
    return text ? pathFromText(*text) : std::nullopt;
}

void setUrl(std::optional<Path> const& folder, UserDefaults& defaults)
{
    if (folder) {
        defaults.setString(pathKey, pathText(withoutLastSlash(wholePath(*folder))));
    } else {
        defaults.remove(pathKey);
        defaults.remove(olderPathKey);
    }
}

std::vector<Path> recent(UserDefaults const& defaults)
{
    auto texts = defaults.strings(recentKey);
    if (!texts)
        texts = defaults.strings(olderRecentKey);
    std::vector<Path> folders;
    std::set<std::string> known;
    for (std::string const& text : texts.value_or(std::vector<std::string>{})) {
        auto const folder = pathFromText(text);
        if (folder && folders.size() < mostRecent && known.insert(canonicalPath(*folder)).second)
            folders.push_back(*folder);
    }
    return folders;
}

void remember(Path const& folder, UserDefaults& defaults)
{
    std::string const same = canonicalPath(folder);
    std::vector<std::string> texts = {pathText(withoutLastSlash(wholePath(folder)))};
    for (Path const& other : recent(defaults)) {
        if (texts.size() < mostRecent && canonicalPath(other) != same)
            texts.push_back(pathText(other));
    }
    defaults.setStrings(recentKey, texts);
}

Path markerFile(Path const& workspace)
{
    return workspace / "workspace.json";
}

Path projectsFolder(Path const& workspace)
{
    return workspace / "projects";
}

Path projectFolder(Path const& workspace, std::string_view name)
{
    return projectsFolder(workspace) / name;
}

Path settingsFolder(Path const& workspace)
{
    return workspace / "settings";
}

Path framesCache(Path const& workspace)
{
    return workspace / "cache" / "frames";
}

Path transcriptsCache(Path const& workspace)
{
    return workspace / "cache" / "transcripts";
}

Path projectFile(Path const& projectFolder)
{
    return projectFolder / "project.json";
}

Path thumbnailFile(Path const& projectFolder)
{
    return projectFolder / "thumbnail.png";
}

Path exportsFolder(Path const& projectFolder)
{
    return projectFolder / "exports";
}

Path mediaFolder(Path const& projectFolder)
{
    return projectFolder / "media";
}

std::string uniqueName(std::string_view name, Path const& folder)
{
    auto const taken = lowerCasedEntries(folder);
    std::string candidate(name);
    for (int number = 2; taken.contains(lowerCased(candidate)); ++number)
        candidate = std::string(name) + " " + std::to_string(number);
    return candidate;
}

} // namespace framewright::Workspace
