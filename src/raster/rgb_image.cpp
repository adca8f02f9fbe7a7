#include "raster/rgb_image.h"

#include "raster/internal/frame_scaler.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include <new>

namespace framewright {

RGBImage screenImage(Frame const& frame, PixelSize size)
{
    auto const [width, height] = size;
    constexpr PixelLayout rgb{PixelLayout::Model::gbr, 8, 0, 0, false};
    constexpr ColorTags screen{1, 1, 0, true, false};
    Frame planar(width, height, rgb, screen);
    FrameTarget target{width, height, rgb, screen, ChromaPlace::left, {}};
    for (int i = 0; i < 3; ++i)
        target.planes[std::size_t(i)] = planar.writablePlane(i);
    Rect const whole{0, 0, double(frame.width()), double(frame.height())};
    FrameScaler().scale(frame, whole, {0, 0, double(width), double(height)}, target);

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

std::vector<std::uint8_t> pngFile(RGBImage const& image)
{
    QImage const picture(image.pixels.data(), image.width, image.height, qsizetype(image.width) * 3,
                         QImage::Format_RGB888);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    writer.setCompression(15); // Of 100: a tenth larger than the usual, several times faster.
    if (!writer.write(picture))
        throw std::bad_alloc(); // Writing to memory fails for no other reason.
    return {bytes.begin(), bytes.end()};
}

} // namespace framewright
