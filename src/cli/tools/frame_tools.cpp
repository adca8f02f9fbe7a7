// Commands that show what the project looks like.

#include "cli/references.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/values.h"
#include "editor/commands/rendering_commands.h"
#include "model/time_rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace framewright {

using Json = nlohmann::json;

namespace {

Param<Moment> const at{"at", "The time to render."};
Param<WholeNumber> const width{"width", "Pixels wide (default 360, max 1080).", optionalParam};
Param<FilePath> const out{
    "out", "Where to write the PNG (default: cache/frames in the workspace, else the temp folder).",
    optionalParam};

Param<Number> const every{"every", "Seconds between frames.", optionalParam};
Param<ListOf<Moment>> const times{"times", "Exact times instead of every.", optionalParam};
Param<Moment> const start{"start", "First time (default 0).", optionalParam};
Param<Moment> const end{"end", "Last time (default: the end).", optionalParam};
Param<WholeNumber> const columns{"columns", "Frames per row (default 4).", optionalParam};
Param<WholeNumber> const frameWidth{"width", "Pixels per frame (default 240).", optionalParam};

/// "0, 0.5, 1 and 1.5 s"
std::string timesText(std::vector<double> const& moments)
{
    std::string list;
    for (std::size_t n = 0; n < moments.size(); ++n) {
        if (n > 0)
            list += n + 1 < moments.size() ? ", " : " and ";
        list += fmt::format("{}", std::round(moments[n] * 100) / 100);
    }
    return list + " s";
}

std::vector<double> drawnTimes(DrawnFrames const& frames)
{
    std::vector<double> times;
    std::ranges::transform(frames.times, std::back_inserter(times), &DrawnTime::drawn);
    return times;
}

/// The note on times past the end; empty when there are none.
std::string pastEndNote(DrawnFrames const& frames)
{
    std::vector<double> pastEnd;
    for (DrawnTime const& time : frames.times) {
        if (time.isPastEnd())
            pastEnd.push_back(time.asked);
    }
    if (pastEnd.empty())
        return {};
    double const end = frames.of.project.videoDuration();
    return end < timeTolerance ? "The piece has no picture yet; this is how it begins."
                               : "The piece ends at " + secondsText(end) +
                                     "; its last frame is shown for " + timesText(pastEnd) + ".";
}

/// "4 frames, left to right then down, at 0, 0.5, 1 and 1.5 s."
std::string sheetNote(DrawnFrames const& frames)
{
    std::size_t const count = frames.times.size();
    std::string const note = fmt::format("{} frame{}, left to right then down, at {}.", count,
                                         count == 1 ? "" : "s", timesText(drawnTimes(frames)));
    std::string const pastEnd = pastEndNote(frames);
    return pastEnd.empty() ? note : note + "\n" + pastEnd;
}

ToolResult imageResult(DrawnFrames const& frames, Json json, std::string const& note)
{
    json["width"] = frames.size.width;
    json["height"] = frames.size.height;
    if (Json missing = missingMediaJSON(frames.of); !missing.empty())
        json["missing"] = std::move(missing);
    ToolResult result = ToolResult::json(json, note);
    result.images.emplace_back(frames.png.begin(), frames.png.end());
    return result;
}

Task<ToolResult> showFrame(ToolArgs args, EditorTools tools)
{
    AppState& editor = tools.editing.state;
    requireProject(editor);
    DrawnFrames const drawn =
        accepted(co_await drawFrame(editor, tools.stills, args[at], args.find(width)));
    co_return imageResult(drawn, {{"at", rounded(drawn.times.front().drawn)}}, pastEndNote(drawn));
}

Task<ToolResult> showSheet(ToolArgs args, EditorTools tools)
{
    AppState& editor = tools.editing.state;
    requireProject(editor);
    SheetWanted wanted;
    wanted.moments.every = args.find(every);
    wanted.moments.times = args.get(times, {});
    wanted.moments.start = args.find(start);
    wanted.moments.end = args.find(end);
    wanted.columns = args.find(columns);
    wanted.frameWidth = args.find(frameWidth);
    if (wanted.moments.every && !wanted.moments.times.empty())
        throw ToolError("Give times or every, not both.");
    if (!wanted.moments.times.empty() && (args.has(start) || args.has(end)))
        throw ToolError("Give times or start and end, not both.");
    DrawnFrames const drawn = accepted(co_await drawSheet(editor, tools.stills, wanted));
    co_return imageResult(drawn, {{"frames", drawn.times.size()}}, sheetNote(drawn));
}

} // namespace

std::vector<Tool> frameTools(EditorTools tools)
{
    return {
        {
            .name = "frame",
            .description = "The picture at a time, with text and captions drawn on, written as a "
                           "PNG (--out, default in the cache). Cheap; use it to check a moment.",
            .params = {at, width, out},
            .action = [tools](ToolArgs args) { return showFrame(std::move(args), tools); },
        },
        {
            .name = "contact_sheet",
            .description = "One PNG of many frames, each labeled with its time (--out, default in "
                           "the cache): the fastest way to see a whole edit. Default: 12 frames "
                           "spread over the piece.",
            .params = {every, times, start, end, columns, frameWidth, out},
            .action = [tools](ToolArgs args) { return showSheet(std::move(args), tools); },
        },
    };
}

} // namespace framewright
