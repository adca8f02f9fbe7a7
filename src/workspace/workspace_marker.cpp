#include "workspace/workspace.h"

#include "model/file_url.h"
#include "model/json_reading.h"
#include "platform/atomic_file.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "workspace/workspace_messages.h"

#include <algorithm>

namespace framewright::Workspace {

namespace {

using Json = nlohmann::json;

constexpr int markerVersion = 1;
constexpr std::uintmax_t longestMarker = 16 * 1024 * 1024;

Json decodedMarker(std::string_view bytes)
{
    Json json = parseJson(bytes);
    if (!json.is_object())
        JsonPlace().fail("must be an object.");
    auto const version = json.find("version");
    if (version != json.end()) {
        JsonPlace const root;
        JsonPlace const place(root, "version");
        if (!version->is_number())
            place.fail("must be a number.");
        if (version->get<double>() > markerVersion)
            throw DocumentError("The workspace was written by a newer Framewright (format " +
                                version->dump() + ", this one reads up to " +
                                std::to_string(markerVersion) + ").");
    }
    return json;
}

/// A workspace's metadata, from its marker or the marker's older form; nothing when it has
/// neither.
std::optional<Json> storedMarker(Path const& workspace)
{
    for (char const* const name : {"workspace.json", "library.json"}) {
        try {
            return decodedMarker(readFile(workspace / name, longestMarker));
        } catch (FileError const& error) {
            if (error.cause != FileError::Cause::missing)
                throw WorkspaceError(WorkspaceMessage::couldNotBeOpened(workspace, error.what()));
        } catch (DocumentError const& error) {
            throw WorkspaceError(WorkspaceMessage::couldNotBeOpened(
                workspace, std::string(name) + ": " + error.what()));
        }
    }
    return std::nullopt;
}

void writeMarker(Json const& marker, Path const& workspace)
{
    try {
        writeFileAtomically(markerFile(workspace), marker.dump(2) + "\n");
    } catch (FileError const& error) {
        throw WorkspaceError(validUtf8(error.what()));
    }
}

/// The value of one key; nothing when it is missing or null.
template <class T>
std::optional<T> stored(Path const& workspace, std::string_view key)
{
    std::optional<T> value;
    auto const marker = storedMarker(workspace);
    if (!marker || !marker->contains(key))
        return value;
    try {
        JsonPlace const root;
        JsonReader().read((*marker)[std::string(key)], JsonPlace(root, key), value);
    } catch (DocumentError const& error) {
        throw WorkspaceError(WorkspaceMessage::couldNotBeOpened(
            workspace, std::string("workspace.json: ") + error.what()));
    }
    return value;
}

/// Sets or removes one key and keeps the others.
void store(Path const& workspace, std::string const& key, std::optional<Json> const& value)
{
    Json const before = storedMarker(workspace).value_or(Json{{"version", markerVersion}});
    Json after = before;
    if (value)
        after[key] = *value;
    else
        after.erase(key);
    if (after != before)
        writeMarker(after, workspace);
}

/// A folder's form in the marker: its path, or a URL when the path is not UTF-8.
std::string folderText(Path const& folder)
{
    return isValidUtf8(folder.string()) ? folder.string() : FileURL{folder.string()}.text();
}

Path folderFromText(std::string const& text, Path const& workspace)
{
    if (auto const url = FileURL::parse(text))
        return url->path;
    return (workspace / expandTilde(text)).lexically_normal();
}

} // namespace

void setUp(Path const& folder, std::chrono::system_clock::time_point now)
{
    auto marker = storedMarker(folder);
    try {
        for (Path const& part : {projectsFolder(folder), settingsFolder(folder),
                                 framesCache(folder), transcriptsCache(folder)})
            ensureFolder(part);
    } catch (FileError const& error) {
        throw WorkspaceError(validUtf8(error.what()));
    }
    // Written last, so that a marked folder is complete.
    std::error_code error;
    if (std::filesystem::exists(markerFile(folder), error))
        return;
    Json const fresh = {{"version", markerVersion}, {"created", iso8601(now)}};
    if (marker)
        marker->update(Json{{"version", markerVersion}});
    writeMarker(marker.value_or(fresh), folder);
}

std::vector<Path> mediaFolders(Path const& workspace)
{
    std::vector<Path> folders;
    auto const texts = stored<std::vector<std::string>>(workspace, "mediaFolders");
    for (std::string const& text : texts.value_or(std::vector<std::string>{})) {
        if (!text.empty())
            folders.push_back(folderFromText(text, workspace));
    }
    return folders;
}

void setMediaFolders(std::vector<Path> const& folders, Path const& workspace)
{
    Json texts = Json::array();
    std::set<std::string> known;
    for (Path const& folder : folders) {
        Path const whole = (workspace / folder).lexically_normal();
        if (known.insert(canonicalPath(whole)).second)
            texts.push_back(folderText(whole));
    }
    store(workspace, "mediaFolders", texts.empty() ? std::nullopt : std::optional(texts));
}

std::optional<std::string> about(Path const& workspace)
{
    return stored<std::string>(workspace, "about");
}

void setAbout(std::optional<std::string> const& about, Path const& workspace)
{
    store(workspace, "about", about ? std::optional<Json>(validUtf8(*about)) : std::nullopt);
}

std::optional<AspectPreset> canvas(Path const& workspace)
{
    return stored<AspectPreset>(workspace, "canvas");
}

void setCanvas(std::optional<AspectPreset> canvas, Path const& workspace)
{
    store(workspace, "canvas", canvas ? std::optional<Json>(storedWord(*canvas)) : std::nullopt);
}

std::set<std::string> seen(Path const& workspace)
{
    auto const names = stored<std::vector<std::string>>(workspace, "seen");
    return names ? std::set(names->begin(), names->end()) : std::set<std::string>{};
}

void setSeen(std::set<std::string> const& names, Path const& workspace)
{
    Json list = Json::array();
    for (std::string const& name : names)
        list.push_back(validUtf8(name));
    store(workspace, "seen", list.empty() ? std::nullopt : std::optional(list));
}

bool hadVideos(Path const& workspace)
{
    return stored<bool>(workspace, "hadVideos").value_or(false);
}

void setHadVideos(bool hadVideos, Path const& workspace)
{
    store(workspace, "hadVideos", hadVideos ? std::optional<Json>(true) : std::nullopt);
}

} // namespace framewright::Workspace
