// Commands that show what the piece looks like.

#include "cli/references.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "editor/worker_task.h"
#include "render/contact_sheet.h"

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

ToolResult pictureResult(std::vector<std::uint8_t> const& png, Json json, AppState const& editor,
                         std::string const& note = {})
{
    if (Json missing = missingMediaJSON(editor); !missing.empty())
        json["missing"] = std::move(missing);
    ToolResult result = ToolResult::json(json, note);
    result.images.emplace_back(png.begin(), png.end());
    return result;
}

Task<ToolResult> drawFrame(ToolArgs args, EditorTools tools)
{
    AppState& editor = tools.editor;
    requireProject(editor);
    int const pixels = checkedWidth(args.get(width, 360));
    co_await editor.assetsLoaded();
    requireProject(editor);
    double const time = checkedTime(args[at], "at");

    auto const draw = [&stills = tools.stills, project = editor.project(), assets = editor.assets(),
                       time, pixels] { return stills.png(project, assets, time, pixels); };
    std::vector<std::uint8_t> const png = co_await onWorker(draw);
    Json const json = {{"at", rounded(time)}, {"width", pixels}};
    co_return pictureResult(png, json, editor);
}

SheetMoments sheetMoments(ToolArgs const& args)
{
    SheetMoments moments;
    moments.every = args.find(every);
    moments.times = args.get(times, {});
    if (moments.every && !moments.times.empty())
        throw ToolError("Give times or every, not both.");
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
std::string sheetNote(std::vector<double> const& shown)
{
    std::string list;
    for (std::size_t n = 0; n < shown.size(); ++n) {
        if (n > 0)
            list += n + 1 < shown.size() ? ", " : " and ";
        list += fmt::format("{}", std::round(shown[n] * 100) / 100);
    }
    return fmt::format("{} frame{}, left to right then down, at {} s.", shown.size(),
                       shown.size() == 1 ? "" : "s", list);
}

Task<ToolResult> drawSheet(ToolArgs args, EditorTools tools)
{
    AppState& editor = tools.editor;
    requireProject(editor);
    co_await editor.assetsLoaded();
    requireProject(editor);
    SheetMoments const moments = sheetMoments(args);
    std::vector<double> const shown =
        accepted(sheetTimes(moments, editor.project().videoDuration()));
    ContactSheet const sheet = sheetLayout(args, editor, shown.size());

    auto const draw = [&stills = tools.stills, project = editor.project(), assets = editor.assets(),
                       sheet,
                       shown] { return pngFile(sheet.draw(stills, project, assets, shown)); };
    std::vector<std::uint8_t> const png = co_await onWorker(draw);
    PixelSize const size = sheet.size(editor.project().aspect, shown.size());
    Json const json = {{"frames", shown.size()}, {"width", size.width}, {"height", size.height}};
    co_return pictureResult(png, json, editor, sheetNote(shown));
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
