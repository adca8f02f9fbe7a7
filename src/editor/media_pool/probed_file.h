#pragma once

#include "composition/loaded_asset.h"
#include "model/media_asset.h"
#include "model/project.h"
#include "pipeline/file_identity.h"

namespace framewright {

/// A file that was probed and can become part of the project.
struct ProbedFile {
    MediaAsset asset;
    LoadedAsset loaded;
    FileIdentity seen; ///< The file as it was then.
    bool isNew = true; ///< Not yet among the project's assets.

    /// `project` with the file among its assets.
    Project addedTo(Project project) const
    {
        if (isNew)
            project.assets.edit()[asset.id] = asset;
        return project;
    }
};

} // namespace framewright
