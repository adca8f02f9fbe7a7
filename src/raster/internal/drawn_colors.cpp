#include "raster/internal/drawn_colors.h"

namespace framewright {

namespace {

int drawnTransfer(int transfer)
{
    constexpr int linear = 8, log100 = 9, log316 = 10, pq = 16, st428 = 17, hlg = 18;
    switch (transfer) {
    case linear:
    case log100:
    case log316:
    case pq:
    case st428:
    case hlg:
        return transfer;
    default:
        return 1;
    }
}

int drawnPrimaries(int primaries)
{
    constexpr int film = 8;
    return primaries < film ? 1 : primaries;
}

int drawnMatrix(int matrix, PixelLayout layout, int height)
{
    constexpr int rgb = 0, bt709 = 1, unspecified = 2, reserved = 3, bt470bg = 5, bt601 = 6;
    if (layout.model == PixelLayout::Model::gbr)
        return rgb;
    switch (matrix) {
    case bt470bg:
        return bt601;
    case rgb:
    case unspecified:
    case reserved:
        return height >= 720 ? bt709 : bt601;
    default:
        return matrix;
    }
}

} // namespace

ColorTags drawnColors(ColorTags colors, PixelLayout layout, int height)
{
    constexpr int unspecified = 2, bt2020 = 9;
    if (colors.isHDR() && colors.primaries == unspecified)
        colors.primaries = bt2020;
    if (colors.isHDR() && colors.matrix == unspecified)
        colors.matrix = bt2020;
    colors.transfer = drawnTransfer(colors.transfer);
    colors.primaries = drawnPrimaries(colors.primaries);
    colors.matrix = drawnMatrix(colors.matrix, layout, height);
    if (layout.model != PixelLayout::Model::yuv || (!layout.chromaShiftX && !layout.chromaShiftY))
        colors.chromaIsCentered = false; // There is none between the others.
    return colors;
}

} // namespace framewright
