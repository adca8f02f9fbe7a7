#pragma once

#include "editor/commands/rendering_commands.h"
#include "media/media_info.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace framewright {

// The data in replies. Times are seconds, rounded to the microsecond; levels are linear. References
// ("v1:2") change as clips come and go, ids do not.

nlohmann::json timelineJSON(AppState const& editor);

/// A track with its clips, or its caption bars' number.
nlohmann::json trackJSON(Project const& project, Track const& track);

/// The same without its clips: how many there are and where they end.
nlohmann::json trackSummaryJSON(Project const& project, Track const& track);

nlohmann::json clipJSON(Project const& project, Track const& track, Clip const& clip);

/// The clip with this id; null when it is gone.
nlohmann::json clipJSON(Project const& project, Id const& clipID);

/// A style: its font, and those of its effects that are on.
nlohmann::json styleJSON(CaptionStyle const& style);

nlohmann::json assetJSON(AppState const& editor, MediaAsset const& asset);

nlohmann::json mediaInfoJSON(MediaInfo const& info);

/// The clips whose files can't be opened, with the reason.
nlohmann::json missingMediaJSON(AppState const& editor);
nlohmann::json missingMediaJSON(RenderedProject const& rendered);

/// A number without the last digits of its arithmetic.
double rounded(double number);

} // namespace framewright
