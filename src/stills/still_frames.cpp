#include "stills/still_frames.h"

#include "composition/composition_builder.h"
#include "pipeline/frame_drawer.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <mutex>
#include <numeric>
#include <optional>
#include <thread>

namespace framewright {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t keptPhotos = 4; ///< By each desk.
/// Each has its decoders and their pictures in memory.
constexpr unsigned mostDesks = 4;

/// The pictures of layers, stretched by as much as `from` is to `to`.
void stretch(VideoComposition& video, PixelSize from, PixelSize to)
{
    double const x = double(to.width) / from.width, y = double(to.height) / from.height;
    for (CompositorInstruction& instruction : video.instructions) {
        for (Layer& layer : instruction.layers) {
            Placement& placement = layer.placement;
            placement.transform = placement.transform.then(AffineTransform::scaling(x, y));
            Rect const frame = placement.frame;
            placement.frame = {frame.x * x, frame.y * y, frame.width * x, frame.height * y};
        }
    }
    video.renderSize = to;
}

/// A place to draw at, one frame at a time, with files that are kept open.
struct DrawingDesk {
    explicit DrawingDesk(std::size_t openReaders)
        : drawer({.keptReaders = openReaders, .keptPhotos = keptPhotos})
    {
    }

    std::mutex mutex;
    FrameDrawer drawer;
    std::optional<Clock::time_point> lastUsed; ///< Nothing while nothing is open.
};

/// A project, built for pictures of one width.
struct BuiltPiece {
    /// `times` is when pictures of it are wanted.
    BuiltPiece(Project const& project, AssetStore const& assets, CaptionBurner const& burner,
               TimeRange times, int pixels)
        : size(stillSize(project.aspect, pixels)),
          framesPerSecond(exportFrameRate(project, assets)),
          lastFrame(lastFrameTime(project, assets))
    {
        // What is fitted into a canvas of whole pixels would leave a line of it black where that is
        // not quite of the canvas's shape. So it is fitted into one of the very shape, and that is
        // stretched by less than a pixel to even sides, of which the last pixel may be cut.
        PixelSize const canvas = baseCanvas(project.aspect);
        PixelSize const drawn{size.width + size.width % 2, size.height + size.height % 2};
        TimeRange const shown{shownTime(times.start), shownTime(times.end)};
        auto built = std::make_shared<BuiltComposition>(CompositionBuilder::build(
            project, assets, {canvas, framesPerSecond, true, DynamicRange::standard},
            burner.overlays(project, assets, drawn, shown)));
        stretch(built->video, canvas, drawn);
        composition = std::move(built);
    }

    /// At or after the end that of the last frame.
    double shownTime(double time) const { return std::clamp(time, 0.0, lastFrame); }

    PixelSize size;
    int framesPerSecond;
    double lastFrame; ///< When it begins.
    std::shared_ptr<BuiltComposition const> composition;
};

/// Draws pictures of a piece at a desk.
class PieceDrawing {
public:
    PieceDrawing(BuiltPiece const& piece, DrawingDesk& desk) : m_piece(piece), m_desk(desk)
    {
        m_desk.drawer.show(piece.composition);
    }

    ~PieceDrawing()
    {
        m_desk.drawer.show(nullptr);
        m_desk.lastUsed = Clock::now();
    }
    PieceDrawing(PieceDrawing const&) = delete;
    PieceDrawing& operator=(PieceDrawing const&) = delete;

    RGBImage image(double time)
    {
        Frame const frame = m_desk.drawer.draw(m_piece.shownTime(time));
        return screenImage(frame, m_piece.size);
    }

private:
    BuiltPiece const& m_piece;
    DrawingDesk& m_desk;
};

} // namespace

double lastFrameTime(Project const& project, AssetStore const& assets)
{
    int const rate = exportFrameRate(project, assets);
    return (std::max(1.0, std::round(project.videoDuration() * rate)) - 1) / rate;
}

PixelSize stillSize(AspectPreset canvas, int width)
{
    PixelSize const base = baseCanvas(canvas);
    width = std::max(1, width);
    double const height = std::round(double(width) * base.height / base.width);
    return {width, std::max(1, int(height))};
}

