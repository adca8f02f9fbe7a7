#include "media/photo.h"

#include "media/internal/media_failure.h"
#include "media/internal/photo_decoding.h"

#include <algorithm>

namespace framewright {

namespace {

/// BT.709 from full-range RGB to limited-range Y'CbCr, in 65536ths.
struct Matrix {
    static constexpr int shift = 16;
    int luma[3];
    int blue[3];
    int red[3];
};

constexpr Matrix bt709Matrix()
{
    constexpr double kr = 0.2126;
    constexpr double kb = 0.0722;
    constexpr double kg = 1 - kr - kb;
    constexpr double unit = double(1 << Matrix::shift);
    constexpr double y = unit * 219 / 255;
    constexpr double c = unit * 224 / 255 / 2;
    auto const rounded = [](double v) { return int(v < 0 ? v - 0.5 : v + 0.5); };
    return {{rounded(y * kr), rounded(y * kg), rounded(y * kb)},
            {rounded(-c * kr / (1 - kb)), rounded(-c * kg / (1 - kb)), rounded(c)},
            {rounded(c), rounded(-c * kg / (1 - kr)), rounded(-c * kb / (1 - kr))}};
}

/// `pixels` hold 0xffRRGGBB.
Frame toYuv(QImage const& pixels)
{
    constexpr Matrix matrix = bt709Matrix();
    constexpr int half = 1 << (Matrix::shift - 1);
    constexpr int black = (16 << Matrix::shift) + half;
    constexpr int neutral = (128 << Matrix::shift) + half;

    Frame frame(pixels.width(), pixels.height(), {PixelLayout::Model::yuv, 8, 0, 0, false},
                ColorTags::bt709());
    auto const luma = frame.writablePlane(0);
    auto const blue = frame.writablePlane(1);
    auto const red = frame.writablePlane(2);
    for (int y = 0; y < pixels.height(); ++y) {
        auto const* const row = reinterpret_cast<QRgb const*>(pixels.constScanLine(y));
        auto* const lumaRow = luma.data + y * luma.stride;
        auto* const blueRow = blue.data + y * blue.stride;
        auto* const redRow = red.data + y * red.stride;
        for (int x = 0; x < pixels.width(); ++x) {
            int const r = int(row[x] >> 16 & 0xFF);
            int const g = int(row[x] >> 8 & 0xFF);
            int const b = int(row[x] & 0xFF);
            auto const weighted = [&](int const(&weights)[3], int offset) {
                return std::uint8_t((weights[0] * r + weights[1] * g + weights[2] * b + offset) >>
                                    Matrix::shift);
            };
            lumaRow[x] = weighted(matrix.luma, black);
            blueRow[x] = weighted(matrix.blue, neutral);
            redRow[x] = weighted(matrix.red, neutral);
        }
    }
    return frame;
}

} // namespace

Frame readPhoto(std::filesystem::path const& file, int maxSide)
{
    Descriptor const opened = openMediaFile(file);
    PhotoFormat const format = photoFormat(readHead(opened, file));
    if (format == PhotoFormat::none)
        throw failure(MediaError::Cause::unsupported, file, "is not a photo.");
    QImage const image = decodePhoto(opened, format, file, std::max(1, maxSide));

    // Premultiplied colours are the image composited on black; the alpha can then be ignored.
    auto const onBlack =
        image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    QImage const pixels = image.convertToFormat(onBlack);
    if (pixels.isNull())
        throw std::bad_alloc();
    return toYuv(pixels);
}

} // namespace framewright
