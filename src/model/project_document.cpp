#include "model/project_document.h"

#include "model/json_reading.h"
#include "model/json_writing.h"

namespace framewright {

namespace {

std::string storedPath(FileURL const& url, std::optional<std::filesystem::path> const& folder)
{
    std::filesystem::path const file(url.path);
    std::string const path = folder ? file.lexically_relative(*folder).string() : url.path;
    // No relative path leads to another root; store the absolute one.
    std::string const& usable = path.empty() ? url.path : path;
    return isValidUtf8(usable) ? usable : url.text();
}

} // namespace

ProjectDocument::ProjectDocument(Project stored, std::optional<std::filesystem::path> const& folder)
    : project(std::move(stored))
{
    for (auto const& [id, asset] : *project.assets)
        assetRefs.push_back({id, storedPath(asset.url, folder), std::nullopt});
}

std::string ProjectDocument::data() const
{
    JsonWriter writer;
    writer.write(*this);
    return writer.take();
}

DecodedDocument decodeProjectDocument(std::string_view data)
{
    nlohmann::json const json = parseJson(data);
    JsonPlace const root;

    // Checked first: a newer document may have any shape, and must not be reported as broken.
    if (json.is_object() && json.contains("version") && json["version"].is_number_integer() &&
        json["version"].get<double>() > ProjectDocument::currentVersion)
        throw DocumentError("The project was written by a newer Framewright (format " +
                            json["version"].dump() + ", this one reads up to " +
                            std::to_string(ProjectDocument::currentVersion) + ").");

    DecodedDocument decoded;
    JsonReader reader;
    reader.read(json, root, decoded.document);
    decoded.unknownKeys = std::move(reader.unknownKeys);
    return decoded;
}

} // namespace framewright