class StillFrames::Impl {
public:
    Impl(std::shared_ptr<CaptionBurner const> burner, int openReaders) : m_burner(std::move(burner))
    {
        std::size_t const count = std::clamp(std::thread::hardware_concurrency(), 1u, mostDesks);
        std::size_t const readers = std::max<std::size_t>(1, std::size_t(openReaders) / count);
        for (std::size_t n = 0; n < count; ++n)
            m_desks.push_back(std::make_unique<DrawingDesk>(readers));
    }

    RGBImage draw(Project const& project, AssetStore const& assets, double time, int width)
    {
        BuiltPiece const piece(project, assets, *m_burner, {time, time}, width);
        // The first one first: that is where decoders wait that were used last.
        for (auto const& desk : m_desks) {
            std::unique_lock const lock(desk->mutex, std::try_to_lock);
            if (lock)
                return PieceDrawing(piece, *desk).image(time);
        }
        std::lock_guard const lock(m_desks.front()->mutex);
        return PieceDrawing(piece, *m_desks.front()).image(time);
    }

    /// Each desk draws a stretch of the times, forward, so that it reads what it can in one go.
    std::vector<RGBImage> draw(Project const& project, AssetStore const& assets,
                               std::span<double const> times, int width)
    {
        if (times.empty())
            return {};
        auto const [first, last] = std::ranges::minmax(times);
        BuiltPiece const piece(project, assets, *m_burner, {first, last}, width);
        std::vector<std::size_t> order(times.size());
        std::iota(order.begin(), order.end(), 0);
        std::ranges::stable_sort(order, {}, [&](std::size_t n) { return times[n]; });

        std::vector<RGBImage> images(times.size());
        std::vector<std::exception_ptr> failures(m_desks.size());
        auto const drawStretch = [&](std::size_t desk) {
            try {
                std::lock_guard const lock(m_desks[desk]->mutex);
                PieceDrawing drawing(piece, *m_desks[desk]);
                std::size_t const from = desk * order.size() / m_desks.size();
                std::size_t const to = (desk + 1) * order.size() / m_desks.size();
                for (std::size_t n = from; n < to; ++n)
                    images[order[n]] = drawing.image(times[order[n]]);
            } catch (...) {
                failures[desk] = std::current_exception();
            }
        };
        {
            std::vector<std::jthread> others;
            for (std::size_t desk = 1; desk < m_desks.size(); ++desk)
                others.emplace_back(drawStretch, desk);
            drawStretch(0);
        }
        for (std::exception_ptr const& failure : failures) {
            if (failure)
                std::rethrow_exception(failure);
        }
        return images;
    }

    void closeReadersUnusedFor(std::chrono::steady_clock::duration idle)
    {
        bool hasClosed = false;
        for (auto const& desk : m_desks) {
            std::unique_lock const lock(desk->mutex, std::try_to_lock);
            if (!lock || !desk->lastUsed || Clock::now() - *desk->lastUsed < idle)
                continue;
            desk->drawer.closeFiles();
            desk->lastUsed.reset();
            hasClosed = true;
        }
        if (hasClosed)
            releaseSpareFrames();
    }

private:
    std::vector<std::unique_ptr<DrawingDesk>> m_desks;
    std::shared_ptr<CaptionBurner const> m_burner;
};

StillFrames::StillFrames(std::shared_ptr<CaptionBurner const> burner, int openReaders)
    : m_impl(std::make_unique<Impl>(std::move(burner), openReaders))
{
}
StillFrames::~StillFrames() = default;

RGBImage StillFrames::image(Project const& project, AssetStore const& assets, double time,
                            int width)
{
    return m_impl->draw(project, assets, time, width);
}

std::vector<RGBImage> StillFrames::images(Project const& project, AssetStore const& assets,
                                          std::span<double const> times, int width)
{
    return m_impl->draw(project, assets, times, width);
}

std::vector<std::uint8_t> StillFrames::png(Project const& project, AssetStore const& assets,
                                           double time, int width)
{
    return pngFile(image(project, assets, time, width));
}

void StillFrames::closeReadersUnusedFor(std::chrono::steady_clock::duration idle)
{
    m_impl->closeReadersUnusedFor(idle);
}

} // namespace framewright
