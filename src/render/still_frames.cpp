#include "render/still_frames.h"

#include "render/clip_frame_source.h"
#include "render/composition_builder.h"
#include "render/frame_compositor.h"
#include "render/open_files.h"

#include <algorithm>
#include <cmath>
#include <mutex>

namespace framewright {

namespace {

constexpr std::size_t keptPhotos = 8;

/// The last frame of the piece, or the time itself when it lies before that.
double shownTime(Project const& project, int framesPerSecond, double time)
{
    double const frames = std::max(1.0, std::round(project.videoDuration() * framesPerSecond));
    return std::clamp(time, 0.0, (frames - 1) / framesPerSecond);
}

RGBImage screenImage(Frame const& frame, int width, int height)
{
    constexpr PixelLayout rgb{PixelLayout::Model::gbr, 8, 0, 0, false};
    constexpr ColorTags screen{1, 1, 0, true, false};
    Frame planar(width, height, rgb, screen);
    PictureTarget target{width, height, rgb, screen, ChromaPlace::left, {}};
    for (int i = 0; i < 3; ++i)
        target.planes[std::size_t(i)] = planar.writablePlane(i);
    Rect const whole{0, 0, double(frame.width()), double(frame.height())};
    PictureScaler().scale(frame, whole, whole, target);

    RGBImage image{width, height, std::vector<std::uint8_t>(std::size_t(width) * height * 3)};
    Frame::Plane const green = planar.plane(0), blue = planar.plane(1), red = planar.plane(2);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* pixel = image.pixels.data() + std::size_t(y) * width * 3;
        for (int x = 0; x < width; ++x) {
            *pixel++ = red.data[y * red.stride + x];
            *pixel++ = green.data[y * green.stride + x];
            *pixel++ = blue.data[y * blue.stride + x];
        }
    }
    return image;
}

} // namespace

class StillFrames::Impl {
public:
    explicit Impl(int openReaders) : m_readers(std::size_t(std::max(1, openReaders))) {}

    Frame draw(Project const& project, AssetStore const& assets, double time, PixelSize size)
    {
        CompositionBuilder::Output const output{size, exportFrameRate(project, assets), true,
                                                DynamicRange::standard};
        BuiltComposition const composition = CompositionBuilder::build(project, assets, output);
        std::lock_guard const lock(m_mutex);
        ClipFrameSource source(composition, m_readers, m_photos,
                               ClipFrameSource::Reading::anywhere);
        FrameCompositor compositor(composition.video, source);
        return compositor.draw(shownTime(project, output.framesPerSecond, time));
    }

    void closeReaders()
    {
        std::lock_guard const lock(m_mutex);
        m_readers.closeAll();
        m_photos.forgetAll();
    }

private:
    std::mutex m_mutex;
    OpenReaders m_readers;
    ReadPhotos m_photos{keptPhotos};
};

StillFrames::StillFrames(int openReaders) : m_impl(std::make_unique<Impl>(openReaders)) {}
StillFrames::~StillFrames() = default;

RGBImage StillFrames::image(Project const& project, AssetStore const& assets, double time,
                            int width)
{
    PixelSize const canvas = canvasWithWidth(project.aspect, width);
    Frame const frame = m_impl->draw(project, assets, time, canvas);
    return screenImage(frame, std::max(1, width), canvas.height);
}

std::vector<std::uint8_t> StillFrames::png(Project const& project, AssetStore const& assets,
                                           double time, int width)
{
    return pngFile(image(project, assets, time, width));
}

void StillFrames::closeReaders()
{
    m_impl->closeReaders();
}

} // namespace framewright
