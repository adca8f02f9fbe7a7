#include "render/still_frames.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include <new>

namespace framewright {

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
