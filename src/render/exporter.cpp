#include "render/exporter.h"

#include "media/media_error.h"
#include "media/movie_writer.h"
#include "model/time_rules.h"
#include "render/audio_mixer.h"
#include "render/clip_frame_source.h"
#include "render/clip_sound_source.h"
#include "render/composition_builder.h"
#include "render/composition_validator.h"
#include "render/frame_compositor.h"
#include "render/frame_queue.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <new>
#include <thread>

namespace framewright {

namespace {

constexpr double previewLongSide = 960;
/// HEVC's factor for what H.264 looks like at MovieSettings' own, in a smaller file.
constexpr double hevcQuality = 22;
constexpr std::size_t queuedFrames = 4;
constexpr std::size_t keptReaders = 4; ///< Beyond those in use: for cuts back and forth.
constexpr std::size_t keptPhotos = 4;

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
    explicit SoundTrack(Plan const& plan)
        : m_plan(plan),
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
    ClipSoundSource m_source;
    AudioMixer m_mixer;
    std::int64_t m_first;
    std::vector<float> m_samples;
};

/// Encodes what comes out of the queue, on a thread of its own, until that is complete.
class EncodingThread {
public:
    EncodingThread(Plan const& plan, MovieWriter& writer, FrameQueue& queue)
        : m_queue(queue), m_thread([&plan, &writer, &queue, this] {
              try {
                  encode(plan, writer, queue);
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

    /// Waits until everything is written; throws what went wrong.
    void finish()
    {
        m_queue.complete();
        m_thread.join();
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    static void encode(Plan const& plan, MovieWriter& writer, FrameQueue& queue)
    {
        SoundTrack sound(plan);
        int written = 0;
        while (auto const frame = queue.pop()) {
            writer.writeFrame(*frame);
            writer.writeSound(sound.ofFrame(written++));
        }
        if (written == plan.frames)
            writer.finish();
    }

    FrameQueue& m_queue;
    std::exception_ptr m_failure;
    std::jthread m_thread; ///< Last: it uses the others.
};

void throwIfStopped(std::stop_token const& stop)
{
    if (stop.stop_requested())
        throw ExportError(ExportError::Cause::cancelled, "The export was cancelled.");
}

void render(Plan const& plan, MovieWriter& writer, ExportProgress const& progress,
            std::stop_token const& stop)
{
    FrameQueue queue(queuedFrames);
    OpenReaders readers(keptReaders);
    ReadPhotos photos(keptPhotos);
    ClipFrameSource source(plan.composition, readers, photos, ClipFrameSource::Reading::forward);
    FrameCompositor compositor(plan.composition.video, source);
    EncodingThread encoding(plan, writer, queue);

    int reported = -1;
    for (int frame = 0; frame < plan.frames; ++frame) {
        throwIfStopped(stop);
        int const percent = int(100.0 * frame / plan.frames);
        if (progress && percent != reported)
            progress(percent / 100.0, "Rendering");
        reported = percent;
        if (!queue.push(compositor.draw(plan.timeOf(frame))))
            return encoding.finish(); // It failed, and throws why.
    }
    throwIfStopped(stop);
    if (progress)
        progress(1, "Finishing");
    encoding.finish();
}

} // namespace

Exporter::Exporter(Project project, AssetStore assets, ExportSettings settings)
    : m_project(std::move(project)), m_assets(std::move(assets)), m_settings(std::move(settings))
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
    Plan plan{CompositionBuilder::build(m_project, m_assets, output), start, 0};
    plan.frames = std::max(1, int(std::lround((end - start) * output.framesPerSecond)));
    if (auto const problem = CompositionValidator::problem(plan.composition))
        throw ExportError(ExportError::Cause::media, *problem);
    throwIfStopped(stop);
    try {
        MovieWriter writer(m_settings.file,
                           movieSettings(plan.composition.video, m_settings.quality));
        render(plan, writer, progress, stop);
    } catch (MediaError const& error) {
        throw ExportError(ExportError::Cause::media, error.what());
    } catch (std::bad_alloc const&) {
        throw ExportError(ExportError::Cause::media,
                          "There is not enough memory to export at this size.");
    }
    return {m_settings.file, double(plan.frames) / output.framesPerSecond, output.renderSize,
            plan.frames, output.framesPerSecond};
}

} // namespace framewright
