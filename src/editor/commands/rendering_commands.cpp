#include "editor/commands/rendering_commands.h"

#include "model/file_url.h"
#include "model/time_rules.h"
#include "tasks/on_worker.h"
#include "workspace/workspace.h"

#include <QDateTime>

#include <algorithm>

namespace framewright {

namespace {

using Path = std::filesystem::path;

constexpr int narrowest = 16;
constexpr int widest = 1080;
constexpr int usualFrameWidth = 360;
constexpr int usualSheetFrameWidth = 240;
constexpr int usualColumns = 4;
/// The most pixels that become a PNG in about a second.
constexpr std::int64_t mostSheetPixels = 40'000'000;
constexpr int lowestMovie = 480;
constexpr int highestMovie = 4320;

RenderedProject rendered(AppState const& state)
{
    return {state.project(), state.media().problems()};
}

std::optional<Refusal> widthRefusal(int width)
{
    if (width < narrowest || width > widest)
        return Refusal{Reason::outOfRange, Subject::setting(Setting::frameWidth)};
    return std::nullopt;
}

std::optional<Refusal> timeRefusal(Setting which, std::optional<double> time)
{
    if (time && *time < 0)
        return Refusal{Reason::outOfRange, Subject::setting(which)};
    return std::nullopt;
}

std::vector<DrawnTime> drawnTimes(AppState const& state, std::vector<double> const& asked)
{
    double const end = state.project().videoDuration();
    std::vector<DrawnTime> times;
    for (double const time : asked) {
        bool const isInside = time < end - timeTolerance || time == 0;
        times.push_back(
            {time, isInside ? time : lastFrameTime(state.project(), state.media().store())});
    }
    return times;
}

std::optional<Refusal> sheetRefusal(SheetWanted const& wanted, int width)
{
    if (auto const refusal = widthRefusal(width))
        return refusal;
    for (double const time : wanted.moments.times) {
        if (auto const refusal = timeRefusal(Setting::sheetTimes, time))
            return refusal;
    }
    return timeRefusal(Setting::rangeStart, wanted.moments.start);
}

/// "NAME-20261122-223105.mp4", in a folder.
Path unusedExportFile(Path const& folder, std::string const& project)
{
    std::string const time =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")).toStdString();
    std::string const stem = project + "-" + time;
    Path file = folder / (stem + ".mp4");
    for (int number = 2; std::filesystem::exists(file); ++number)
        file = folder / (stem + "-" + std::to_string(number) + ".mp4");
    return file;
}

Outcome<Path> exportFile(std::optional<Path> given, ProjectFiles const& files)
{
    if (!given) {
        if (!files.isInWorkspace())
            return Refusal{Reason::noExportsFolder};
        Path const folder = Workspace::exportsFolder(files.file()->parent_path());
        std::filesystem::create_directories(folder);
        return unusedExportFile(folder, files.projectName());
    }
    QString const ending = QString::fromStdString(given->extension().string());
    bool const isMovie = ending.compare(QLatin1String(".mp4"), Qt::CaseInsensitive) == 0;
    if (!isMovie && std::filesystem::is_directory(*given))
        return unusedExportFile(*given, files.projectName());
    if (given->filename().empty())
        return Refusal{Reason::folderMissing,
                       Subject::named(validUtf8(given->parent_path().string()))};
    if (!isMovie)
        *given += ".mp4";
    return *given;
}

Outcome<ExportSettings> exportSettings(AppState const& state, MovieWanted const& wanted)
{
    if (wanted.height && (*wanted.height < lowestMovie || *wanted.height > highestMovie))
        return Refusal{Reason::outOfRange, Subject::setting(Setting::exportHeight)};
    double const from = wanted.start.value_or(0);
    if (auto const refusal = timeRefusal(Setting::rangeStart, from))
        return *refusal;
    if (wanted.end.value_or(state.project().videoDuration()) - from < timeTolerance)
        return Refusal{Reason::emptyRange};
    auto const file = exportFile(wanted.file, state.files());
    if (!file)
        return file.refusal();
    ExportSettings settings;
    settings.file = *file;
    settings.quality = wanted.quality;
    settings.height = wanted.height;
    settings.start = wanted.start;
    settings.end = wanted.end;
    return settings;
}

/// Why rendering is no longer possible after a wait.
std::optional<Refusal> closedRefusal(AppState const& state)
{
    return state.isOpen() ? std::nullopt : std::optional(Refusal{Reason::noProject});
}

} // namespace

QCoro::Task<Outcome<DrawnFrames>> drawFrame(AppState& state, StillFrames& stills, double time,
                                            std::optional<int> wantedWidth)
{
    int const width = wantedWidth.value_or(usualFrameWidth);
    if (auto const refusal = widthRefusal(width))
        co_return *refusal;
    if (auto const refusal = timeRefusal(Setting::placeTime, time))
        co_return *refusal;
    co_await state.media().refresh();
    if (auto const refusal = closedRefusal(state))
        co_return *refusal;

    DrawnFrames drawn{
        rendered(state), drawnTimes(state, {time}), stillSize(state.project().aspect, width), {}};
    auto const draw = [&stills, project = drawn.of.project, store = state.media().store(),
                       at = drawn.times.front().drawn,
                       width] { return stills.png(project, store, at, width); };
    drawn.png = co_await onWorker(draw);
    co_return drawn;
}

QCoro::Task<Outcome<DrawnFrames>> drawSheet(AppState& state, StillFrames& stills,
                                            SheetWanted wanted)
{
    ContactSheet const sheet{wanted.columns.value_or(usualColumns),
                             wanted.frameWidth.value_or(usualSheetFrameWidth)};
    co_await state.media().refresh();
    if (auto const refusal = closedRefusal(state))
        co_return *refusal;
    if (auto const refusal = sheetRefusal(wanted, sheet.frameWidth))
        co_return *refusal;
    auto const asked = sheetTimes(wanted.moments, state.project().videoDuration());
    if (!asked)
        co_return asked.refusal();
    if (sheet.columns < 1 || sheet.columns > int(mostSheetFrames))
        co_return Refusal{Reason::outOfRange, Subject::setting(Setting::sheetColumns)};

    PixelSize const size = sheet.size(state.project().aspect, asked->size());
    if (std::int64_t(size.width) * size.height > mostSheetPixels)
        co_return Refusal{Reason::sheetTooLarge, Subject::named(std::to_string(size.width) + " × " +
                                                                std::to_string(size.height))};
    DrawnFrames drawn{rendered(state), drawnTimes(state, *asked), size, {}};
    std::vector<double> times;
    std::ranges::transform(drawn.times, std::back_inserter(times), &DrawnTime::drawn);
    auto const draw = [&stills, project = drawn.of.project, store = state.media().store(), sheet,
                       times] { return pngFile(sheet.draw(stills, project, store, times)); };
    drawn.png = co_await onWorker(draw);
    co_return drawn;
}

QCoro::Task<Outcome<ExportedMovie>> exportMovie(AppState& state, ExportSession& exports,
                                                MovieWanted wanted, ExportProgress progress,
                                                std::stop_token stop)
{
    if (exports.isRunning())
        co_return Refusal{Reason::exportRunning};
    auto const settings = exportSettings(state, wanted);
    if (!settings)
        co_return settings.refusal();
    co_await state.media().refresh(MediaPool::Missing::searched);
    if (auto const refusal = closedRefusal(state))
        co_return *refusal;
    RenderedProject const of = rendered(state);
    auto const movie = co_await exports.run(*settings, progress, stop);
    if (!movie)
        co_return movie.refusal();
    co_return ExportedMovie{of, *movie};
}

} // namespace framewright
