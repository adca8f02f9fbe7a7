#include "raster/internal/plane_turn.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace framewright {

// Samples are moved several at a time as the parts of a 64-bit word, first sample lowest.
static_assert(std::endian::native == std::endian::little);

namespace {

using Word = std::uint64_t;

Word load(std::uint8_t const* from)
{
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

void store(std::uint8_t* to, Word word)
{
    std::memcpy(to, &word, sizeof word);
}

/// Exchanges the upper half of each `2 * bits` of `a` with the lower half of those of `b`.
template <int bits, Word lower>
void exchange(Word& a, Word& b)
{
    Word const difference = ((a >> bits) ^ b) & lower;
    b ^= difference;
    a ^= difference << bits;
}

constexpr Word lower32 = 0x00000000FFFFFFFF;
constexpr Word lower16 = 0x0000FFFF0000FFFF;
constexpr Word lower8 = 0x00FF00FF00FF00FF;

/// Transposes a square of as many samples as a word holds.
template <class Sample>
void transposeSquare(std::uint8_t const* from, std::ptrdiff_t fromStride, std::uint8_t* to,
                     std::ptrdiff_t toStride)
{
    constexpr int side = sizeof(Word) / sizeof(Sample);
    std::array<Word, side> rows;
    for (int y = 0; y < side; ++y)
        rows[y] = load(from + y * fromStride);
    for (int y = 0; y < side / 2; ++y)
        exchange<32, lower32>(rows[y], rows[y + side / 2]);
    for (int y = 0; y < side; y += side / 2) {
        for (int n = y; n < y + side / 4; ++n)
            exchange<16, lower16>(rows[n], rows[n + side / 4]);
    }
    if constexpr (sizeof(Sample) == 1) {
        for (int y = 0; y < side; y += 2)
            exchange<8, lower8>(rows[y], rows[y + 1]);
    }
    for (int y = 0; y < side; ++y)
        store(to + y * toStride, rows[y]);
}

/// Columns of `from` become rows of `to`. Either stride may be negative.
template <class Sample>
void transpose(std::uint8_t const* from, std::ptrdiff_t fromStride, std::uint8_t* to,
               std::ptrdiff_t toStride, int width, int height)
{
    constexpr int side = sizeof(Word) / sizeof(Sample);
    constexpr int tile = 64; ///< Its rows, in both pictures, stay in the cache.
    int const wholeWidth = width / side * side, wholeHeight = height / side * side;
    auto const at = [&](int x, int y) { return from + y * fromStride + x * int(sizeof(Sample)); };
    auto const put = [&](int x, int y) { return to + y * toStride + x * int(sizeof(Sample)); };

    for (int top = 0; top < wholeHeight; top += tile) {
        for (int left = 0; left < wholeWidth; left += tile) {
            for (int y = top; y < std::min(top + tile, wholeHeight); y += side) {
                for (int x = left; x < std::min(left + tile, wholeWidth); x += side)
                    transposeSquare<Sample>(at(y, x), fromStride, put(x, y), toStride);
            }
        }
    }
    for (int y = 0; y < height; ++y) {
        for (int x = y < wholeHeight ? wholeWidth : 0; x < width; ++x)
            std::memcpy(put(x, y), at(y, x), sizeof(Sample));
    }
}

template <class Sample>
Word reversed(Word word)
{
    if constexpr (sizeof(Sample) == 1) {
        return __builtin_bswap64(word);
    } else {
        word = (word >> 32) | (word << 32);
        return ((word >> 16) & lower16) | ((word & lower16) << 16);
    }
}

template <class Sample>
void reverseRow(std::uint8_t const* from, std::uint8_t* to, int width)
{
    constexpr int side = sizeof(Word) / sizeof(Sample);
    int x = 0;
    for (; x + side <= width; x += side)
        store(to + x * int(sizeof(Sample)),
              reversed<Sample>(load(from + (width - x - side) * int(sizeof(Sample)))));
    for (; x < width; ++x)
        std::memcpy(to + x * int(sizeof(Sample)), from + (width - 1 - x) * int(sizeof(Sample)),
                    sizeof(Sample));
}

template <class Sample>
void turnSamples(Frame::Plane const& from, Turn turn, Frame::WritablePlane const& to)
{
    // A reversed axis of rows is one that is read, or written, from the last row upwards.
    std::uint8_t const* source = from.data;
    std::ptrdiff_t sourceStride = from.stride;
    std::uint8_t* target = to.data;
    std::ptrdiff_t targetStride = to.stride;
    if (turn.transposes && turn.flipsX) {
        source += (from.height - 1) * sourceStride;
        sourceStride = -sourceStride;
    }
    if (turn.flipsY) {
        target += (to.height - 1) * targetStride;
        targetStride = -targetStride;
    }
    if (turn.transposes) {
        transpose<Sample>(source, sourceStride, target, targetStride, to.width, to.height);
        return;
    }
    for (int y = 0; y < to.height; ++y) {
        std::uint8_t const* const row = source + y * sourceStride;
        if (turn.flipsX)
            reverseRow<Sample>(row, target + y * targetStride, to.width);
        else
            std::memcpy(target + y * targetStride, row, std::size_t(to.width) * sizeof(Sample));
    }
}

} // namespace

Turn turnOf(AffineTransform const& transform)
{
    bool const transposes = std::abs(transform.c) > std::abs(transform.a);
    return {transposes, (transposes ? transform.c : transform.a) < 0,
            (transposes ? transform.b : transform.d) < 0};
}

void turnPlane(Frame::Plane const& from, Turn turn, Frame::WritablePlane const& to,
               int bytesPerSample)
{
    assert((turn.transposes ? from.height : from.width) == to.width);
    assert((turn.transposes ? from.width : from.height) == to.height);
    if (bytesPerSample == 1)
        turnSamples<std::uint8_t>(from, turn, to);
    else
        turnSamples<std::uint16_t>(from, turn, to);
}

} // namespace framewright
