#include "export/exporter.h"

#include "composition/composition_builder.h"
#include "composition/composition_validator.h"
#include "export/internal/export_checks.h"
#include "export/internal/remaining_time.h"
#include "media/media_error.h"
#include "media/movie_writer.h"
#include "model/time_rules.h"
#include "pipeline/audio_producer.h"
#include "pipeline/frame_producer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <system_error>
#include <thread>

namespace framewright {

namespace {

constexpr double previewLongSide = 960;
/// HEVC's factor for what H.264 looks like at MovieSettings' own, in a smaller file.
constexpr double hevcQuality = 22;
constexpr std::size_t queuedFrames = 4;

/// Of each decoder. Decoding is about a third of the work, and every thread holds another frame.
int decoderThreads()
{
    return std::max(2, int(std::thread::hardware_concurrency() / 2));
}

/// The frames to export, from `start` on.
struct Plan {
    std::shared_ptr<BuiltComposition const> composition;
    double start = 0;
    int frames = 0;

    int framesPerSecond() const { return composition->video.framesPerSecond; }

    /// The sample, counted from the first, that plays when a frame begins.
    std::int64_t sampleOf(int frame) const
    {
        return std::llround(double(frame) * AudioProducer::sampleRate / framesPerSecond());
    }
};

MovieSettings movieSettings(VideoComposition const& video, ExportSettings::Quality quality)
{
    MovieSettings settings;
    settings.width = video.renderSize.width;
    settings.height = video.renderSize.height;
    settings.framesPerSecond = video.framesPerSecond;
    if (video.colors.isHDR()) {
        settings.codec = MovieSettings::Codec::hevcHLG;
        settings.quality = hevcQuality;
        settings.preset = "superfast";
    }
    if (quality == ExportSettings::Quality::preview) {
        settings.quality = 23;
        settings.preset = "superfast";
    }
    return settings;
}

void throwIfStopped(std::stop_token const& stop)
{
    if (stop.stop_requested())
        throw ExportError(ExportError::Cause::cancelled, "The export was cancelled.");
}

/// All that rendering uses: it may outlive the export when something hangs.
struct Job {
    Plan plan;
    ExpectedMovie expected;
    std::filesystem::path file;
    MovieSettings movie;
    std::function<MediaInfo(std::filesystem::path const&)> probe;
    std::vector<FileIdentity> sources;

    void checkSources() const
    {
        if (auto const problem = sourceProblem(sources))
            throw ExportError(ExportError::Cause::media, *problem);
    }

    /// Checks the movie before it is moved to its final name.
    void check(std::filesystem::path const& written, WatchedWork& watched) const
    {
        throwIfStopped(watched.stop());
        watched.enter(WatchedWork::Thread::writing, "checking the file");
        checkSources();
        if (auto const problem = movieProblem(probe(written), expected))
            throw ExportError(ExportError::Cause::wrongFile, *problem);
        throwIfStopped(watched.stop());
    }
};

/// Reports progress, about once per percent of the frames.
class ProgressReports {
public:
    ProgressReports(int frames, WatchedWork& watched) : m_frames(frames), m_watched(watched) {}

    void tell(int encoded)
    {
        int const percent = int(100.0 * encoded / m_frames);
        if (percent == m_told)
            return;
        m_told = percent;
        auto const elapsed = std::chrono::steady_clock::now() - m_begin;
        auto const left =
            m_remaining.after(percent / 100.0, std::chrono::duration<double>(elapsed).count());
        m_watched.report(percent / 100.0, left ? "Rendering, " + timeLeft(*left) : "Rendering");
    }

private:
    int m_frames;
    WatchedWork& m_watched;
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    RemainingTime m_remaining;
    int m_told = -1;
};

/// What the producers make, frame by frame with its audio. Producing ends when the export stops.
class Production {
public:
    Production(Plan const& plan, WatchedWork& watched)
        : m_plan(plan),
          m_watched(watched),
          m_frames(plan.composition, {.capacity = queuedFrames,
                                      .decoderThreads = decoderThreads(),
                                      .activity = [&watched] { watched.beat(); }}),
          m_audio(plan.composition, {.activity = [&watched] { watched.beat(); }}),
          m_whenStopped(watched.stop(), [this] {
              m_frames.stop();
              m_audio.stop();
          })
    {
        m_frames.seek(plan.start, plan.frames);
        m_audio.seek(std::llround(plan.start * AudioProducer::sampleRate),
                     plan.sampleOf(plan.frames));
    }

