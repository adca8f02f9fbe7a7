#include "cli/tools/clip_results.h"

#include "cli/references.h"
#include "cli/tools/json_views.h"
#include "cli/values.h"
#include "model/time_rules.h"

#include <cmath>

namespace framewright {

namespace {

std::string landingNote(ClipPlace const& place, double wantedStart)
{
    double const start = place.clip->timelineStart;
    if (std::abs(start - wantedStart) <= timeTolerance)
        return {};
    std::string const landed = "landed at " + secondsText(start);
    return place.track->isMagnetic
               ? "Magnetic track: the clip " + landed + ", packed against its neighbors."
               : "The clip " + landed + ", the nearest spot to " + secondsText(wantedStart) +
                     " that fits.";
}

/// Why a text is not visible for all of its time; empty before there is any footage.
std::string unseenNote(Project const& project, ClipPlace const& place)
{
    if (!place.clip->isText())
        return {};
    if (place.track->isHidden)
        return trackTitle(project, *place.track) +
               " is hidden, so the text is not seen until track-set shows it.";
    double const end = project.videoDuration();
    if (end <= timeTolerance || place.clip->end() <= end + timeTolerance)
        return {};
    std::string const ends = "The picture ends at " + secondsText(end);
    return place.clip->timelineStart < end - timeTolerance
               ? ends + "; the text is not seen after it."
               : ends + ", before the text begins; it is not seen.";
}

} // namespace

ToolResult clipResult(AppState const& editor, Id const& id, std::optional<double> wantedStart)
{
    auto const place = findClip(editor.project(), id);
    ToolResult result = ToolResult::json({{"clip", clipJSON(editor.project(), id)}});
    if (wantedStart)
        addNote(result, landingNote(*place, *wantedStart));
    addNote(result, unseenNote(editor.project(), *place));
    return result;
}

void addNote(ToolResult& result, std::string const& note)
{
    if (!note.empty())
        result.text += "\n" + note;
}

std::string textsBeyondEndNote(Project const& project)
{
    double const end = project.videoDuration();
    std::vector<std::string> beyond;
    for (Track const& track : project.tracks) {
        for (Clip const& clip : *track.clips) {
            if (clip.isText() && !track.isHidden && clip.end() > end + timeTolerance)
                beyond.push_back(clipRef(project, track, clip));
        }
    }
    if (beyond.empty())
        return {};
    return "The picture ends at " + secondsText(end) + "; nothing is seen after it of " +
           referenceList(beyond) + ".";
}

} // namespace framewright
