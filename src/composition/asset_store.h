#pragma once

#include "composition/loaded_asset.h"
#include "model/id.h"
#include "model/shared.h"

#include <map>
#include <optional>

namespace framewright {

/// The opened media of a project, by asset id.
///
/// A value: a copy costs a counter, is not changed by later insertions into the original, and may
/// be used on another thread. So a worker takes one along as its snapshot.
class AssetStore {
public:
    /// The asset with this id; null when it has not been loaded.
    LoadedAsset const* find(Id const& id) const;

    /// Adds an asset, or puts it in the place of the one with this id.
    void insert(Id const& id, LoadedAsset asset);

    void erase(Id const& id);

    /// Drawn where no track has a clip. Without it the canvas shows there, which is black too, but
    /// then compositions have no filler track.
    std::optional<LoadedAsset> filler = blackPlate();

    bool operator==(AssetStore const&) const = default;

private:
    Shared<std::map<Id, LoadedAsset>> m_loaded;
};

} // namespace framewright
