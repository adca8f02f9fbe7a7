// Commands that show what the piece looks like.

#include "cli/references.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/values.h"
#include "model/time_rules.h"
#include "stills/contact_sheet.h"
#include "tasks/on_worker.h"

#include <fmt/format.h>

#include <cmath>

namespace framewright {

using Json = nlohmann::json;

namespace {

constexpr int narrowest = 16;
constexpr int widest = 1080;
/// As much as a PNG of it can be made of in a second.
constexpr std::int64_t mostSheetPixels = 40'000'000;

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

int checkedWidth(int pixels)
{
    if (pixels < narrowest || pixels > widest)
        throw ToolError("width must be 16 to 1080.");
    return pixels;
}

double checkedTime(double time, std::string_view name)
{
    if (time < 0)
        throw ToolError(std::string(name) + " must be 0 or later.");
    return time;
}

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

/// The moments that pictures are drawn of, and what there is to say where they are not those that
/// were asked for.
struct ShownMoments {
    ShownMoments(AppState const& editor, std::vector<double> const& asked)
    {
        double const pieceEnd = editor.project().videoDuration();
        std::vector<double> beyond;
        for (double const time : asked) {
            bool const isInside = time < pieceEnd - timeTolerance || time == 0;
            drawn.push_back(isInside ? time : lastFrameTime(editor.project(), editor.assets()));
            if (!isInside)
                beyond.push_back(time);
        }
        if (beyond.empty())
            return;
        note = pieceEnd < timeTolerance
                   ? "The piece has no picture yet; this is how it begins."
                   : "The piece ends at " + secondsText(pieceEnd) +
                         "; its last frame is shown for " + timesText(beyond) + ".";
    }

    std::vector<double> drawn;
    std::string note;
};

/// What is told of pictures of the project as it is.
Json pictureJSON(AppState const& editor, PixelSize size)
{
    Json json = {{"width", size.width}, {"height", size.height}};
    if (Json missing = missingMediaJSON(editor); !missing.empty())
        json["missing"] = std::move(missing);
    return json;
}

ToolResult pictureResult(std::vector<std::uint8_t> const& png, Json const& json,
                         std::string const& note)
{
    ToolResult result = ToolResult::json(json, note);
    result.images.emplace_back(png.begin(), png.end());
    return result;
}

Task<ToolResult> drawFrame(ToolArgs args, EditorTools tools)
{
    AppState& editor = tools.editor;
    requireProject(editor);
    int const pixels = checkedWidth(args.get(width, 360));
    co_await editor.refreshAssets();
    requireProject(editor);
    ShownMoments const shown(editor, {checkedTime(args[at], "at")});
    double const time = shown.drawn.front();
    Json json = pictureJSON(editor, stillSize(editor.project().aspect, pixels));
    json["at"] = rounded(time);

    auto const draw = [&stills = tools.stills, project = editor.project(), assets = editor.assets(),
                       time, pixels] { return stills.png(project, assets, time, pixels); };
    std::vector<std::uint8_t> const png = co_await onWorker(draw);
    co_return pictureResult(png, json, shown.note);
}

SheetMoments sheetMoments(ToolArgs const& args)
{
    SheetMoments moments;
    moments.every = args.find(every);
    moments.times = args.get(times, {});
    if (moments.every && !moments.times.empty())
        throw ToolError("Give times or every, not both.");
    if (!moments.times.empty() && (args.has(start) || args.has(end)))
        throw ToolError("Give times or start and end, not both.");
    for (double const time : moments.times)
        checkedTime(time, "times");
    if ((moments.start = args.find(start)))
        checkedTime(*moments.start, "start");
    moments.end = args.find(end);
    return moments;
}

ContactSheet sheetLayout(ToolArgs const& args, AppState const& editor, std::size_t frames)
{
    ContactSheet const sheet{args.get(columns, 4), checkedWidth(args.get(frameWidth, 240))};
    if (sheet.columns < 1 || sheet.columns > int(mostSheetFrames))
        throw ToolError(fmt::format("columns must be 1 to {}.", mostSheetFrames));
    PixelSize const size = sheet.size(editor.project().aspect, frames);
    if (std::int64_t(size.width) * size.height > mostSheetPixels)
        throw ToolError(fmt::format("The sheet would be {} × {} pixels; use a smaller width or "
                                    "fewer frames.",
                                    size.width, size.height));
    return sheet;
}

/// "4 frames, left to right then down, at 0, 0.5, 1 and 1.5 s."
std::string sheetNote(ShownMoments const& shown)
{
    std::size_t const count = shown.drawn.size();
    std::string const note = fmt::format("{} frame{}, left to right then down, at {}.", count,
                                         count == 1 ? "" : "s", timesText(shown.drawn));
    return shown.note.empty() ? note : note + "\n" + shown.note;
}

Task<ToolResult> drawSheet(ToolArgs args, EditorTools tools)
{
    AppState& editor = tools.editor;
    requireProject(editor);
    co_await editor.refreshAssets();
    requireProject(editor);
    SheetMoments const moments = sheetMoments(args);
    std::vector<double> const asked =
        accepted(sheetTimes(moments, editor.project().videoDuration()));
    ShownMoments const shown(editor, asked);
    ContactSheet const sheet = sheetLayout(args, editor, asked.size());
    // Told as it is now: the project may be another one when the sheet is drawn.
    Json json = pictureJSON(editor, sheet.size(editor.project().aspect, asked.size()));
    json["frames"] = asked.size();

    auto const draw = [&stills = tools.stills, project = editor.project(), assets = editor.assets(),
                       sheet, drawn = shown.drawn] {
        return pngFile(sheet.draw(stills, project, assets, drawn));
    };
    std::vector<std::uint8_t> const png = co_await onWorker(draw);
    co_return pictureResult(png, json, sheetNote(shown));
}

} // namespace

std::vector<Tool> pictureTools(EditorTools tools)
{
    return {
        {
            .name = "frame",
            .description = "The picture at a time, with text and captions drawn on, written as a "
                           "PNG (--out, default in the cache). Cheap; use it to check a moment.",
            .params = {at, width, out},
            .action = [tools](ToolArgs args) { return drawFrame(std::move(args), tools); },
        },
        {
            .name = "contact_sheet",
            .description = "One PNG of many frames, each labeled with its time (--out, default in "
                           "the cache): the fastest way to see a whole edit. Default: 12 frames "
                           "spread over the piece.",
            .params = {every, times, start, end, columns, frameWidth, out},
            .action = [tools](ToolArgs args) { return drawSheet(std::move(args), tools); },
        },
    };
}

} // namespace framewright
