#pragma once

#include "model/project.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// Where an asset's file was found, so that it can be found again when it or the folder moves.
struct AssetRef {
    Id id;
    /// Relative to the project's folder where the document was made relative to one, else
    /// absolute. A path that is not UTF-8 is stored as its "file:" URL.
    std::string path;
    std::optional<std::string> bookmark; ///< Base64; preserved, written by other systems only.

    bool operator==(AssetRef const&) const = default;
};

/// A document is invalid.
///
/// `what()` is the whole sentence, and names the place: "project.tracks[1].name is missing."
class DocumentError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The form a project is stored in: `project.json`, a .fwp file, the recovery copy.
struct ProjectDocument {
    static constexpr int currentVersion = 5;

    int version = currentVersion;
    Project project;
    std::vector<AssetRef> assetRefs; ///< One per asset, in the order of their ids.

    ProjectDocument() = default;

    /// The document of a project, with its files' paths relative to `folder` when one is given.
    explicit ProjectDocument(Project project,
                             std::optional<std::filesystem::path> const& folder = std::nullopt);

    /// The stored bytes: UTF-8 JSON, indented, keys sorted, every number in the shortest form that
    /// reads back to itself, a line feed at the end. Equal documents give equal bytes.
    std::string data() const;

    bool operator==(ProjectDocument const&) const = default;
};

/// A decoded document, and the paths of its keys that this version does not know.
struct DecodedDocument {
    ProjectDocument document;
    std::vector<std::string> unknownKeys; ///< "project.tracks[0].colour"
};

/// Reads the stored form. Throws DocumentError for what is not JSON, lacks a required key, holds a
/// value of another type, or was written by a newer version.
DecodedDocument decodeProjectDocument(std::string_view data);

} // namespace framewright