    Frame nextFrame()
    {
        auto produced = m_frames.next();
        throwIfStopped(m_watched.stop());
        return std::move(produced.value().frame);
    }

    std::span<float const> audioOf(int frame)
    {
        m_samples.resize(std::size_t(m_plan.sampleOf(frame + 1) - m_plan.sampleOf(frame)) * 2);
        if (!m_audio.read(m_samples))
            throwIfStopped(m_watched.stop());
        return m_samples;
    }

private:
    Plan const& m_plan;
    WatchedWork& m_watched;
    std::vector<float> m_samples;
    FrameProducer m_frames;
    AudioProducer m_audio;
    std::stop_callback<std::function<void()>> m_whenStopped; ///< Last: it uses the producers.
};

void render(Job const& job, WatchedWork& watched)
{
    constexpr auto drawing = WatchedWork::Thread::drawing;
    constexpr auto writing = WatchedWork::Thread::writing;
    Plan const& plan = job.plan;
    watched.enter(writing, "beginning the file");
    MovieSettings settings = job.movie;
    settings.activity = [&watched] { watched.beat(); };
    MovieWriter writer(job.file, settings);
    Production production(plan, watched);
    ProgressReports progress(plan.frames, watched);
    for (int n = 0; n < plan.frames; ++n) {
        throwIfStopped(watched.stop());
        progress.tell(n);
        if (n % plan.framesPerSecond() == 0)
            job.checkSources();
        watched.enter(writing, nullptr);
        watched.enter(drawing, "reading and drawing the picture");
        Frame const frame = production.nextFrame();
        watched.enter(drawing, nullptr);
        watched.enter(writing, "encoding the picture");
        writer.writeFrame(frame);
        watched.enter(writing, "mixing the sound");
        writer.writeAudio(production.audioOf(n));
    }
    throwIfStopped(watched.stop());
    watched.report(1, "Finishing");
    watched.enter(writing, "finishing the file");
    writer.finish([&](std::filesystem::path const& file) { job.check(file, watched); });
}

void checkSpace(ExportSurroundings const& surroundings, std::filesystem::path const& file,
                ExpectedMovie const& movie)
{
    auto const folder = std::filesystem::absolute(file).parent_path();
    if (!std::filesystem::is_directory(folder))
        return; // Who makes the file says that better.
    if (auto const problem =
            spaceProblem(folder, estimatedBytes(movie), surroundings.freeSpace(folder)))
        throw ExportError(ExportError::Cause::noSpace, *problem);
}

} // namespace

std::optional<Refusal> targetProblem(std::filesystem::path const& file)
{
    std::error_code failed;
    if (!std::filesystem::is_directory(std::filesystem::absolute(file).parent_path(), failed))
        return Refusal{Reason::folderMissing, Subject::named(file.parent_path().string())};
    if (std::filesystem::is_directory(file, failed))
        return Refusal{Reason::targetIsFolder, Subject::named(file.string())};
    if (std::filesystem::exists(file, failed) && !std::filesystem::is_regular_file(file, failed))
        return Refusal{Reason::targetNotReplaceable, Subject::named(file.string())};
    return std::nullopt;
}

std::uintmax_t ExportSurroundings::freeBytes(std::filesystem::path const& folder)
{
    std::error_code failed;
    auto const space = std::filesystem::space(folder, failed);
    // Where a file system doesn't tell, it shows when the disk is full.
    return failed ? std::numeric_limits<std::uintmax_t>::max() : space.available;
}

Exporter::Exporter(Project project, AssetStore assets, std::shared_ptr<CaptionBurner const> burner,
                   ExportSettings settings, ExportSurroundings surroundings)
    : m_project(std::move(project)),
      m_assets(std::move(assets)),
      m_burner(std::move(burner)),
      m_settings(std::move(settings)),
      m_surroundings(std::move(surroundings))
{
}

PixelSize Exporter::size() const
{
    if (m_settings.height)
        return canvasWithHeight(m_project.aspect, *m_settings.height);
    if (m_settings.quality == ExportSettings::Quality::preview)
        return canvasWithLongSide(m_project.aspect, previewLongSide);
    return CompositionBuilder::exportRenderSize(m_project, m_assets);
}

ExportResult Exporter::run(ExportProgress const& progress, std::stop_token stop) const
{
    double const duration = m_project.videoDuration();
    double const start = std::max(0.0, m_settings.start.value_or(0));
    double const end = std::min(duration, m_settings.end.value_or(duration));
    if (!(end - start > timeTolerance))
        throw ExportError(ExportError::Cause::emptyRange, "The range is empty.");

    DynamicRange const range = m_settings.quality == ExportSettings::Quality::full
                                   ? DynamicRange::ofFootage
                                   : DynamicRange::standard;
    CompositionBuilder::Output const output{size(), exportFrameRate(m_project, m_assets), true,
                                            range};
    auto const overlays = m_burner->overlays(m_project, m_assets, output.renderSize);
    Plan plan{std::make_shared<BuiltComposition const>(
                  CompositionBuilder::build(m_project, m_assets, output, overlays)),
              start, 0};
    plan.frames = std::max(1, int(std::lround((end - start) * output.framesPerSecond)));
    if (auto const problem = CompositionValidator::problem(*plan.composition))
        throw ExportError(ExportError::Cause::media, *problem);
    throwIfStopped(stop);
    ExportResult const result{m_settings.file, double(plan.frames) / output.framesPerSecond,
                              output.renderSize, plan.frames, output.framesPerSecond};
    VideoComposition const& video = plan.composition->video;
    ExpectedMovie const expected{output.renderSize, output.framesPerSecond, result.duration,
                                 video.colors.isHDR(), m_settings.quality};
    checkSpace(m_surroundings, m_settings.file, expected);
    MovieSettings movie = movieSettings(video, m_settings.quality);
    if (video.colors.isHDR())
        movie.mastering = exportMastering(m_project, m_assets);
    std::vector<FileIdentity> sources =
        sourcesOf(*plan.composition, {start, start + result.duration});
    auto const job =
        std::make_shared<Job const>(Job{std::move(plan), expected, m_settings.file, movie,
                                        m_surroundings.probe, std::move(sources)});
    struct ReleaseMemory {
        ~ReleaseMemory() { releaseSpareFrames(); }
    } const whenDone;
    try {
        runWatched([job](WatchedWork& watched) { render(*job, watched); }, progress, stop,
                   m_surroundings.stall);
    } catch (MediaError const& error) {
        throw ExportError(ExportError::Cause::media, error.what());
    } catch (std::bad_alloc const&) {
        throw ExportError(ExportError::Cause::media,
                          "There is not enough memory to export at this size.");
    } catch (Stalled const& stalled) {
        throw ExportError(ExportError::Cause::stalled,
                          "The export was given up: " + stalled.stage + " made no progress for " +
                              std::to_string(std::chrono::duration_cast<std::chrono::seconds>(
                                                 m_surroundings.stall.patience)
                                                 .count()) +
                              " seconds. Nothing was exported.");
    }
    return result;
}

} // namespace framewright
