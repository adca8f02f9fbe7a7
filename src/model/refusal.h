#pragma once

#include "model/id.h"
#include "model/media_asset.h"
#include "model/reason.h"
#include "model/time_range.h"

#include <optional>
#include <string>

namespace framewright {

/// What a refusal is about, if anything.
struct Subject {
    enum class What { nothing, track, clip, asset, setting, name };

    What what = What::nothing;
    Id id = {};            ///< Of a track, clip or asset.
    Setting number = {};   ///< Of a setting.
    std::string text = {}; ///< A file's, folder's or project's name. Also of an asset: one
                           ///< that was not added yet is in no project.

    static Subject track(Id const& id) { return {.what = What::track, .id = id}; }
    static Subject clip(Id const& id) { return {.what = What::clip, .id = id}; }
    static Subject asset(MediaAsset const& asset)
    {
        return {.what = What::asset, .id = asset.id, .text = asset.displayName};
    }
    static Subject setting(Setting number) { return {.what = What::setting, .number = number}; }
    static Subject named(std::string name) { return {.what = What::name, .text = std::move(name)}; }

    bool operator==(Subject const&) const = default;
};

/// Why an edit was refused. Nothing was changed.
struct Refusal {
    Reason reason;
    Subject subject = {};
    std::optional<TimeRange> limits = {}; ///< What would have been accepted.
    std::optional<double> value = {};     ///< Its meaning depends on the reason.

    bool operator==(Refusal const&) const = default;
};

} // namespace framewright
