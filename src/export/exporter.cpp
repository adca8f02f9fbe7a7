#include "export/exporter.h"

#include "composition/composition_builder.h"
#include "composition/composition_validator.h"
#include "export/internal/export_checks.h"
#include "export/internal/remaining_time.h"
#include "media/media_error.h"
#include "media/movie_writer.h"
#include "model/time_rules.h"
#include "pipeline/audio_mixer.h"
#include "pipeline/clip_audio_source.h"
#include "pipeline/clip_frame_source.h"
#include "raster/frame_compositor.h"
#include "tasks/bounded_queue.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <exception>
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
constexpr std::size_t keptReaders = 4; ///< Beyond those in use: for cuts back and forth.
constexpr std::size_t keptPhotos = 2;

/// Of each decoder. Decoding is about a third of the work, and each thread more holds a picture.
int decoderThreads()
{
    return std::max(2, int(std::thread::hardware_concurrency() / 2));
}

/// What is rendered: the frames from `start` on.
struct Plan {
    BuiltComposition composition;
    double start = 0;
    int frames = 0;

    int framesPerSecond() const { return composition.video.framesPerSecond; }
    double timeOf(int frame) const { return start + double(frame) / framesPerSecond(); }

    /// The sample, counted from the first, that plays when a frame begins.
    std::int64_t sampleOf(int frame) const
    {
        return std::llround(double(frame) * AudioMixer::sampleRate / framesPerSecond());
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

/// Mixes the sound of one frame after the other.
class SoundTrack {
public:
    SoundTrack(Plan const& plan, ReadingActivity activity)
        : m_plan(plan),
          m_source(std::move(activity)),
          m_mixer(plan.composition, m_source),
          m_first(std::llround(plan.start * AudioMixer::sampleRate))
    {
    }

    std::span<float const> ofFrame(int frame)
    {
        std::int64_t const from = m_plan.sampleOf(frame), to = m_plan.sampleOf(frame + 1);
        m_samples.resize(std::size_t(to - from) * 2);
        m_mixer.mix(m_first + from, m_samples);
        return m_samples;
    }

private:
    Plan const& m_plan;
    ClipAudioSource m_source;
    AudioMixer m_mixer;
    std::int64_t m_first;
    std::vector<float> m_samples;
};

void throwIfStopped(std::stop_token const& stop)
{
    if (stop.stop_requested())
        throw ExportError(ExportError::Cause::cancelled, "The export was cancelled.");
}

/// Reading gets on however far from a keyframe it begins, and ends in the middle when the export is
/// to stop.
ReadingActivity reading(WatchedWork& watched)
{
    return [&watched, stop = watched.stop()] {
        watched.beat();
        throwIfStopped(stop);
    };
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

    /// Looks into the file before it takes its place.
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

/// Tells how far the export is, about once per percent of the pictures that are encoded.
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

/// Encodes what comes out of the queue, on a thread of its own, until that is complete.
class EncodingThread {
public:
    EncodingThread(Job const& job, MovieWriter& writer, BoundedQueue<Frame>& queue,
                   WatchedWork& watched)
        : m_queue(queue), m_thread([&job, &writer, &queue, &watched, this] {
              try {
                  encode(job, writer, queue, watched);
              } catch (...) {
                  m_failure = std::current_exception();
                  queue.abandon();
              }
          })
    {
    }

    ~EncodingThread() { m_queue.abandon(); }
    EncodingThread(EncodingThread const&) = delete;
    EncodingThread& operator=(EncodingThread const&) = delete;

    /// How many pictures the encoder has taken.
    int written() const { return m_written; }

    /// Waits until everything is written; throws what went wrong.
    void finish()
    {
        m_queue.complete();
        m_thread.join();
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    void encode(Job const& job, MovieWriter& writer, BoundedQueue<Frame>& queue,
                WatchedWork& watched)
    {
        constexpr auto writing = WatchedWork::Thread::writing;
        SoundTrack sound(job.plan, reading(watched));
        int written = 0;
        while (auto const frame = queue.pop()) {
            watched.enter(writing, "encoding the picture");
            writer.writeFrame(*frame);
            watched.enter(writing, "mixing the sound");
            writer.writeAudio(sound.ofFrame(written++));
            watched.enter(writing, nullptr);
            m_written = written;
        }
        if (written < job.plan.frames)
            return throwIfStopped(watched.stop()); // Or drawing failed, and says why.
        watched.enter(writing, "finishing the file");
        writer.finish([&](std::filesystem::path const& file) { job.check(file, watched); });
    }

    BoundedQueue<Frame>& m_queue;
    std::atomic<int> m_written = 0;
    std::exception_ptr m_failure;
    std::jthread m_thread; ///< Last: it uses the others.
};

void render(Job const& job, WatchedWork& watched)
{
    constexpr auto drawing = WatchedWork::Thread::drawing;
    Plan const& plan = job.plan;
    watched.enter(drawing, "beginning the file");
    MovieSettings settings = job.movie;
    settings.activity = [&watched] { watched.beat(); };
    MovieWriter writer(job.file, settings);
    BoundedQueue<Frame> queue(queuedFrames);
    OpenReaders readers(keptReaders, decoderThreads(), reading(watched));
    ReadPhotos photos(keptPhotos);
    ClipFrameSource source(plan.composition, readers, photos, ClipFrameSource::Reading::forward);
    FrameCompositor compositor(plan.composition.video, source);
    std::stop_callback const whenStopped(watched.stop(), [&queue] { queue.abandon(); });
    EncodingThread encoding(job, writer, queue, watched);

    ProgressReports progress(plan.frames, watched);
    for (int frame = 0; frame < plan.frames; ++frame) {
        throwIfStopped(watched.stop());
        progress.tell(encoding.written());
        if (frame % plan.framesPerSecond() == 0)
            job.checkSources();
        watched.enter(drawing, "reading and drawing the picture");
        Frame picture = compositor.draw(plan.timeOf(frame));
        watched.enter(drawing, nullptr);
        if (!queue.push(std::move(picture)))
            return encoding.finish(); // It failed or was stopped, and says so.
    }
    throwIfStopped(watched.stop());
    watched.report(1, "Finishing");
    encoding.finish();
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
    Plan plan{CompositionBuilder::build(m_project, m_assets, output, overlays), start, 0};
    plan.frames = std::max(1, int(std::lround((end - start) * output.framesPerSecond)));
    if (auto const problem = CompositionValidator::problem(plan.composition))
        throw ExportError(ExportError::Cause::media, *problem);
    throwIfStopped(stop);
    ExportResult const result{m_settings.file, double(plan.frames) / output.framesPerSecond,
                              output.renderSize, plan.frames, output.framesPerSecond};
    VideoComposition const& video = plan.composition.video;
    ExpectedMovie const expected{output.renderSize, output.framesPerSecond, result.duration,
                                 video.colors.isHDR(), m_settings.quality};
    checkSpace(m_surroundings, m_settings.file, expected);
    MovieSettings movie = movieSettings(video, m_settings.quality);
    if (video.colors.isHDR())
        movie.mastering = exportMastering(m_project, m_assets);
    std::vector<FileIdentity> sources =
        sourcesOf(plan.composition, {start, start + result.duration});
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
