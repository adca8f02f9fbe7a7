#include "cli/tools/clip_results.h"

#include "cli/references.h"
#include "cli/tools/json_views.h"
#include "model/time_rules.h"

#include <cmath>

namespace framewright {

ClipPlace editableClip(AppState const& editor, Id const& id)
{
    auto const place = findClip(editor.project(), id);
    if (!place)
        throw ToolError("The clip is gone.");
    requireUnlocked(editor.project(), *place->track);
    return *place;
}

ToolResult clipResult(AppState const& editor, Id const& id, std::optional<double> wantedStart)
{
    auto const place = findClip(editor.project(), id);
    nlohmann::json const json = {{"clip", clipJSON(editor.project(), id)}};
    bool const isElsewhere =
        wantedStart && std::abs(place->clip->timelineStart - *wantedStart) > timeTolerance;
    if (!isElsewhere)
        return ToolResult::json(json);
    std::string const landed = "landed at " + secondsText(place->clip->timelineStart);
    return ToolResult::json(json, place->track->isMagnetic
                                      ? "Magnetic track: the clip " + landed +
                                            ", packed against its neighbors."
                                      : "The clip " + landed + ", the nearest spot to " +
                                            secondsText(*wantedStart) + " that fits.");
}

} // namespace framewright
